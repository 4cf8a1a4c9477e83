#pragma once

#include <QDialog>
#include <QLineEdit>

#include "platform/UserInterface.h"

namespace tarvik::linuxdesktop {

/// The window of an alert. Main thread only.
class AlertDialog final : public QDialog {
  public:
    explicit AlertDialog(const platform::Alert& alert);

    /// Shows the window in front of all others and runs a nested loop until it is answered. Escape
    /// is the button "Cancel" where there is one.
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
