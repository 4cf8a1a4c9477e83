// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/KWinSession.h"

#include <chrono>
#include <utility>
#include <vector>

#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto ownerTimeout = 900ms;
constexpr const char* kwinName = "org.kde.KWin";
const BusObject busDaemon{"org.freedesktop.DBus", "/org/freedesktop/DBus"};
// KWin looks for new desktop files every one and a half seconds at most.
constexpr auto permissionInterval = 1s;
constexpr int maxOfferRetries = 4;
// No keyboard has the key, and no program knows it.
constexpr std::uint32_t neutralKey = 240;

}  // namespace

KWinSession::KWinSession(std::unique_ptr<MessageBus> bus, EventLoop& loop, platform::Log& log,
                         Events events)
    : loop_(loop),
      log_(log),
      events_(std::move(events)),
      bus_(std::move(bus)),
      hotKeys_(*bus_, log, heard(events_.hotKeys)),
      desktopFile_(log, {"com.tarvik.dictate.kwin",
                         "X-KDE-Wayland-Interfaces=org_kde_plasma_window_management,"
                         "org_kde_kwin_fake_input\n",
                         "KWin", "no desktop file lets KWin show its windows to"}) {
    bus_->attach(loop, [this](const Error& error) {
        events_.onLost("the session bus is gone: " + error.localizedDescription);
    });
    bus_->observe("type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" +
                      std::string(GlobalAccel::busName) + "'",
                  [this](sd_bus_message* signal) { handleOwnerChange(signal); });
    openWayland();
}

KWinSession::~KWinSession() {
    hotKeys_.handleEnd();
    flush();
}

// On X11 the shortcuts belong to a program of their own, and outside of KDE such a program may run
// though it hears no key.
std::string KWinSession::refusal(MessageBus& bus) {
    // A late reply finds nobody waiting.
    const auto owners = std::make_shared<std::vector<std::string>>();
    for (const char* name : {kwinName, GlobalAccel::busName}) {
        bus.call(bus.newCall(busDaemon, "org.freedesktop.DBus", "GetNameOwner", "s", name),
                 ownerTimeout, [owners](sd_bus_message* reply) {
                     if (!isNoReply(reply)) {
                         owners->push_back(textIn(reply).value_or(""));
                     }
                 });
    }
    if (!bus.dispatchUntil([owners] { return owners->size() == 2; },
                           std::chrono::steady_clock::now() + ownerTimeout)) {
        return "the session bus does not answer";
    }
    if (owners->front().empty()) {
        return "there is no KWin on the session bus";
    }
    return owners->front() == owners->back() ? ""
                                             : "KWin does not have the shortcuts of this session";
}

void KWinSession::handleOwnerChange(sd_bus_message* signal) {
    const char* name = nullptr;
    const char* before = nullptr;
    const char* now = nullptr;
    if (sd_bus_message_read(signal, "sss", &name, &before, &now) <= 0) {
        return;
    }
    if (*before != '\0') {
        hotKeys_.handleEnd();
    }
    if (*now != '\0') {
        hotKeys_.handleStart();
        openWayland();
    }
}

void KWinSession::openWayland() {
    reopening_.clear();
    wayland_.reset();
    auto opened = WaylandConnection::open();
    if (!opened) {
        if (const auto onReady = std::exchange(events_.onReady, nullptr)) {
            onReady(opened.error().localizedDescription);
        }
        return;
    }
    wayland_.emplace();
    wayland_->connection = std::move(opened).value();
    wayland_->connection->attach(
        loop_, [this] { handleOffers(); },
        [this](const std::string& reason) {
            log_.write("TarvikDictate: KWin has ended the connection: " + reason);
            reopening_.set(0ms, [this] { wayland_.reset(); });
        });
}

void KWinSession::handleOffers() {
    WaylandConnection& connection = *wayland_->connection;
    if (PlasmaWindows::isOffered(connection)) {
        wayland_->windows.emplace(connection, events_.onFront);
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
    const std::string frontRefusal =
        wayland_->windows ? "" : "KWin does not show its windows to this program";
    if (std::exchange(offerRetries_, 0) > 0 && !frontRefusal.empty()) {
        log_.write("TarvikDictate: " + frontRefusal);
    }
    if (const auto onReady = std::exchange(events_.onReady, nullptr)) {
        onReady(frontRefusal);
    }
}

// The listener asks which window is in front, of which KWin tells over Wayland.
GlobalAccelHotKeys::Events KWinSession::heard(GlobalAccelHotKeys::Events events) {
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
    events.onHold = [this](bool isHeld) { accompanyAlt(isHeld); };
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

void KWinSession::flush() {
    if (wayland_) {
        wayland_->connection->flush();
        if (wayland_->slot) {
            wayland_->slot->flush();
        }
    }
}

}  // namespace tarvik::linuxdesktop
