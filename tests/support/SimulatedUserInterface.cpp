// SPDX-License-Identifier: MIT

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
    if (isModal) {
        return {};
    }
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

void SimulatedUserInterface::closeNextAlert(std::string fieldText) {
    answers_.push_back({0, std::move(fieldText)});
}

std::shared_ptr<platform::Image> SimulatedUserInterface::imageNamed(const std::string& name) {
    return missingImages.contains(name) ? nullptr : std::make_shared<SimulatedImage>(name);
}

std::shared_ptr<platform::Image> SimulatedUserInterface::applicationIconImage() {
    return hasApplicationIcon ? std::make_shared<SimulatedImage>("application icon") : nullptr;
}

std::shared_ptr<platform::Image> SimulatedUserInterface::genericApplicationIcon() {
    return std::make_shared<SimulatedImage>("generic application icon");
}

std::shared_ptr<platform::Label> SimulatedUserInterface::makeLabel(
    const platform::LabelDescription& description) {
    return std::make_shared<SimulatedLabel>(description);
}

std::shared_ptr<platform::TextField> SimulatedUserInterface::makeTextField(
    const platform::TextFieldDescription& description) {
    return std::make_shared<SimulatedTextField>(description);
}

std::shared_ptr<platform::Button> SimulatedUserInterface::makeButton(
    const platform::ButtonDescription& description) {
    return std::make_shared<SimulatedButton>(description);
}

std::shared_ptr<platform::Checkbox> SimulatedUserInterface::makeCheckbox(
    const platform::CheckboxDescription& description) {
    return std::make_shared<SimulatedCheckbox>(description);
}

std::shared_ptr<platform::View> SimulatedUserInterface::makeImageView(
    const platform::ImageViewDescription& description) {
    return std::make_shared<SimulatedImageView>(description);
}

std::shared_ptr<platform::View> SimulatedUserInterface::makeSeparator() {
    return std::make_shared<SimulatedSeparator>();
}

std::shared_ptr<platform::View> SimulatedUserInterface::makeSpacer(
    const platform::ViewLayout& layout) {
    return std::make_shared<SimulatedSpacer>(layout);
}

std::shared_ptr<platform::View> SimulatedUserInterface::makeStack(
    const platform::StackDescription& description) {
    return std::make_shared<SimulatedStack>(description);
}

std::shared_ptr<platform::Window> SimulatedUserInterface::makeWindow(
    const platform::WindowDescription& description) {
    auto window = std::make_shared<SimulatedWindow>(description, screen, time_, journal_);
    windows.push_back(window);
    return window;
}

std::shared_ptr<SimulatedWindow> SimulatedUserInterface::window(const std::string& title) const {
    for (const std::shared_ptr<SimulatedWindow>& made : windows) {
        if (made->look.title == title) {
            return made;
        }
    }
    return nullptr;
}

std::vector<TimePoint> SimulatedUserInterface::frontTimes(const std::string& title) const {
    const std::shared_ptr<SimulatedWindow> found = window(title);
    return found ? found->frontTimes : std::vector<TimePoint>();
}

}  // namespace tarvik::simulated
