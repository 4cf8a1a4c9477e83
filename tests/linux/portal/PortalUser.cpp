// SPDX-License-Identifier: MIT

#include "tests/linux/portal/PortalUser.h"

#include "platform/EventManager.h"

namespace tarvik::tests {

PortalUser::PortalUser() {
    variables_.set("WAYLAND_DISPLAY", "/nowhere");
    variables_.set("XDG_DATA_HOME", data());
    variables_.set("XDG_DATA_DIRS", folder_ / "system");
    portal_.emplace();
}

std::string PortalUser::nameOf(std::uint32_t modifiers) {
    return (modifiers & platform::shiftKeyMask) != 0 ? "alt-shift-space" : "alt-space";
}

void PortalUser::press(std::uint32_t key) {
    down_.insert(key);
    if (key == spaceKey && down_.contains(altKey) && portal_) {
        active_ = down_.contains(shiftKey) ? "alt-shift-space" : "alt-space";
        portal_->activate(active_);
    }
}

void PortalUser::release(std::uint32_t key) {
    down_.erase(key);
    if (!active_.empty() && portal_) {
        portal_->deactivate(active_);
    }
    active_.clear();
}

}  // namespace tarvik::tests
