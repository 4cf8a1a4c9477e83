// SPDX-License-Identifier: MIT

#include <chrono>

#include "tests/conformance/input/InputConformance.h"
#include "tests/conformance/input/LinuxInputWorld.h"
#include "tests/linux/portal/PortalUser.h"

namespace tarvik::tests {

namespace {

/// A session of which only the portal is known. The portal decides after the registration.
class PortalInputWorld final : public LinuxInputWorld<PortalUser> {
  public:
    // A person at the keyboard is slower than the portal.
    void press(std::uint32_t modifiers) override {
        const std::string name = PortalUser::nameOf(modifiers);
        mainQueue_.runUntil([&] { return user_.portal()->bound().contains(name); },
                            std::chrono::milliseconds(500));
        LinuxInputWorld::press(modifiers);
    }
    void take(std::uint32_t modifiers) override {
        user_.portal()->take(PortalUser::nameOf(modifiers));
    }
    bool isHotKeyLost() override { return log_.hasLineWith("a hotkey is lost"); }
};

}  // namespace

std::vector<NamedInputWorld> realInputWorlds() {
    return {{"Portal",
             []() -> std::unique_ptr<InputWorld> { return std::make_unique<PortalInputWorld>(); }}};
}

}  // namespace tarvik::tests
