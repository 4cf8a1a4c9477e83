// SPDX-License-Identifier: MIT

#include "platform/linux/windows/TrayHost.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <chrono>
#include <utility>

#include "platform/linux/bus/BusReplies.h"
#include "platform/linux/windows/X11Server.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr const char* watcherInterface = "org.kde.StatusNotifierWatcher";
constexpr std::chrono::seconds propertyTimeout{25};

bool isOwned(xcb_atom_t selection) {
    xcb_connection_t* connection = x11Connection();
    const X11Reply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, selection), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

}  // namespace

TrayHost::TrayHost(const platform::Clock& clock, std::function<void()> onReady)
    : onReady_(std::move(onReady)), loop_(clock) {
    if (xcb_connection_t* connection = x11Connection()) {
        managerMessage_ = x11Atom(connection, "MANAGER");
        traySelection_ = x11Atom(connection, "_NET_SYSTEM_TRAY_S0");
    }
    qGuiApp->installNativeEventFilter(this);
    auto opened = MessageBus::openSession();
    if (!opened) {
        useX11Tray();
        return;
    }
    sessionBus_ = std::move(opened).value();
    sessionBus_->attach(loop_, [this](const Error&) { useX11Tray(); });
    // Some panels announce their host before anybody on the bus can hear it, so the watcher's own
    // appearance is a reason to ask as well.
    for (const char* rule : {"type='signal',interface='org.kde.StatusNotifierWatcher',"
                             "member='StatusNotifierHostRegistered'",
                             "type='signal',sender='org.freedesktop.DBus',"
                             "member='NameOwnerChanged',arg0='org.kde.StatusNotifierWatcher'"}) {
        sessionBus_->observe(rule, [this](sd_bus_message*) { askForNotifierHost(); });
    }
    askForNotifierHost();
}

TrayHost::~TrayHost() {
    qGuiApp->removeNativeEventFilter(this);
}

void TrayHost::askForNotifierHost() {
    sessionBus_->call(
        sessionBus_->newPropertyCall({watcherInterface, "/StatusNotifierWatcher"}, watcherInterface,
                                     "IsStatusNotifierHostRegistered"),
        propertyTimeout, [this](sd_bus_message* reply) {
            if (booleanPropertyIn(reply).value_or(false)) {
                announce();
            } else {
                useX11Tray();
            }
        });
}

void TrayHost::useX11Tray() {
    isNotifierHostMissing_ = true;
    if (traySelection_ != 0 && isOwned(traySelection_)) {
        announce();
    }
}

// A tray announces itself to everybody when it takes its selection.
bool TrayHost::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (!isNotifierHostMissing_ || eventType != "xcb_generic_event_t") {
        return false;
    }
    const auto* event = static_cast<const xcb_client_message_event_t*>(message);
    if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE && event->type == managerMessage_ &&
        event->data.data32[1] == traySelection_) {
        announce();
    }
    return false;
}

void TrayHost::announce() {
    announcement_.set(std::chrono::milliseconds(0), [this] {
        if (const auto onReady = std::exchange(onReady_, nullptr)) {
            onReady();
        }
    });
}

}  // namespace tarvik::linuxdesktop
