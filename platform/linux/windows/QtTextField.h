// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "platform/Views.h"
#include "platform/linux/windows/LegibleLineEdit.h"

namespace tarvik::linuxdesktop {

/// A text field with the editing shortcuts of a QLineEdit. Main thread only.
class QtTextField final : public LegibleLineEdit, public platform::TextField {
  public:
    explicit QtTextField(const platform::TextFieldDescription& description);

    std::string text() const override;
};

}  // namespace tarvik::linuxdesktop
