// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/kwin/FakeInputProtocol.h"

namespace tarvik::tests {

/// The person at the keyboard of a KWin session, and what other programs do there.
class KWinUser {
  public:
    // As the kernel numbers keys.
    static constexpr std::uint32_t escapeKey = 1;
    static constexpr std::uint32_t controlKey = 29;
    static constexpr std::uint32_t aKey = 30;
    static constexpr std::uint32_t shiftKey = 42;
    static constexpr std::uint32_t altKey = 56;
    static constexpr std::uint32_t spaceKey = 57;

    /// KWin lets every program press keys.
    KWinUser();
    /// Lets go of every key, and gives back what other programs have taken.
    ~KWinUser();
    KWinUser(const KWinUser&) = delete;
    KWinUser& operator=(const KWinUser&) = delete;

    void press(std::uint32_t key);
    void release(std::uint32_t key);
    void tap(std::uint32_t key);

    /// Another program, "Other Program, Launch", has the space bar with these modifiers of the
    /// event manager.
    void take(std::uint32_t modifiers);
    /// Who has the space bar with these modifiers: the names of a program and of its action.
    /// Empty when nobody has.
    static std::string ownerOf(std::uint32_t modifiers);

  private:
    wl_display* display_;
    org_kde_kwin_fake_input* input_ = nullptr;
    std::set<std::uint32_t> down_;
    // The names of actions.
    std::vector<std::string> taken_;
};

}  // namespace tarvik::tests
