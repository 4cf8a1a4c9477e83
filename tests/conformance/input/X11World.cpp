// SPDX-License-Identifier: MIT

#include "tests/conformance/input/InputConformance.h"
#include "tests/conformance/input/LinuxInputWorld.h"
#include "tests/linux/x11/WindowManager.h"
#include "tests/linux/x11/X11User.h"

namespace tarvik::tests {

namespace {

class X11InputWorld final : public LinuxInputWorld<X11User> {
  public:
    // The first key of another keyboard changes the map once, and the window manager takes its keys
    // back.
    X11InputWorld() {
        user_.tap(X11User::shiftKey);
        waitForWindowManager(mainQueue_);
    }

    void take(std::uint32_t modifiers) override {
        std::uint32_t mask = 0;
        mask |= (modifiers & platform::optionKeyMask) != 0 ? std::uint32_t{XCB_MOD_MASK_1} : 0U;
        mask |= (modifiers & platform::shiftKeyMask) != 0 ? std::uint32_t{XCB_MOD_MASK_SHIFT} : 0U;
        user_.grabHotKey(X11User::spaceKey, mask);
    }
};

}  // namespace

std::vector<NamedInputWorld> realInputWorlds() {
    return {
        {"X11", []() -> std::unique_ptr<InputWorld> { return std::make_unique<X11InputWorld>(); }}};
}

}  // namespace tarvik::tests
