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
#include "tests/support/SimulatedTime.h"

namespace tarvik::simulated {

class SimulatedImage final : public platform::Image {
  public:
    SimulatedImage(std::string symbol, std::string text)
        : name(std::move(symbol)), description(std::move(text)) {}
    void setTemplate(bool isTemplateNow) override { isTemplate = isTemplateNow; }

    const std::string name;
    const std::string description;
    std::optional<bool> isTemplate;
};

class SimulatedMenu final : public platform::Menu {
  public:
    void setItems(std::vector<platform::MenuItem> newItems) override {
        items = std::move(newItems);
    }
    void setNeedsUpdateHandler(std::function<void()> handler) override {
        needsUpdate = std::move(handler);
    }

    /// The user opens the menu; what it shows then.
    const std::vector<platform::MenuItem>& open();
    /// The user chooses the entry with this title; false when there is none that can be chosen.
    bool choose(const std::string& title);

    std::vector<platform::MenuItem> items;
    std::function<void()> needsUpdate;
};

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

class SimulatedStatusItem final : public platform::StatusItem {
  public:
    SimulatedStatusItem(Journal& journal, bool withButton)
        : theButton(journal), hasButton(withButton) {}

    platform::StatusButton* button() override { return hasButton ? &theButton : nullptr; }
    void setMenu(std::shared_ptr<platform::Menu> newMenu) override {
        menu = std::dynamic_pointer_cast<SimulatedMenu>(newMenu);
    }

    SimulatedStatusButton theButton;
    const bool hasButton;
    std::shared_ptr<SimulatedMenu> menu;
};

/// Keeps what the user would see, and answers alerts as scripted.
class SimulatedUserInterface final : public platform::UserInterface {
  public:
    struct MainMenu {
        std::string title;
        std::vector<platform::EditMenuItem> items;
    };
    struct CallToAction {
        int minutes = 0;
        TimePoint shown;
    };

    SimulatedUserInterface(SimulatedTime& time, Journal& journal)
        : time_(time), journal_(journal) {}

    std::shared_ptr<platform::StatusItem> makeStatusItem() override;
    std::shared_ptr<platform::Menu> makeMenu() override;
    void installMainMenu(const std::string& title,
                         const std::vector<platform::EditMenuItem>& items) override;
    std::shared_ptr<platform::Image> systemSymbol(
        const std::string& name, const std::string& accessibilityDescription) override;
    platform::AlertAnswer runModal(const platform::Alert& alert) override;
    void showSetupWindow() override;
    void showCallToAction(int minutes) override;

    /// The next alert is answered with this button (counted from 0) and this text in its field.
    void answerNextAlert(int button, std::string fieldText);
    /// Runs while an alert is up, after the blocks of the main queue that were due.
    std::function<void(const platform::Alert&)> whileModal;

    /// The status item, while it is there.
    std::shared_ptr<SimulatedStatusItem> statusItem() const { return statusItem_.lock(); }
    /// Its button; it must be there.
    SimulatedStatusButton& statusButton() const { return statusItem()->theButton; }

    std::vector<MainMenu> mainMenus;
    /// Alerts that were shown. One without a scripted answer is closed (code 0) with its text as it
    /// was.
    std::vector<platform::Alert> alerts;
    bool isModal = false;
    /// When the setup window was brought up.
    std::vector<TimePoint> setupWindows;
    std::vector<CallToAction> callsToAction;
    int statusItemsMade = 0;

    /// Symbols that the system does not know.
    std::set<std::string> unknownSymbols;
    /// Whether a status item made from now on has a button.
    bool hasStatusButton = true;

  private:
    SimulatedTime& time_;
    Journal& journal_;
    std::weak_ptr<SimulatedStatusItem> statusItem_;
    std::vector<platform::AlertAnswer> answers_;
};

}  // namespace tarvik::simulated
