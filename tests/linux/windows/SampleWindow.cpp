// SPDX-License-Identifier: MIT

#include "tests/linux/windows/SampleWindow.h"

namespace tarvik::tests {

namespace {

using platform::Orientation;
using platform::StackAlignment;

constexpr platform::LayoutPriority weak = 250;

}  // namespace

SampleWindow::SampleWindow(platform::UserInterface& userInterface)
    : userInterface_(userInterface), separator_(userInterface.makeSeparator()) {
    window_ = userInterface.makeWindow(
        {.contentSize = {990, 635},
         .minimumSize = platform::Size{830, 555},
         .styleMask = platform::titledWindow | platform::closableWindow |
                      platform::miniaturizableWindow | platform::resizableWindow,
         .title = "Sample",
         .level = platform::WindowLevel::floating,
         .collectionBehavior = platform::canJoinAllSpaces | platform::fullScreenAuxiliary,
         .willClose = [this] { ++closings; }});
    platform::CheckboxDescription checkbox;
    checkbox.title = "Launch at login";
    platform::ButtonDescription restart;
    restart.title = "Restart Tarvik Dictate";
    window_->setContent(
        userInterface.makeStack(
            {.orientation = Orientation::vertical,
             .alignment = StackAlignment::leading,
             .spacing = 16,
             .edgeInsets = {24, 28, 24, 28},
             .views = {instructions(), separator_, keyRow(), statusRow("", "✗ Not set", ""),
                       statusRow("Accessibility", "✗ Not granted", "Grant"),
                       userInterface.makeCheckbox(checkbox), userInterface.makeButton(restart)}}),
        std::nullopt);
    window_->show();
    QApplication::processEvents();
}

std::shared_ptr<platform::View> SampleWindow::instructions() {
    std::string text;
    for (int line = 1; line <= 11; ++line) {
        text += std::to_string(line) +
                ".  Click Grant next to Accessibility, click Open System Settings, switch it on, "
                "return here and click Restart.\n";
    }
    return userInterface_.makeLabel({.text = text,
                                     .font = {12},
                                     .wrapping = platform::LabelWrapping::always,
                                     .preferredMaxLayoutWidth = 640});
}

std::shared_ptr<platform::View> SampleWindow::keyRow() {
    platform::TextFieldDescription field;
    field.placeholder = "Paste your Deepgram API key";
    field.isSecure = true;
    field.layout.minimumWidth = 380;
    field.layout.horizontalContentHugging = weak;
    field.layout.horizontalCompressionResistance = weak;
    field.accessibilityLabel = "Deepgram API key";
    platform::ButtonDescription save;
    save.title = "Save";
    save.layout.minimumWidth = 80;
    save.action = [this] { ++saves; };
    platform::LabelDescription name;
    name.text = "Deepgram API key";
    name.font = {13, platform::FontWeight::medium};
    name.layout.width = 160;
    return userInterface_.makeStack(
        {.spacing = 12,
         .views = {userInterface_.makeLabel(name), userInterface_.makeTextField(field),
                   userInterface_.makeButton(save)}});
}

std::shared_ptr<platform::View> SampleWindow::statusRow(const std::string& name,
                                                        const std::string& status,
                                                        const std::string& button) {
    platform::ViewLayout column;
    column.width = 160;
    column.horizontalContentHugging = weak;
    if (name.empty()) {
        return userInterface_.makeStack(
            {.spacing = 12,
             .views = {userInterface_.makeSpacer(column),
                       userInterface_.makeLabel({.text = status, .font = {12}})}});
    }
    platform::LabelDescription statusLabel{.text = status, .font = {12}};
    statusLabel.layout.horizontalContentHugging = weak;
    platform::ButtonDescription grant;
    grant.title = button;
    grant.layout.minimumWidth = 110;
    grant.accessibilityLabel = button + " " + name;
    return userInterface_.makeStack(
        {.spacing = 12,
         .views = {userInterface_.makeLabel({.text = name, .layout = column}),
                   userInterface_.makeLabel(statusLabel), userInterface_.makeButton(grant)}});
}

QList<QWidget*> SampleWindow::leaves() {
    QList<QWidget*> found;
    for (QWidget* widget : content().findChildren<QWidget*>()) {
        if (widget->layout() == nullptr) {
            found.push_back(widget);
        }
    }
    return found;
}

}  // namespace tarvik::tests
