// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "base/Result.h"
#include "platform/Log.h"
#include "platform/Workspace.h"
#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/gnome/GnomeHotKeys.h"
#include "platform/linux/ibus/IbusEngine.h"
#include "platform/linux/ibus/IbusTypist.h"
#include "platform/linux/input/InputSession.h"
#include "platform/linux/input/XHoldListener.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::linuxdesktop {

/// The connections of a GNOME session: to the session bus, and to IBus. Loop thread only.
///
/// GNOME serves from when GNOME Shell is on the session bus.
class GnomeSession final : public InputSession {
  public:
    /// As IbusTypist::Session; empty where nobody tells.
    using IsInFront = std::function<bool(platform::ProcessIdentifier)>;

    /// Connects to the session bus. An error when there is none, or when the session is no Wayland
    /// session. The references outlive the session. `onHold`
    /// is told of each hold.
    static Result<std::unique_ptr<InputSession>> open(EventLoop& loop, platform::Log& log,
                                                      Events events, GnomeHotKeys::OnTaken onTaken,
                                                      XHoldListener::Follow onHold,
                                                      IsInFront isInFront);
    GnomeSession(const GnomeSession&) = delete;
    GnomeSession& operator=(const GnomeSession&) = delete;

    GnomeHotKeys* hotKeys() override { return &hotKeys_; }
    SessionTypist* typist() override { return &typist_; }
    /// Gives the hotkeys back, and puts the user's engine back.
    void end(std::function<void()> onDone) override;

  private:
    GnomeSession(std::unique_ptr<MessageBus> bus, EventLoop& loop, platform::Log& log,
                 Events events, GnomeHotKeys::OnTaken onTaken, XHoldListener::Follow onHold,
                 IsInFront isInFront);
    void askForShell();
    void handleShellChange(sd_bus_message* signal);
    void askForFcitx();
    void connectIbus();
    void hasOwner(const char* name, std::function<void(bool hasOwner)> onAnswer);
    void askShell(std::function<void()> onDone);
    void syncShell(std::function<void()> onDone);

    const Events events_;
    std::unique_ptr<MessageBus> bus_;
    bool isServed_ = false;
    IbusEngine engine_;
    Deadline commitDelay_;
    IbusTypist typist_;
    GnomeHotKeys hotKeys_;
};

}  // namespace tarvik::linuxdesktop
