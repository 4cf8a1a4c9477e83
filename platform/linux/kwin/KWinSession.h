// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/Result.h"
#include "platform/Log.h"
#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/input/InputSession.h"
#include "platform/linux/kwin/FakeKeyboard.h"
#include "platform/linux/kwin/GlobalAccelHotKeys.h"
#include "platform/linux/kwin/InputMethodSlot.h"
#include "platform/linux/kwin/KWinTypist.h"
#include "platform/linux/kwin/PlasmaWindows.h"
#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/settings/TemporaryDesktopFile.h"
#include "platform/linux/wayland/WaylandConnection.h"

namespace tarvik::linuxdesktop {

/// The connections to KWin: over the session bus, and over Wayland. Loop thread only.
///
/// KWin serves from when one program on the bus is KWin and has the shortcuts. What KWin offers
/// over Wayland is known later.
class KWinSession final : public InputSession {
  public:
    struct WindowEvents {
        PlasmaWindows::OnFront onFront;
        /// KWin has told what it offers over Wayland. A text says why it shows no windows. Once.
        std::function<void(const std::string& refusal)> onKnown;
    };

    /// Connects to the session bus. An error when there is none. The references outlive the
    /// session.
    static Result<std::unique_ptr<InputSession>> open(EventLoop& loop, platform::Log& log,
                                                      TemporaryDesktopFile& desktopFile,
                                                      Events events, WindowEvents windowEvents,
                                                      GlobalAccelHotKeys::OnTaken onTaken);
    ~KWinSession() override;
    KWinSession(const KWinSession&) = delete;
    KWinSession& operator=(const KWinSession&) = delete;

    GlobalAccelHotKeys* hotKeys() override { return &hotKeys_; }
    SessionTypist* typist() override {
        return wayland_ && wayland_->typist ? &*wayland_->typist : nullptr;
    }
    void flush() override;
    void end(std::function<void()> onDone) override;

  private:
    // The connection over Wayland, and what KWin offers there.
    struct Wayland {
        std::unique_ptr<WaylandConnection> connection;
        std::optional<PlasmaWindows> windows;
        std::optional<FakeKeyboard> keyboard;
        std::optional<InputMethodSlot> slot;
        std::optional<KWinTypist> typist;
    };
    // Who has a name on the bus, once the bus has answered; empty when nobody has.
    using Owner = std::optional<std::string>;

    KWinSession(std::unique_ptr<MessageBus> bus, EventLoop& loop, platform::Log& log,
                TemporaryDesktopFile& desktopFile, Events events, WindowEvents windowEvents,
                GlobalAccelHotKeys::OnTaken onTaken);
    SessionHotKeys::Events heard(SessionHotKeys::Events events);
    void askOwners();
    void handleOwners(const Owner& kwin, const Owner& shortcuts);
    void handleOwnerChange(sd_bus_message* signal);
    void openWayland();
    void handleOffers();
    void reportPress();
    void accompanyAlt(bool isHeld);

    EventLoop& loop_;
    platform::Log& log_;
    TemporaryDesktopFile& desktopFile_;
    const Events events_;
    const WindowEvents windowEvents_;
    std::unique_ptr<MessageBus> bus_;
    bool isServed_ = false;
    // A press of which the listener does not know yet.
    std::optional<HotKeyNumber> press_;
    GlobalAccelHotKeys hotKeys_;
    std::optional<Wayland> wayland_;
    // Makes the next connection over Wayland.
    Deadline reopening_{loop_};
    int offerRetries_ = 0;
};

}  // namespace tarvik::linuxdesktop
