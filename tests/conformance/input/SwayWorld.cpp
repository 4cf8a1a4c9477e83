// SPDX-License-Identifier: MIT

#include <string>

#include "tests/conformance/input/InputConformance.h"
#include "tests/conformance/input/LinuxInputWorld.h"
#include "tests/linux/sway/SwayUser.h"

namespace tarvik::tests {

namespace {

class SwayInputWorld final : public LinuxInputWorld<SwayUser> {
  public:
    void take(std::uint32_t modifiers) override {
        const bool hasAlt = (modifiers & platform::optionKeyMask) != 0;
        const bool hasShift = (modifiers & platform::shiftKeyMask) != 0;
        user_.configure(std::string("bindsym ") + (hasAlt ? "Alt+" : "") +
                        (hasShift ? "Shift+" : "") + "space nop");
    }
};

}  // namespace

std::vector<NamedInputWorld> realInputWorlds() {
    return {{"Sway",
             []() -> std::unique_ptr<InputWorld> { return std::make_unique<SwayInputWorld>(); }}};
}

}  // namespace tarvik::tests
