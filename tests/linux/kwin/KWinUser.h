// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/kwin/FakeInputProtocol.h"
#include "tests/linux/input/KeyboardUser.h"

namespace tarvik::tests {

/// The person at the keyboard of a KWin session, and what other programs do there.
class KWinUser final : public KeyboardUser {
  public:
    /// KWin lets every program press keys.
    KWinUser();
    /// Lets go of every key, and gives back what other programs have taken.
    ~KWinUser() override;

    /// Another program, "Other Program, Launch", has the space bar with these modifiers of the
    /// event manager.
    void take(std::uint32_t modifiers);
    /// Who has the space bar with these modifiers: the names of a program and of its action.
    /// Empty when nobody has.
    static std::string ownerOf(std::uint32_t modifiers);

  private:
    void send(std::uint32_t key, bool isPressed) override;

    wl_display* display_;
    org_kde_kwin_fake_input* input_ = nullptr;
    // The names of actions.
    std::vector<std::string> taken_;
};

}  // namespace tarvik::tests
