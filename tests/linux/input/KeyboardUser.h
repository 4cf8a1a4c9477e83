// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <set>

#include "tests/linux/input/KernelKeys.h"

namespace tarvik::tests {

/// A person at the keyboard of a Wayland session.
class KeyboardUser : public KernelKeys {
  public:
    KeyboardUser() = default;
    /// Every key is up: releaseAll().
    virtual ~KeyboardUser() = default;
    KeyboardUser(const KeyboardUser&) = delete;
    KeyboardUser& operator=(const KeyboardUser&) = delete;

    void press(std::uint32_t key);
    void release(std::uint32_t key);
    void tap(std::uint32_t key);

    /// Presses and releases keys as lines of the standard input say: "press 57", "release 57".
    /// Prints "ready", and "done" after each line. Returns at the end of the input.
    void obeyInput();

  protected:
    bool isDown(std::uint32_t key) const { return down_.contains(key); }
    /// Called by the destructor of each derived class.
    void releaseAll();

  private:
    /// A key has gone down or up. The compositor has taken the key when the call returns.
    virtual void send(std::uint32_t key, bool isPressed) = 0;

    std::set<std::uint32_t> down_;
};

}  // namespace tarvik::tests
