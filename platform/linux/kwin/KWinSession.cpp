// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/KWinSession.h"

#include <chrono>
#include <utility>
#include <vector>

#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr const char* kwinName = "org.kde.KWin";
constexpr const char* busInterface = "org.freedesktop.DBus";
const BusObject busDaemon{busInterface, "/org/freedesktop/DBus"};
// KWin looks for new desktop files every one and a half seconds at most.
constexpr auto permissionInterval = 1s;
constexpr int maxOfferRetries = 4;
// No keyboard has the key, and no program knows it.
constexpr std::uint32_t neutralKey = 240;

}  // namespace

Result<std::unique_ptr<InputSession>> KWinSession::open(EventLoop& loop, platform::Log& log,
                                                        TemporaryDesktopFile& desktopFile,
                                                        Events events, WindowEvents windowEvents,
                                                        GlobalAccelHotKeys::OnTaken onTaken) {
    auto opened = MessageBus::openSession();
    if (!opened) {
        return Error{opened.error().code,
                     "there is no session bus: " + opened.error().localizedDescription};
    }
    return std::unique_ptr<InputSession>(
        new KWinSession(std::move(opened).value(), loop, log, desktopFile, std::move(events),
                        std::move(windowEvents), std::move(onTaken)));
}

KWinSession::KWinSession(std::unique_ptr<MessageBus> bus, EventLoop& loop, platform::Log& log,
                         TemporaryDesktopFile& desktopFile, Events events,
                         WindowEvents windowEvents, GlobalAccelHotKeys::OnTaken onTaken)
    : loop_(loop),
      log_(log),
      desktopFile_(desktopFile),
      events_(std::move(events)),
      windowEvents_(std::move(windowEvents)),
      bus_(std::move(bus)),
      hotKeys_(*bus_, log, heard(events_.hotKeys), std::move(onTaken),
               [this](bool isHeld) { accompanyAlt(isHeld); }) {
    bus_->attach(loop, [this](const Error& error) {
        events_.onLost("the session bus is gone: " + error.localizedDescription);
    });
    for (const char* name : {kwinName, GlobalAccel::busName}) {
        bus_->observe(std::string("type='signal',sender='org.freedesktop.DBus',"
                                  "member='NameOwnerChanged',arg0='") +
                          name + "'",
                      [this](sd_bus_message* signal) { handleOwnerChange(signal); });
    }
    askOwners();
}

KWinSession::~KWinSession() {
    hotKeys_.handleEnd();
    flush();
}

void KWinSession::askOwners() {
    const auto kwin = std::make_shared<Owner>();
    const auto shortcuts = std::make_shared<Owner>();
    const auto ask = [&](const char* name, const std::shared_ptr<Owner>& owner) {
        bus_->call(bus_->newCall(busDaemon, busInterface, "GetNameOwner", "s", name),
                   MessageBus::noTimeout, [this, owner, kwin, shortcuts](sd_bus_message* reply) {
                       if (!isNoReply(reply)) {
                           *owner = textIn(reply).value_or("");
                           handleOwners(*kwin, *shortcuts);
                       }
                   });
    };
    ask(kwinName, kwin);
    ask(GlobalAccel::busName, shortcuts);
}

// On X11 the shortcuts belong to a program of their own, and outside of KDE such a program may run
// though it hears no key.
void KWinSession::handleOwners(const Owner& kwin, const Owner& shortcuts) {
    if (isServed_ || !kwin || !shortcuts) {
        return;
    }
    if (kwin->empty()) {
        events_.onRefused("there is no KWin on the session bus");
    } else if (*kwin != *shortcuts) {
        events_.onRefused("KWin does not have the shortcuts of this session");
    } else {
        isServed_ = true;
        events_.onReady("");
        openWayland();
    }
}

void KWinSession::handleOwnerChange(sd_bus_message* signal) {
    const char* name = nullptr;
    const char* before = nullptr;
    if (sd_bus_message_read(signal, "ss", &name, &before) <= 0) {
        return;
    }
    if (!isServed_) {
        askOwners();
    } else if (*before != '\0') {
        events_.onLost("KWin is gone");
    }
}

void KWinSession::openWayland() {
    wayland_.reset();
    auto opened = WaylandConnection::open();
    if (!opened) {
        windowEvents_.onKnown(opened.error().localizedDescription);
        return;
    }
    wayland_.emplace();
    wayland_->connection = std::move(opened).value();
    wayland_->connection->attach(
        loop_, [this] { handleOffers(); },
        [this](const std::string& reason) {
            events_.onLost("KWin has ended the connection: " + reason);
        });
}

void KWinSession::handleOffers() {
    WaylandConnection& connection = *wayland_->connection;
    if (PlasmaWindows::isOffered(connection)) {
        wayland_->windows.emplace(connection, windowEvents_.onFront);
        wayland_->slot.emplace(*bus_, loop_, log_);
        wayland_->typist.emplace(*wayland_->windows, *wayland_->slot, loop_, log_);
    }
    if (FakeKeyboard::isOffered(connection)) {
        wayland_->keyboard.emplace(connection);
    }
    // After a change of the desktop files, KWin answers as before for a while.
    if (!wayland_->windows && (desktopFile_.make() || offerRetries_ > 0) &&
        offerRetries_ < maxOfferRetries) {
        ++offerRetries_;
        reopening_.set(permissionInterval, [this] { openWayland(); });
        return;
    }
    const std::string refusal =
        wayland_->windows ? "" : "KWin does not show its windows to this program";
    if (std::exchange(offerRetries_, 0) > 0 && !refusal.empty()) {
        log_.write("TarvikDictate: " + refusal);
    }
    windowEvents_.onKnown(refusal);
}

// The listener asks which window is in front, of which KWin tells over Wayland.
SessionHotKeys::Events KWinSession::heard(SessionHotKeys::Events events) {
    auto onReleased = std::move(events.onReleased);
    events.onPressed = [this](HotKeyNumber number) {
        reportPress();
        press_ = number;
        if (wayland_ && wayland_->windows) {
            wayland_->windows->ask([this] { reportPress(); });
        } else {
            reportPress();
        }
    };
    events.onReleased = [this, onReleased = std::move(onReleased)](HotKeyNumber number) {
        reportPress();
        onReleased(number);
    };
    return events;
}

void KWinSession::reportPress() {
    if (const auto number = std::exchange(press_, std::nullopt)) {
        events_.hotKeys.onPressed(*number);
    }
}

// The program in front has seen Alt alone, since KWin keeps the space bar. A key that goes down
// before Alt goes up keeps the program from opening its menu. KWin 5 takes the release of any key
// for the end of the hold, so the key stays down that long.
void KWinSession::accompanyAlt(bool isHeld) {
    if (wayland_ && wayland_->keyboard) {
        wayland_->keyboard->key(neutralKey, isHeld);
    }
}

void KWinSession::end(std::function<void()> onDone) {
    hotKeys_.removeAll(std::move(onDone));
}

void KWinSession::flush() {
    if (wayland_) {
        wayland_->connection->flush();
        if (wayland_->slot) {
            wayland_->slot->flush();
        }
    }
}

}  // namespace tarvik::linuxdesktop
