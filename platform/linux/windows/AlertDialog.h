// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>
#include <QLineEdit>

#include "platform/UserInterface.h"

namespace tarvik::linuxdesktop {

/// A modal alert with a text field. The alert answers a hotkey of the user, and therefore takes the
/// keyboard. Main thread only.
class AlertDialog final : public QDialog {
  public:
    explicit AlertDialog(const platform::Alert& alert);

    /// Shows the window in front of all others and runs a nested loop until the user answers.
    /// Escape and the window's close button answer like the button "Cancel"; without that button
    /// the answer's code is 0.
    platform::AlertAnswer run();

  private:
    void reject() override;
    void showEvent(QShowEvent* event) override;
    void addText(const platform::Alert& alert);
    void addButtons(const std::vector<std::string>& titles);

    QLineEdit* field_ = nullptr;
    int escapeCode_ = 0;
    int code_ = 0;
};

}  // namespace tarvik::linuxdesktop
