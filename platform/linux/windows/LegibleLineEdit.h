// SPDX-License-Identifier: MIT
#pragma once

#include <QLineEdit>

namespace tarvik::linuxdesktop {

/// A line edit that takes a text of any length, has a legible placeholder, and a border under
/// themes of high contrast. Some desktops describe every colour but the placeholder's, and Qt then
/// draws the placeholder black. Main thread only.
class LegibleLineEdit : public QLineEdit {
  public:
    explicit LegibleLineEdit(QWidget* parent = nullptr);

  protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void colorPlaceholder();
};

}  // namespace tarvik::linuxdesktop
