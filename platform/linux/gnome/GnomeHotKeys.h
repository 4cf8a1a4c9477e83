// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "platform/EventManager.h"
#include "platform/Log.h"
#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/gnome/GnomeShortcuts.h"
#include "platform/linux/gnome/ShortcutHold.h"
#include "platform/linux/gnome/ShortcutPress.h"
#include "platform/linux/gnome/ShortcutSocket.h"
#include "platform/linux/gnome/WindowMenuShortcut.h"
#include "platform/linux/ibus/FieldEngine.h"
#include "platform/linux/input/SessionHotKeys.h"
#include "platform/linux/input/XHoldListener.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::linuxdesktop {

/// Key combinations as custom shortcuts of GNOME, and which of them is held. Loop thread only.
///
/// GNOME runs a command when a shortcut is pressed, and again at each repeat of the key. The
/// command is a program of this application, which tells of the press over a socket.
///
/// Each registration waits for GNOME's store of settings.
class GnomeHotKeys final : public SessionHotKeys {
  public:
    /// Gets whether the menu of windows has the combination of the hold hotkey.
    using OnTaken = std::function<void(bool isTaken)>;

    /// The references outlive the object. `onHold` is told of each hold.
    GnomeHotKeys(MessageBus& bus, FieldEngine& engine, EventLoop& loop, platform::Log& log,
                 Events events, OnTaken onTaken, XHoldListener::Follow onHold);
    /// Ends a hold. Shortcuts that are left stay until the next start.
    ~GnomeHotKeys() override = default;
    GnomeHotKeys(const GnomeHotKeys&) = delete;
    GnomeHotKeys& operator=(const GnomeHotKeys&) = delete;

    void add(HotKeyNumber number, std::uint32_t keyCode, std::uint32_t modifiers,
             OnStatus onStatus) override;
    void remove(HotKeyNumber number, std::function<void()> onDone) override;
    /// What was taken from the menu of windows goes back.
    void removeAll(std::function<void()> onDone) override;

    /// The user has asked for the combinations. The menu of windows loses the one of the hold
    /// hotkey, and `onFreed` is called.
    void takeFromWindowMenu();

    /// Hears of what the engine and the X server see.
    ShortcutHold& hold() { return hold_; }

  private:
    void claim(std::function<void(bool isFirst)> onAnswer);
    void awaitShell(std::function<void()> onDone);
    void askShell(std::function<void()> onAnswer);
    void bind(HotKeyNumber number, std::uint32_t modifiers, const OnStatus& onStatus);
    bool listen(const std::string& path);
    void handlePress(const ShortcutPress& press);

    MessageBus& bus_;
    EventLoop& loop_;
    platform::Log& log_;
    const Events events_;
    const OnTaken onTaken_;
    GnomeShortcuts shortcuts_;
    WindowMenuShortcut windowMenu_;
    std::map<HotKeyNumber, std::uint32_t> hotKeys_;
    bool isOwner_ = false;
    // From the first registration until the name is given up.
    std::optional<ShortcutSocket> socket_;
    ShortcutHold hold_;
    Deadline shellDeadline_;
};

}  // namespace tarvik::linuxdesktop
