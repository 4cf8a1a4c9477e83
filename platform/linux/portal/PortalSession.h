// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "base/Result.h"
#include "platform/Log.h"
#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/input/InputSession.h"
#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/portal/PortalHotKeys.h"

namespace tarvik::linuxdesktop {

/// One connection to the session bus, for the hotkeys of the portal. Loop thread only.
///
/// The session serves from its start, also while no portal is on the bus: PortalHotKeys waits for
/// the next portal by itself.
class PortalSession final : public InputSession {
  public:
    /// Connects to the session bus. An error when there is none. The references outlive the
    /// session.
    static Result<std::unique_ptr<InputSession>> open(EventLoop& loop, platform::Log& log,
                                                      Events events);
    PortalSession(const PortalSession&) = delete;
    PortalSession& operator=(const PortalSession&) = delete;

    PortalHotKeys* hotKeys() override { return &hotKeys_; }
    /// A portal types nothing.
    SessionTypist* typist() override { return nullptr; }
    void end(std::function<void()> onDone) override { hotKeys_.removeAll(std::move(onDone)); }

  private:
    PortalSession(std::unique_ptr<MessageBus> bus, EventLoop& loop, platform::Log& log,
                  Events events);

    const Events events_;
    std::unique_ptr<MessageBus> bus_;
    Deadline start_;
    PortalHotKeys hotKeys_;
};

}  // namespace tarvik::linuxdesktop
