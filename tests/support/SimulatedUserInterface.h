// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/UserInterface.h"
#include "tests/support/Journal.h"
#include "tests/support/SimulatedImage.h"
#include "tests/support/SimulatedTime.h"
#include "tests/support/SimulatedWindow.h"

namespace tarvik::simulated {

/// A menu that a test opens.
class SimulatedMenu final : public platform::Menu {
  public:
    void setItems(std::vector<platform::MenuItem> newItems) override {
        items = std::move(newItems);
    }
    void setNeedsUpdateHandler(std::function<void()> handler) override {
        needsUpdate = std::move(handler);
    }

    /// The user opens the menu. Returns its entries.
    const std::vector<platform::MenuItem>& open();
    /// The user opens the menu and chooses the entry with this title; false when no such entry can
    /// be chosen.
    bool choose(const std::string& title);

    std::vector<platform::MenuItem> items;
    std::function<void()> needsUpdate;
};

/// A status button that records what it shows.
class SimulatedStatusButton final : public platform::StatusButton {
  public:
    explicit SimulatedStatusButton(Journal& journal) : journal_(journal) {}

    void setImage(std::shared_ptr<platform::Image> newImage) override;
    void setContentTintColor(std::optional<platform::SystemColor> color) override;
    void setTitle(const std::string& newTitle) override;

    std::shared_ptr<SimulatedImage> image;
    std::optional<platform::SystemColor> tint;
    std::optional<std::string> title;

  private:
    Journal& journal_;
};

/// A status item with or without a button.
class SimulatedStatusItem final : public platform::StatusItem {
  public:
    SimulatedStatusItem(Journal& journal, bool withButton)
        : statusButton(journal), hasButton(withButton) {}

    platform::StatusButton* button() override { return hasButton ? &statusButton : nullptr; }
    void setMenu(std::shared_ptr<platform::Menu> newMenu) override {
        menu = std::dynamic_pointer_cast<SimulatedMenu>(newMenu);
    }

    SimulatedStatusButton statusButton;
    const bool hasButton;
    std::shared_ptr<SimulatedMenu> menu;
};

/// Records what the user would see, and answers alerts as a test has scripted them.
class SimulatedUserInterface final : public platform::UserInterface {
  public:
    struct MainMenu {
        std::string title;
        std::vector<platform::EditMenuItem> items;
    };
    SimulatedUserInterface(SimulatedTime& time, Journal& journal)
        : time_(time), journal_(journal) {}

    std::shared_ptr<platform::StatusItem> makeStatusItem() override;
    std::shared_ptr<platform::Menu> makeMenu() override;
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
    std::optional<platform::Rect> mainScreenVisibleFrame() override { return screen; }

    /// Answers the next alert with this button (counted from 0) and this text in its field.
    void answerNextAlert(int button, std::string fieldText);
    /// Closes the next alert without a button, with this text in its field.
    void closeNextAlert(std::string fieldText);
    /// Called while an alert is open, after the due blocks of the main queue have run.
    std::function<void(const platform::Alert&)> whileModal;

    /// The status item; empty when there is none.
    std::shared_ptr<SimulatedStatusItem> statusItem() const { return statusItem_.lock(); }
    /// The button of the status item, which must exist.
    SimulatedStatusButton& statusButton() const { return statusItem()->statusButton; }

    std::vector<MainMenu> mainMenus;
    /// The alerts shown so far. An alert without a scripted answer is closed (code 0) with its text
    /// unchanged.
    std::vector<platform::Alert> alerts;
    bool isModal = false;
    int statusItemsMade = 0;
    /// All windows made so far.
    std::vector<std::shared_ptr<SimulatedWindow>> windows;
    /// The window with this title, shown or hidden; empty when it does not exist.
    std::shared_ptr<SimulatedWindow> window(const std::string& title) const;
    /// The times at which the window with this title was brought to the front.
    std::vector<TimePoint> frontTimes(const std::string& title) const;

    /// The symbols that the system does not have, and the pictures missing from the application.
    std::set<std::string> unknownSymbols;
    std::set<std::string> missingImages;
    bool hasApplicationIcon = true;
    /// The main screen without the desktop's panels, if there is one.
    std::optional<platform::Rect> screen = platform::Rect{{0, 25}, {1440, 875}};
    /// Whether a status item made from now on has a button.
    bool hasStatusButton = true;

  private:
    SimulatedTime& time_;
    Journal& journal_;
    std::weak_ptr<SimulatedStatusItem> statusItem_;
    std::vector<platform::AlertAnswer> answers_;
};

}  // namespace tarvik::simulated
