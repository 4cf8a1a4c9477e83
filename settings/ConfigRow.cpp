// SPDX-License-Identifier: MIT

#include "settings/ConfigRow.h"

#include <utility>

#include "settings/StatusText.h"

namespace tarvik {

namespace {

constexpr double minButtonWidth = 110;
constexpr double spacing = 12;

}  // namespace

ConfigRow::ConfigRow(platform::UserInterface& userInterface, const std::string& label,
                     const std::string& buttonTitle, const std::string& actionName,
                     std::function<void()> action)
    : nameLabel_(userInterface.makeLabel(
          {.text = label,
           .font = {13, platform::FontWeight::medium},
           .layout = {.width = nameWidth, .horizontalContentHugging = yielding}})),
      statusLabel_(userInterface.makeLabel(
          {.text = "—", .font = {12}, .layout = {.horizontalContentHugging = yielding}})),
      actionButton_(userInterface.makeButton({.title = buttonTitle,
                                              .layout = {.minimumWidth = minButtonWidth},
                                              .accessibilityLabel = buttonTitle + " " + label,
                                              .actionName = actionName,
                                              .action = std::move(action)})),
      view_(userInterface.makeStack({.orientation = platform::Orientation::horizontal,
                                     .alignment = platform::StackAlignment::centerY,
                                     .spacing = spacing,
                                     .views = {nameLabel_, statusLabel_, actionButton_}})) {}

void ConfigRow::apply(PermissionStatus status, const std::string& grantedLabel,
                      const std::string& deniedLabel) {
    const bool isGranted = status == PermissionStatus::granted;
    showStatus(*statusLabel_, isGranted, isGranted ? grantedLabel : deniedLabel);
}

}  // namespace tarvik
