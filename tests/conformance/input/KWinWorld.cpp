// SPDX-License-Identifier: MIT

#include "tests/conformance/input/InputConformance.h"
#include "tests/conformance/input/LinuxInputWorld.h"
#include "tests/linux/kwin/KWinUser.h"

namespace tarvik::tests {

namespace {

class KWinInputWorld final : public LinuxInputWorld<KWinUser> {
  public:
    // KWin 5 is busy for a while after each program that comes.
    KWinInputWorld() { KWinUser::ownerOf(platform::optionKeyMask); }

    void take(std::uint32_t modifiers) override { user_.take(modifiers); }
};

}  // namespace

std::vector<NamedInputWorld> realInputWorlds() {
    return {{"KWin",
             []() -> std::unique_ptr<InputWorld> { return std::make_unique<KWinInputWorld>(); }}};
}

}  // namespace tarvik::tests
