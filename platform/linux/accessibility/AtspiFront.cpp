// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/AtspiFront.h"

namespace tarvik::linuxdesktop {

std::optional<platform::ProcessIdentifier> AtspiFront::frontmostProcess() const {
    return frontmostProcessSince({});
}

std::optional<platform::ProcessIdentifier> AtspiFront::frontmostProcessSince(
    std::chrono::steady_clock::time_point time) const {
    // Without a connection, the last report may be outdated.
    const auto focus = state_->isConnected ? state_->focus.load() : nullptr;
    return focus && focus->activeSince >= time ? focus->activeProcess : std::nullopt;
}

}  // namespace tarvik::linuxdesktop
