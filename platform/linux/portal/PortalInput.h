// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/input/HotKeyMeans.h"
#include "platform/linux/input/HotKeyNotifier.h"
#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/portal/PortalHotKeys.h"

namespace tarvik::linuxdesktop {

/// Hotkeys by the GlobalShortcuts portal of a Wayland session. The portal asks its user, so every
/// registration is answered before the portal has decided.
///
/// The thread of the connection sleeps until the portal or the main thread wants something. Main
/// thread only, unless a line says otherwise.
class PortalInput final : public HotKeyMeans {
  public:
    /// Asks the session bus for the portal, and waits 1 s at the most. A portal that answers later
    /// is used from then on. The references outlive the object.
    PortalInput(platform::MainQueue& mainQueue, platform::Log& log,
                std::weak_ptr<HotKeyListener> listener);
    /// Gives the shortcuts back and ends the thread. Takes 0.5 s at the most.
    ~PortalInput() override;
    PortalInput(const PortalInput&) = delete;
    PortalInput& operator=(const PortalInput&) = delete;

    /// Why the portal does not serve this session; empty while it does, or has not answered yet.
    const std::optional<std::string>& refusal() const { return refusal_; }
    /// Whether the portal had answered when the object was made.
    bool hasAnswered() const { return hasAnswered_; }

    bool isAvailable() const override { return isConnected_; }

    platform::OSStatus registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                      std::uint32_t modifiers) override;
    void unregisterHotKey(HotKeyNumber number) override;
    /// Nothing is left to do: no means that types beside a portal lifts a modifier.
    void expectLift(std::uint32_t /*modifiers*/) override {}

  private:
    // A connection to the session bus, and what lives as long.
    struct Connection {
        std::unique_ptr<MessageBus> bus;
        PortalHotKeys hotKeys;

        Connection(std::unique_ptr<MessageBus> opened, EventLoop& loop, platform::Log& log,
                   PortalHotKeys::Events events)
            : bus(std::move(opened)), hotKeys(*bus, loop, log, std::move(events)) {}
    };

    std::optional<std::string> connect();
    void handleLoss(const std::string& reason);
    void finish();

    platform::Log& log_;
    const HotKeyNotifier notifier_;
    PollLoop loop_;
    Deadline endDeadline_{loop_};
    std::atomic<bool> isConnected_ = false;
    bool hasAnswered_ = false;
    std::optional<std::string> refusal_;
    std::unique_ptr<Connection> connection_;
    std::thread thread_;
};

}  // namespace tarvik::linuxdesktop
