#pragma once

#include <QLineEdit>
#include <string>

#include "platform/Views.h"

namespace tarvik::linuxdesktop {

/// A text field as a QLineEdit, which knows the editing shortcuts. Main thread only.
class QtTextField final : public QLineEdit, public platform::TextField {
  public:
    explicit QtTextField(const platform::TextFieldDescription& description);

    std::string text() const override;
};

}  // namespace tarvik::linuxdesktop
