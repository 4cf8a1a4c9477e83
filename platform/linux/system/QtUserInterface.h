#pragma once

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/UserInterface.h"

namespace tarvik::linuxdesktop {

/// The user interface in Qt Widgets. Needs the main thread's QApplication.
class QtUserInterface final : public platform::UserInterface {
  public:
    /// `clock` and `log` outlive the object and what it makes.
    QtUserInterface(const platform::Clock& clock, platform::Log& log) : clock_(clock), log_(log) {}

    std::shared_ptr<platform::StatusItem> makeStatusItem() override;
    std::shared_ptr<platform::Menu> makeMenu() override;
    /// Qt's fields know the shortcuts.
    void installMainMenu(const std::string& title,
                         const std::vector<platform::EditMenuItem>& items) override;
    std::shared_ptr<platform::Image> systemSymbol(
        const std::string& name, const std::string& accessibilityDescription) override;
    platform::AlertAnswer runModal(const platform::Alert& alert) override;
    void showSetupWindow() override;
    void showCallToAction(int minutes) override;

  private:
    const platform::Clock& clock_;
    platform::Log& log_;
};

}  // namespace tarvik::linuxdesktop
