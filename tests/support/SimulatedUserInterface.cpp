#include "tests/support/SimulatedUserInterface.h"

namespace tarvik::simulated {

const std::vector<platform::MenuItem>& SimulatedMenu::open() {
    if (needsUpdate) {
        needsUpdate();
    }
    return items;
}

bool SimulatedMenu::choose(const std::string& title) {
    // The action may replace the items, so it runs on a copy.
    const std::vector<platform::MenuItem> shown = open();
    for (const platform::MenuItem& item : shown) {
        if (item.title == title && item.isEnabled && item.action) {
            item.action();
            return true;
        }
    }
    return false;
}

void SimulatedStatusButton::setImage(std::shared_ptr<platform::Image> newImage) {
    image = std::dynamic_pointer_cast<SimulatedImage>(newImage);
    journal_.add("setImage " + (image ? image->name : "none"));
}

void SimulatedStatusButton::setContentTintColor(std::optional<platform::SystemColor> color) {
    tint = color;
    journal_.add(std::string("setContentTintColor ") + (color ? "red" : "none"));
}

void SimulatedStatusButton::setTitle(const std::string& newTitle) {
    title = newTitle;
    journal_.add("setTitle " + newTitle);
}

std::shared_ptr<platform::StatusItem> SimulatedUserInterface::makeStatusItem() {
    journal_.add("makeStatusItem");
    ++statusItemsMade;
    auto item = std::make_shared<SimulatedStatusItem>(journal_, hasStatusButton);
    statusItem_ = item;
    return item;
}

std::shared_ptr<platform::Menu> SimulatedUserInterface::makeMenu() {
    journal_.add("makeMenu");
    return std::make_shared<SimulatedMenu>();
}

void SimulatedUserInterface::installMainMenu(const std::string& title,
                                             const std::vector<platform::EditMenuItem>& items) {
    journal_.add("installMainMenu");
    mainMenus.push_back({title, items});
}

std::shared_ptr<platform::Image> SimulatedUserInterface::systemSymbol(
    const std::string& name, const std::string& accessibilityDescription) {
    if (unknownSymbols.contains(name)) {
        return nullptr;
    }
    return std::make_shared<SimulatedImage>(name, accessibilityDescription);
}

platform::AlertAnswer SimulatedUserInterface::runModal(const platform::Alert& alert) {
    journal_.add("runModal");
    alerts.push_back(alert);
    isModal = true;
    time_.runUntilIdle();
    if (whileModal) {
        whileModal(alert);
    }
    isModal = false;
    if (answers_.empty()) {
        return {0, alert.fieldText};
    }
    platform::AlertAnswer answer = std::move(answers_.front());
    answers_.erase(answers_.begin());
    return answer;
}

void SimulatedUserInterface::answerNextAlert(int button, std::string fieldText) {
    answers_.push_back({platform::alertFirstButtonReturn + button, std::move(fieldText)});
}

void SimulatedUserInterface::showSetupWindow() {
    journal_.add("showSetupWindow");
    setupWindows.push_back(time_.now());
}

void SimulatedUserInterface::showCallToAction(int minutes) {
    journal_.add("showCallToAction " + std::to_string(minutes));
    callsToAction.push_back({minutes, time_.now()});
}

}  // namespace tarvik::simulated
