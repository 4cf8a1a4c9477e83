// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "tests/linux/input/KernelKeys.h"
#include "tests/linux/portal/FakePortal.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TemporaryVariables.h"

namespace tarvik::tests {

/// The person at the keyboard of a Wayland session that has a portal and nothing else. The session
/// is that of the process: its bus, and the folders of its user. One at a time.
class PortalUser : public KernelKeys {
  public:
    PortalUser();
    PortalUser(const PortalUser&) = delete;
    PortalUser& operator=(const PortalUser&) = delete;

    /// The portal tells of the bound shortcuts as keys go down and up.
    void press(std::uint32_t key);
    void release(std::uint32_t key);

    /// The session's bus ends.
    void endBus() { bus_.kill(); }
    /// The next one begins.
    void startBus() { bus_.start(); }
    /// The folder of the user's data.
    std::filesystem::path data() const { return folder_ / "data"; }

    /// Empty while the session has no portal.
    std::optional<FakePortal>& portal() { return portal_; }

    /// The name of the shortcut with these modifiers of the event manager.
    static std::string nameOf(std::uint32_t modifiers);

  private:
    const TemporaryFolder folder_;
    TemporaryVariables variables_;
    PrivateBus bus_;
    std::optional<FakePortal> portal_;
    std::set<std::uint32_t> down_;
    // The name of the shortcut whose keys are down.
    std::string active_;
};

}  // namespace tarvik::tests
