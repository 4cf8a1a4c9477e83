// SPDX-License-Identifier: MIT
#pragma once

#include <QCheckBox>

#include "platform/Views.h"

namespace tarvik::linuxdesktop {

/// A checkbox whose empty box can be seen on every window. Main thread only.
class QtCheckbox final : public QCheckBox, public platform::Checkbox {
  public:
    explicit QtCheckbox(const platform::CheckboxDescription& description);

    bool isOn() const override { return isChecked(); }
    void setOn(bool isOn) override { setChecked(isOn); }

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace tarvik::linuxdesktop
