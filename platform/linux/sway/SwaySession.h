// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "base/Result.h"
#include "platform/Log.h"
#include "platform/linux/input/InputSession.h"
#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/sway/SwayConnection.h"
#include "platform/linux/sway/SwayHotKeys.h"
#include "platform/linux/sway/SwayWindows.h"
#include "platform/linux/wayland/KeyRepeat.h"
#include "platform/linux/wayland/VirtualTypist.h"
#include "platform/linux/wayland/WaylandConnection.h"

namespace tarvik::linuxdesktop {

/// The connections to Sway, and the meaning of Sway's events. Loop thread only.
class SwaySession final : public InputSession {
  public:
    /// Accompanies Alt in the X programs of the session; false where nobody does.
    using AccompanyInX = std::function<bool()>;

    /// Connects to the Sway that SWAYSOCK names. An error when nobody listens there. The references
    /// outlive the session.
    static Result<std::unique_ptr<InputSession>> open(EventLoop& loop, platform::Log& log,
                                                      Events events, SwayWindows::OnFront onFront,
                                                      AccompanyInX accompanyInX);
    SwaySession(const SwaySession&) = delete;
    SwaySession& operator=(const SwaySession&) = delete;

    SwayHotKeys* hotKeys() override { return &hotKeys_; }
    SessionTypist* typist() override { return typist_ ? &*typist_ : nullptr; }
    /// As XProgramHost.
    void lendKeyboard(std::uint32_t xNumber);
    void giveKeyboardBack(std::uint32_t xNumber);
    void flush() override;
    void end(std::function<void()> onDone) override;

  private:
    SwaySession(std::unique_ptr<SwayConnection> connection, EventLoop& loop, platform::Log& log,
                Events events, SwayWindows::OnFront onFront, AccompanyInX accompanyInX);

    SwayHotKeys::Events heard(SwayHotKeys::Events events);
    void subscribe();
    void openTyping();
    void handle(SwayConnection::Event event, std::string_view json);
    void accompanyInWayland();
    void reportPress();

    EventLoop& loop_;
    platform::Log& log_;
    Events events_;
    const AccompanyInX accompanyInX_;
    std::unique_ptr<SwayConnection> connection_;
    SwayWindows windows_;
    // A press of which the listener does not know yet.
    std::optional<HotKeyNumber> press_;
    SwayHotKeys hotKeys_;
    std::unique_ptr<WaylandConnection> wayland_;
    std::optional<KeyRepeat> keyRepeat_;
    std::optional<VirtualTypist> typist_;
};

}  // namespace tarvik::linuxdesktop
