// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/UserInterface.h"

namespace tarvik::linuxdesktop {

class QtStatusItem;

/// The user interface in Qt Widgets. Needs the main thread's QApplication.
class QtUserInterface final : public platform::UserInterface {
  public:
    /// `clock` and `log` outlive the object and everything that it makes.
    QtUserInterface(const platform::Clock& clock, platform::Log& log) : clock_(clock), log_(log) {}

    /// Tells in the tool tip of the newest status item whether the service refuses the key. Nothing
    /// else changes.
    void showKeyAnswer(bool isKeyAccepted);

    std::shared_ptr<platform::StatusItem> makeStatusItem() override;
    std::shared_ptr<platform::Menu> makeMenu() override;
    /// Does nothing: Qt's fields know the editing shortcuts, and these desktops have no main menu.
    void installMainMenu(const std::string& title,
                         const std::vector<platform::EditMenuItem>& items) override;
    std::shared_ptr<platform::Image> systemSymbol(
        const std::string& name, const std::string& accessibilityDescription) override;
    std::shared_ptr<platform::Image> imageNamed(const std::string& name) override;
    std::shared_ptr<platform::Image> applicationIconImage() override;
    std::shared_ptr<platform::Image> genericApplicationIcon() override;
    platform::AlertAnswer runModal(const platform::Alert& alert) override;
    std::shared_ptr<platform::Label> makeLabel(
        const platform::LabelDescription& description) override;
    std::shared_ptr<platform::TextField> makeTextField(
        const platform::TextFieldDescription& description) override;
    std::shared_ptr<platform::Button> makeButton(
        const platform::ButtonDescription& description) override;
    std::shared_ptr<platform::Checkbox> makeCheckbox(
        const platform::CheckboxDescription& description) override;
    std::shared_ptr<platform::View> makeImageView(
        const platform::ImageViewDescription& description) override;
    std::shared_ptr<platform::View> makeSeparator() override;
    std::shared_ptr<platform::View> makeSpacer(const platform::ViewLayout& layout) override;
    std::shared_ptr<platform::View> makeStack(
        const platform::StackDescription& description) override;

    std::shared_ptr<platform::Window> makeWindow(
        const platform::WindowDescription& description) override;
    std::optional<platform::Rect> mainScreenVisibleFrame() override;

  private:
    const platform::Clock& clock_;
    platform::Log& log_;
    std::weak_ptr<QtStatusItem> statusItem_;
};

}  // namespace tarvik::linuxdesktop
