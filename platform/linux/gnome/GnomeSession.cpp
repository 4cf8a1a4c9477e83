// SPDX-License-Identifier: MIT

#include "platform/linux/gnome/GnomeSession.h"

#include <chrono>
#include <string>
#include <utility>

#include "platform/linux/bus/BusReplies.h"
#include "platform/linux/gnome/GnomeSettings.h"
#include "platform/linux/input/SessionKind.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto timeout = 1s;
constexpr auto commitInterval = 20ms;

const BusObject busDaemon{"org.freedesktop.DBus", "/org/freedesktop/DBus"};
const BusObject shell{"org.gnome.Shell", "/org/gnome/Shell"};

// GNOME Shell gives IBus the same engine for every keyboard layout.
constexpr const char* layoutEngine = "xkb:us::eng";

// The engine of the source that the user has chosen last.
std::string configuredEngine() {
    const GnomeSettings settings("org.gnome.desktop.input-sources");
    for (const char* key : {"mru-sources", "sources"}) {
        if (const auto sources = settings.pairs(key); sources && !sources->empty()) {
            const auto& [kind, name] = sources->front();
            return kind == "ibus" ? name : layoutEngine;
        }
    }
    return layoutEngine;
}

}  // namespace

Result<std::unique_ptr<InputSession>> GnomeSession::open(EventLoop& loop, platform::Log& log,
                                                         Events events,
                                                         GnomeHotKeys::OnTaken onTaken,
                                                         XHoldListener::Follow onHold,
                                                         IsInFront isInFront) {
    // GNOME on X11 is served by what serves every X11 session.
    if (!isWaylandSession()) {
        return Error{0, "WAYLAND_DISPLAY is not set"};
    }
    auto opened = MessageBus::openSession();
    if (!opened) {
        return Error{opened.error().code,
                     "there is no session bus: " + opened.error().localizedDescription};
    }
    return std::unique_ptr<InputSession>(new GnomeSession(std::move(opened).value(), loop, log,
                                                          std::move(events), std::move(onTaken),
                                                          std::move(onHold), std::move(isInFront)));
}

GnomeSession::GnomeSession(std::unique_ptr<MessageBus> bus, EventLoop& loop, platform::Log& log,
                           Events events, GnomeHotKeys::OnTaken onTaken,
                           XHoldListener::Follow onHold, IsInFront isInFront)
    : events_(std::move(events)),
      bus_(std::move(bus)),
      engine_(loop, configuredEngine,
              {[this](const IbusEngine::Key& key) { hotKeys_.hold().handleKey(key); },
               [this] {
                   hotKeys_.hold().handleField();
                   typist_.handleField();
               },
               [this](const std::string& reason) { typist_.handleRefusal(reason); },
               [&log](bool isThere) {
                   log.write(std::string("TarvikDictate: IBus is ") + (isThere ? "back" : "gone"));
               }}),
      commitDelay_(loop),
      typist_(engine_, loop, log,
              {std::move(isInFront),
               [this](std::function<void()> onDone) { syncShell(std::move(onDone)); }}),
      hotKeys_(*bus_, engine_, loop, log, events_.hotKeys, std::move(onTaken), std::move(onHold)) {
    bus_->attach(loop, [this](const Error& error) {
        events_.onLost("the session bus is lost: " + error.localizedDescription);
    });
    bus_->observe(
        "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',"
        "arg0='org.gnome.Shell'",
        [this](sd_bus_message* signal) { handleShellChange(signal); });
    askForShell();
}

void GnomeSession::hasOwner(const char* name, std::function<void(bool)> onAnswer) {
    bus_->call(bus_->newCall(busDaemon, "org.freedesktop.DBus", "NameHasOwner", "s", name),
               MessageBus::noTimeout, [onAnswer = std::move(onAnswer)](sd_bus_message* reply) {
                   onAnswer(booleanIn(reply).value_or(false));
               });
}

void GnomeSession::askForShell() {
    hasOwner("org.gnome.Shell", [this](bool isThere) {
        if (!isThere) {
            events_.onRefused("no GNOME Shell in this session");
        } else if (!std::exchange(isServed_, true)) {
            askForFcitx();
        }
    });
}

void GnomeSession::handleShellChange(sd_bus_message* signal) {
    const char* name = nullptr;
    const char* before = nullptr;
    if (sd_bus_message_read(signal, "ss", &name, &before) <= 0) {
        return;
    }
    if (!isServed_) {
        askForShell();
    } else if (*before != '\0') {
        events_.onLost("GNOME Shell is gone");
    }
}

void GnomeSession::askForFcitx() {
    hasOwner("org.fcitx.Fcitx5", [this](bool isThere) {
        if (isThere) {
            events_.onReady("Fcitx is the input method of this session");
        } else {
            connectIbus();
        }
    });
}

void GnomeSession::connectIbus() {
    events_.onReady(engine_.connect().value_or(""));
}

void GnomeSession::askShell(std::function<void()> onDone) {
    bus_->call(bus_->newPropertyCall(shell, "org.gnome.Shell", "ShellVersion"), timeout,
               [onDone = std::move(onDone)](sd_bus_message*) { onDone(); });
}

// GNOME Shell handles messages in their order, but concludes a commit only when it has nothing else
// to do. Of two commits before that, programs take the second one alone.
void GnomeSession::syncShell(std::function<void()> onDone) {
    askShell([this, onDone = std::move(onDone)]() mutable {
        commitDelay_.set(commitInterval, [this, onDone = std::move(onDone)]() mutable {
            askShell(std::move(onDone));
        });
    });
}

void GnomeSession::end(std::function<void()> onDone) {
    hotKeys_.removeAll(
        [this, onDone = std::move(onDone)]() mutable { engine_.end(std::move(onDone)); });
}

}  // namespace tarvik::linuxdesktop
