// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/linux/input/HotKeyMeans.h"
#include "platform/linux/input/InputThread.h"

namespace tarvik::linuxdesktop {

/// Hotkeys by the GlobalShortcuts portal of a Wayland session. The portal asks its user, so every
/// registration is answered before the portal has decided. Main thread only.
class PortalInput final : public HotKeyMeans {
  public:
    /// Asks the session bus for the portal, and waits 1 s at the most. A portal that answers later
    /// is used from then on. The references outlive the object.
    PortalInput(platform::MainQueue& mainQueue, platform::Log& log,
                std::weak_ptr<HotKeyListener> listener);

    /// Why the portal does not serve this session; empty while it does, or has not answered yet.
    std::optional<std::string> refusal() const { return thread_.refusal(); }
    /// Whether the portal had answered when the object was made.
    bool hasAnswered() const { return hasAnswered_; }

    platform::OSStatus registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                      std::uint32_t modifiers) override {
        return thread_.registerHotKey(number, keyCode, modifiers);
    }
    void unregisterHotKey(HotKeyNumber number) override { thread_.unregisterHotKey(number); }
    /// Nothing is left to do: no means that types beside a portal lifts a modifier.
    void expectLift(std::uint32_t /*modifiers*/) override {}

  private:
    // Why the session has no portal with shortcuts. Before the thread begins.
    std::optional<std::string> askForPortal();

    bool hasAnswered_ = false;
    // Asked for once. Written before the thread begins, and read by the thread.
    bool isOffered_ = false;
    InputThread thread_;
};

}  // namespace tarvik::linuxdesktop
