// SPDX-License-Identifier: MIT
#pragma once

#include <QLineEdit>

namespace tarvik::linuxdesktop {

/// A line edit that takes a text of any length and has a legible placeholder. Some desktops
/// describe every colour but the placeholder's, and Qt then draws the placeholder black. Main
/// thread only.
class LegibleLineEdit : public QLineEdit {
  public:
    explicit LegibleLineEdit(QWidget* parent = nullptr);

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void colorPlaceholder();
};

}  // namespace tarvik::linuxdesktop
