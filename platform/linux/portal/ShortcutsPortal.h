// SPDX-License-Identifier: MIT
#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/Log.h"
#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/settings/TemporaryDesktopFile.h"

namespace tarvik::linuxdesktop {

/// The GlobalShortcuts interface of the desktop's portal, on the session bus. Loop thread only; the
/// operations wait for the disk at the most. Every callback comes in a later turn.
///
/// The portal tells applications apart by the names of their desktop files. Without an installed
/// desktop file the application makes one for the time of the run.
class ShortcutsPortal {
  public:
    /// The name on the bus.
    static constexpr const char* busName = "org.freedesktop.portal.Desktop";

    struct Shortcut {
        std::string name;
        /// For the user.
        std::string description;
        /// As in "ALT+space". The user may choose another combination.
        std::string trigger;
    };
    using Names = std::vector<std::string>;
    struct Events {
        std::function<void(const std::string& name)> onActivated;
        std::function<void(const std::string& name)> onDeactivated;
        /// The portal has bound these shortcuts, and `reason` says why not all of them. After a
        /// bind(), or a change by the user.
        std::function<void(const Names& names, const std::string& reason)> onBound;
        /// The shortcuts are gone, or cannot be bound. A later bind() may be more successful.
        std::function<void(const std::string& reason)> onEnded;
        /// A portal is there, and knows no shortcuts.
        std::function<void()> onStarted;
    };

    enum class Offer { present, absent, unanswered };
    /// Whether the portal of the session has global shortcuts. Waits 0.9 s at the most. A portal
    /// registers an application only by the first call of a connection, so `bus` is of no use
    /// afterwards.
    static Offer offer(MessageBus& bus);

    /// `bus` has not called the portal. The references outlive the object and its callbacks.
    ShortcutsPortal(MessageBus& bus, EventLoop& loop, platform::Log& log, Events events);
    ShortcutsPortal(const ShortcutsPortal&) = delete;
    ShortcutsPortal& operator=(const ShortcutsPortal&) = delete;

    /// Asks for these shortcuts in place of all earlier ones. The portal may ask its user.
    void bind(std::vector<Shortcut> shortcuts);
    /// Gives all shortcuts back. `onDone` is called also when nobody answers.
    void close(const std::function<void()>& onDone);

  private:
    enum class Step { none, registering, creating, binding };

    void registerApplication();
    void handleRegistration(sd_bus_message* reply, bool isWanted);
    void setOwner(sd_bus_message* reply);
    void createSession();
    void bindShortcuts();
    void request(BusMessage call, Step step);
    void handleResponse(sd_bus_message* signal);
    void handleSession(std::uint32_t code, sd_bus_message* signal);
    void handleBound(std::uint32_t code, sd_bus_message* signal);
    void handleKey(sd_bus_message* signal, const std::function<void(const std::string&)>& onKey);
    void handleChange(sd_bus_message* signal);
    void handleClosed(sd_bus_message* signal);
    void handleOwnerChange(sd_bus_message* signal);
    void end(const std::string& reason);
    void reset();
    BusMessage newCall(const char* member);
    std::string newToken();
    void appendShortcuts(sd_bus_message* call) const;
    bool isFromPortal(sd_bus_message* signal) const;

    MessageBus& bus_;
    const Events events_;
    TemporaryDesktopFile desktopFile_;
    std::vector<Shortcut> shortcuts_;
    // The unique name of the portal; empty while unknown.
    std::string owner_;
    bool isRegistered_ = false;
    int registrationsLeft_ = 0;
    // The object that stands for the bound shortcuts; empty without one.
    std::string session_;
    Step step_ = Step::none;
    // The last part of the path of the request that is under way.
    std::string token_;
    unsigned lastToken_ = 0;
    // Calls of an earlier bind() are not of interest any more.
    unsigned generation_ = 0;
    // The end of the current step.
    Deadline deadline_;
};

}  // namespace tarvik::linuxdesktop
