// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstdint>

#include "platform/linux/x11/XcbReply.h"

namespace tarvik::tests {

/// The person at the keyboard, and a second program that grabs keys.
class X11User {
  public:
    /// Which keyboard is used: the server's own, as hardware is, or the one that programs press.
    enum class Device { hardware, synthetic };

    static constexpr std::uint8_t escapeKey = 9;
    static constexpr std::uint8_t altKey = 64;
    static constexpr std::uint8_t shiftKey = 50;
    static constexpr std::uint8_t spaceKey = 65;
    static constexpr std::uint8_t pauseKey = 127;
    static constexpr std::uint8_t qKey = 24;
    static constexpr std::uint8_t fKey = 41;

    explicit X11User(Device device = Device::hardware);
    /// Lets go of every key and of the lock keys, and closes a menu.
    ~X11User();
    X11User(const X11User&) = delete;
    X11User& operator=(const X11User&) = delete;

    void press(std::uint8_t key);
    void release(std::uint8_t key);
    void tap(std::uint8_t key);
    bool isDown(std::uint8_t key);
    /// Caps Lock or Num Lock are on.
    bool isLocked(std::uint8_t modifier);
    /// Switches Caps Lock and Num Lock.
    void lock(std::uint8_t modifiers);

    /// Takes the hardware away from the server's keyboard, and gives it back.
    void unplug();
    void plugIn();
    /// Adds another keyboard with a pointer, which programs can press, and removes both.
    void addSecondKeyboard();
    void removeSecondKeyboard();

    /// Grabs a key for this program as hotkeys are grabbed; false when another one has it.
    bool grabHotKey(std::uint8_t key, std::uint32_t modifiers);
    /// Grabs it as window managers do.
    void grabAsManager(std::uint8_t key, std::uint16_t modifiers);
    /// How many key presses have come to this program by its grabs.
    int grabbedPresses();
    /// From the next press of `key` on the keyboard is this program's and stands still, until it
    /// goes on as if nothing had been.
    void haltKeyboardAt(std::uint8_t key);
    void letKeyboardGoOn(std::uint8_t key);
    /// Keeps the server from every other program's requests, until the programs are served again.
    void grabServer();
    void releaseServer();
    void grabWholeKeyboard();
    /// The same; false when another program has it.
    bool tryToGrabWholeKeyboard();
    void releaseWholeKeyboard();

    /// How many keys have no symbol.
    int keysWithoutSymbol();
    /// What a key yields without modifiers.
    std::uint32_t symbol(std::uint8_t key);
    /// Gives the keys without a symbol this one, but for the last `left` of them.
    void fillKeysWithoutSymbol(int left, std::uint32_t symbol);
    /// Changes what a key yields.
    void setSymbol(std::uint8_t key, std::uint32_t symbol);
    /// Writes the keyboard map as it is, as programs do that speak only the core protocol.
    void writeMapBack();

  private:
    void key(bool down, std::uint8_t code);
    void changeHierarchy(std::uint16_t change, std::uint16_t master);
    linuxdesktop::XcbReply<xcb_get_keyboard_mapping_reply_t> map();

    xcb_connection_t* connection_;
    xcb_window_t root_;
    std::uint8_t pressType_;
    std::uint8_t releaseType_;
    std::uint8_t device_ = 0;
    std::uint16_t master_ = 0;
    std::uint8_t xinputOpcode_ = 0;
    int grabbedPresses_ = 0;
};

}  // namespace tarvik::tests
