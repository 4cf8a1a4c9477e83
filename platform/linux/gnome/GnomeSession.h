// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Log.h"
#include "platform/Workspace.h"
#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/gnome/GnomeHotKeys.h"
#include "platform/linux/ibus/IbusEngine.h"
#include "platform/linux/ibus/IbusTypist.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::linuxdesktop {

/// Everything that lives on the input thread of a GNOME session. Loop thread only.
class GnomeSession {
  public:
    struct Events {
        GnomeHotKeys::Events hotKeys;
        /// GNOME Shell has answered. With a text, nothing can be typed, and the text says why.
        std::function<void(const std::string& typingRefusal)> onReady;
        /// The session has no GNOME Shell, or its bus is gone.
        std::function<void(const std::string& reason)> onRefused;
        /// As IbusTypist::Session; empty where nobody tells.
        std::function<bool(platform::ProcessIdentifier)> isInFront;
    };

    /// The references outlive the object. The callbacks do not destroy the object.
    GnomeSession(std::unique_ptr<MessageBus> bus, EventLoop& loop, platform::Log& log,
                 Events events);
    GnomeSession(const GnomeSession&) = delete;
    GnomeSession& operator=(const GnomeSession&) = delete;

    GnomeHotKeys& hotKeys() { return hotKeys_; }
    IbusTypist& typist() { return typist_; }

    /// Gives the hotkeys back, and puts the user's engine back; `onDone` is called once.
    void end(std::function<void()> onDone);

  private:
    void askForShell();
    void askForFcitx();
    void connectIbus();
    void hasOwner(const char* name, std::function<void(bool hasOwner)> onAnswer);
    void askShell(std::function<void()> onDone);
    void syncShell(std::function<void()> onDone);

    Events events_;
    std::unique_ptr<MessageBus> bus_;
    IbusEngine engine_;
    Deadline commitDelay_;
    IbusTypist typist_;
    GnomeHotKeys hotKeys_;
};

}  // namespace tarvik::linuxdesktop
