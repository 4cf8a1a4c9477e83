// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Log.h"
#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/input/HotKeyMeans.h"
#include "platform/linux/kwin/FakeKeyboard.h"
#include "platform/linux/kwin/GlobalAccelHotKeys.h"
#include "platform/linux/kwin/InputMethodSlot.h"
#include "platform/linux/kwin/KWinTypist.h"
#include "platform/linux/kwin/PlasmaWindows.h"
#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/settings/TemporaryDesktopFile.h"
#include "platform/linux/wayland/WaylandConnection.h"

namespace tarvik::linuxdesktop {

/// Everything that lives as long as the connections to KWin: over the session bus, and over
/// Wayland. Loop thread only.
///
/// KWin ends the Wayland connection when it ends, and another KWin may follow. The connection is
/// made again then, and the hotkeys are registered again.
class KWinSession {
  public:
    struct Events {
        GlobalAccelHotKeys::Events hotKeys;
        PlasmaWindows::OnFront onFront;
        /// KWin has told what it offers over Wayland. A text says why it shows no windows. Once.
        std::function<void(const std::string& frontRefusal)> onReady;
        /// The session bus is gone.
        std::function<void(const std::string& reason)> onLost;
    };

    /// Why KWin does not have the shortcuts of the session with this bus; empty where it has. Waits
    /// 0.9 s at the most, and the bus belongs to no loop yet.
    static std::string refusal(MessageBus& bus);

    /// There is no refusal. The references outlive the object. The callbacks do not destroy the
    /// object.
    KWinSession(std::unique_ptr<MessageBus> bus, EventLoop& loop, platform::Log& log,
                Events events);
    /// Ends a hold.
    ~KWinSession();
    KWinSession(const KWinSession&) = delete;
    KWinSession& operator=(const KWinSession&) = delete;

    GlobalAccelHotKeys& hotKeys() { return hotKeys_; }
    /// Null while nothing can be typed.
    KWinTypist* typist() { return wayland_ && wayland_->typist ? &*wayland_->typist : nullptr; }

    /// Sends what is ready. To be called before the loop sleeps.
    void flush();

  private:
    // One connection over Wayland, and what KWin offers there.
    struct Wayland {
        std::unique_ptr<WaylandConnection> connection;
        std::optional<PlasmaWindows> windows;
        std::optional<FakeKeyboard> keyboard;
        std::optional<InputMethodSlot> slot;
        std::optional<KWinTypist> typist;
    };

    GlobalAccelHotKeys::Events heard(GlobalAccelHotKeys::Events events);
    void handleOwnerChange(sd_bus_message* signal);
    void openWayland();
    void handleOffers();
    void reportPress();
    void accompanyAlt(bool isHeld);

    EventLoop& loop_;
    platform::Log& log_;
    Events events_;
    std::unique_ptr<MessageBus> bus_;
    // A press of which the listener does not know yet.
    std::optional<HotKeyNumber> press_;
    GlobalAccelHotKeys hotKeys_;
    std::optional<Wayland> wayland_;
    // KWin shows its windows to the programs whose desktop files say so, and takes keys from them.
    TemporaryDesktopFile desktopFile_;
    // Ends a lost connection, which cannot end itself, or makes the next one.
    Deadline reopening_{loop_};
    int offerRetries_ = 0;
};

}  // namespace tarvik::linuxdesktop
