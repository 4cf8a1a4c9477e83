// SPDX-License-Identifier: MIT

#include "tests/support/SimulatedWindow.h"

#include <stdexcept>

namespace tarvik::simulated {

namespace {

template <typename View>
void collect(const std::shared_ptr<SimulatedView>& view,
             std::vector<std::shared_ptr<View>>& found) {
    if (auto match = std::dynamic_pointer_cast<View>(view)) {
        found.push_back(match);
    }
    for (const std::shared_ptr<SimulatedView>& child : view->children()) {
        collect(child, found);
    }
}

template <typename View>
std::shared_ptr<View> only(const std::vector<std::shared_ptr<View>>& found,
                           const std::string& name) {
    if (found.size() != 1) {
        throw std::logic_error(std::to_string(found.size()) + " views are called " + name);
    }
    return found.front();
}

}  // namespace

SimulatedWindow::SimulatedWindow(platform::WindowDescription description,
                                 std::optional<platform::Rect> screen, SimulatedTime& time,
                                 Journal& journal)
    : look(std::move(description)), time_(time), journal_(journal), screen_(screen) {
    frame_.size = look.contentSize;
    center();
}

void SimulatedWindow::setContent(std::shared_ptr<platform::View> root,
                                 std::optional<platform::RgbColor> contentBackground) {
    content = std::dynamic_pointer_cast<SimulatedView>(root);
    background = contentBackground;
}

void SimulatedWindow::setFrameOrigin(platform::Point origin) {
    frame_.origin = origin;
    journal_.add("setFrameOrigin");
}

void SimulatedWindow::center() {
    if (screen_) {
        frame_.origin = {screen_->origin.x + (screen_->size.width - frame_.size.width) / 2,
                         screen_->origin.y + (screen_->size.height - frame_.size.height) / 2};
    }
    journal_.add("center");
}

void SimulatedWindow::show() {
    isVisible_ = true;
    journal_.add("showWindow");
}

void SimulatedWindow::orderFrontRegardless() {
    isVisible_ = true;
    frontTimes.push_back(time_.now());
    journal_.add("orderFrontRegardless");
}

void SimulatedWindow::close() {
    journal_.add("closeWindow");
    if (isVisible_) {
        isVisible_ = false;
        if (look.willClose) {
            look.willClose();
        }
    }
}

template <typename View>
std::vector<std::shared_ptr<View>> SimulatedWindow::all() const {
    std::vector<std::shared_ptr<View>> found;
    if (content) {
        collect(content, found);
    }
    return found;
}

std::vector<std::shared_ptr<SimulatedButton>> SimulatedWindow::buttons(
    const std::string& title) const {
    std::vector<std::shared_ptr<SimulatedButton>> found;
    for (const auto& button : all<SimulatedButton>()) {
        if (button->look.title == title) {
            found.push_back(button);
        }
    }
    return found;
}

std::shared_ptr<SimulatedButton> SimulatedWindow::button(const std::string& title) const {
    return only(buttons(title), title);
}

std::shared_ptr<SimulatedTextField> SimulatedWindow::field(
    const std::string& accessibilityLabel) const {
    const std::shared_ptr<SimulatedTextField> found = only(all<SimulatedTextField>(), "field");
    if (found->look.accessibilityLabel != accessibilityLabel) {
        throw std::logic_error("the field is called " + found->look.accessibilityLabel);
    }
    return found;
}

std::shared_ptr<SimulatedCheckbox> SimulatedWindow::checkbox() const {
    return only(all<SimulatedCheckbox>(), "checkbox");
}

std::vector<std::string> SimulatedWindow::texts() const {
    std::vector<std::string> found;
    for (const auto& label : all<SimulatedLabel>()) {
        found.push_back(label->look.text);
    }
    return found;
}

std::shared_ptr<SimulatedLabel> SimulatedWindow::label(const std::string& text) const {
    for (const auto& label : all<SimulatedLabel>()) {
        if (label->look.text == text) {
            return label;
        }
    }
    return nullptr;
}

}  // namespace tarvik::simulated
