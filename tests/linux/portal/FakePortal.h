// SPDX-License-Identifier: MIT
#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/bus/BusHandles.h"
#include "tests/linux/bus/BusServer.h"

namespace tarvik::tests {

/// A portal of the desktop that only has global shortcuts, on the session bus of the process. Its
/// own thread answers. Operations are for any thread.
class FakePortal {
  public:
    using Names = std::set<std::string>;

    /// What the portal does where it is asked for shortcuts.
    enum class Manner {
        properly,
        /// Answers when the manner is another one again.
        later,
        byErrors,
        /// Makes no session, and says so.
        refusesSession,
        /// Never responds to a request.
        silent,
        /// The user closes the dialog.
        cancelled,
        /// Binds all, and reports a failure beside them.
        reportsFailure,
        /// Reports a failure without shortcuts, and tells them a little later.
        tellsLater,
        /// Reports success without shortcuts.
        givesNothing,
        /// Responds with what no portal sends.
        garbage
    };
    struct Options {
        bool hasShortcuts = true;
        /// Whether the portal knows the register of applications.
        bool hasRegister = true;
    };

    FakePortal() : FakePortal(Options{}) {}
    explicit FakePortal(Options options);
    FakePortal(const FakePortal&) = delete;
    FakePortal& operator=(const FakePortal&) = delete;

    void setManner(Manner manner);
    /// Other programs have these shortcuts.
    void take(const std::string& name);

    /// The shortcuts that are bound.
    Names bound();
    /// The preferred trigger of each shortcut that was asked for last.
    std::map<std::string, std::string> triggers();
    /// How often the user was asked, and how often a session was closed.
    int dialogs();
    int closings();
    /// The application that has registered itself; empty without one.
    std::string application();

    /// Keys of a shortcut go down, repeat, or go up. Nothing happens where it is not bound.
    void activate(const std::string& name) { emitKey("Activated", name); }
    void deactivate(const std::string& name) { emitKey("Deactivated", name); }
    /// The user changes the shortcuts in the desktop's settings.
    void change(const Names& names);
    /// Ends the session.
    void closeSession();
    /// Sends a press as from another session.
    void activateForeign(const std::string& name);

  private:
    void emitKey(const char* member, const std::string& name);
    void emitChange(const Names& names);
    void emitKeyOf(const std::string& session, const char* member, const std::string& name);
    void respond(const std::string& request, std::uint32_t code, const Names* shortcuts);
    linuxdesktop::BusMessage newSignal(const std::string& path, const char* interface,
                                       const char* member) const;
    std::string requestPath(sd_bus_message* call, const std::string& token) const;

    template <int (FakePortal::*method)(sd_bus_message*)>
    static int handle(sd_bus_message* call, void* self, sd_bus_error* error);
    static int version(sd_bus* bus, const char* path, const char* interface, const char* property,
                       sd_bus_message* reply, void* self, sd_bus_error* error);
    int registerApplication(sd_bus_message* call);
    int createSession(sd_bus_message* call);
    int bindShortcuts(sd_bus_message* call);
    int closeCalled(sd_bus_message* call);

    static const sd_bus_vtable shortcutMethods[];
    static const sd_bus_vtable registerMethods[];
    static const sd_bus_vtable sessionMethods[];

    // All under the mutex of the server.
    const Options options_;
    Manner manner_ = Manner::properly;
    Names taken_;
    Names bound_;
    std::map<std::string, std::string> triggers_;
    std::string client_;
    std::string session_;
    std::string registeredClient_;
    std::string application_;
    int dialogs_ = 0;
    int closings_ = 0;
    BusServer server_;
};

}  // namespace tarvik::tests
