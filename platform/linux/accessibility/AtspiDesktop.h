// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/Log.h"
#include "platform/Workspace.h"
#include "platform/linux/accessibility/AccessibilityState.h"
#include "platform/linux/accessibility/AtspiRegistry.h"
#include "platform/linux/accessibility/AtspiSession.h"
#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::linuxdesktop {

/// The connections to the session bus and to the accessibility bus. Belongs to the worker's thread;
/// nothing blocks.
///
/// The session bus announces an accessibility bus that comes back. Nothing announces a session bus:
/// a lost one is looked for at the next connect().
class AtspiDesktop {
  public:
    /// Connects. Keeps `state` up to date. All three outlive the desktop.
    AtspiDesktop(EventLoop& loop, platform::Log& log, AccessibilityState& state);
    ~AtspiDesktop();
    AtspiDesktop(const AtspiDesktop&) = delete;
    AtspiDesktop& operator=(const AtspiDesktop&) = delete;

    /// Connects to a bus that is missing.
    void connect();
    /// Calls `handler` once it is known that accessibility is available, switched on or off, or
    /// that a bus is missing; at once when that is known already.
    void whenFirstKnown(std::function<void()> handler);
    /// Switches accessibility on for the whole desktop.
    void enable();
    /// Asks the programs of a process what has the focus.
    void scan(platform::ProcessIdentifier process);
    /// The accessibility bus while programs report to it, otherwise null.
    MessageBus* accessibilityBus();

  private:
    AtspiSession::Handlers sessionHandlers();
    AtspiRegistry::Handlers registryHandlers();
    void connectRegistry(const std::string& address);
    void disconnectRegistry();
    void onSessionLost();
    void onRegistryLost();
    void reportError(const std::string& reason);
    void callFirstKnownHandlers();

    EventLoop& loop_;
    platform::Log& log_;
    AccessibilityState& state_;
    std::unique_ptr<AtspiSession> session_;
    std::unique_ptr<AtspiRegistry> registry_;
    std::string address_;
    /// Programs have registered since the last restart of the launcher. Without this condition, a
    /// launcher that always ends would be restarted for ever.
    bool canRestartLauncher_ = false;
    /// The log says already that something is missing.
    bool isErrorReported_ = false;
    /// The desktop has told whether accessibility is switched on.
    bool isEnabledKnown_ = false;
    std::vector<std::function<void()>> firstKnownHandlers_;
};

}  // namespace tarvik::linuxdesktop
