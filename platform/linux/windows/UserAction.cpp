// SPDX-License-Identifier: MIT

#include "platform/linux/windows/UserAction.h"

#include <utility>

namespace tarvik::linuxdesktop {

namespace {

// One for the process, as the user is.
std::optional<std::uint32_t> timeOfAction;

}  // namespace

UserAction::UserAction(std::uint32_t time) : outerTime_(std::exchange(timeOfAction, time)) {}

UserAction::~UserAction() {
    timeOfAction = outerTime_;
}

std::optional<std::uint32_t> UserAction::currentTime() {
    return timeOfAction;
}

}  // namespace tarvik::linuxdesktop
