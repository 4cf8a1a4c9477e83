// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "base/Result.h"
#include "platform/Log.h"
#include "platform/linux/input/InputSession.h"
#include "platform/linux/wayland/ToplevelWindows.h"
#include "platform/linux/wayland/VirtualTypist.h"
#include "platform/linux/wayland/WaylandConnection.h"

namespace tarvik::linuxdesktop {

/// The connection to a compositor with the protocols of wlroots. Loop thread only.
class WaylandSession final : public InputSession {
  public:
    /// Connects to the compositor that WAYLAND_DISPLAY names. An error when nobody listens there.
    /// The references outlive the session.
    static Result<std::unique_ptr<InputSession>> open(EventLoop& loop, platform::Log& log,
                                                      Events events,
                                                      ToplevelWindows::OnFront onFront);
    WaylandSession(const WaylandSession&) = delete;
    WaylandSession& operator=(const WaylandSession&) = delete;

    /// A recording begins in the window in front. The window belongs to `process`, or to an unknown
    /// one where that is 0. The texts of the recording have `choice` for their window, a number of
    /// WindowFocus::newWindowNumber(). Keeps the program in front from opening its menu.
    void beginRecording(std::int64_t choice, platform::ProcessIdentifier process);

    SessionTypist* typist() override { return typist_ ? &*typist_ : nullptr; }
    void flush() override { connection_->flush(); }
    void end(std::function<void()> onDone) override { onDone(); }

  private:
    WaylandSession(std::unique_ptr<WaylandConnection> connection, EventLoop& loop,
                   platform::Log& log, Events events, ToplevelWindows::OnFront onFront);
    void handleOffers();

    EventLoop& loop_;
    platform::Log& log_;
    const Events events_;
    const ToplevelWindows::OnFront onFront_;
    const std::unique_ptr<WaylandConnection> connection_;
    std::optional<ToplevelWindows> windows_;
    std::optional<VirtualTypist> typist_;
};

}  // namespace tarvik::linuxdesktop
