// SPDX-License-Identifier: MIT

#include "platform/linux/x11/X11Session.h"

#include <string>
#include <utility>

#include "platform/linux/x11/FakeKeyboard.h"
#include "platform/linux/x11/XcbReply.h"
#include "platform/linux/x11/XkbProtocol.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr std::uint8_t sentByClient = 0x80;

void watchKeyboardMap(XcbConnection& connection) {
    constexpr std::uint16_t events =
        XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr std::uint16_t parts =
        XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP | XCB_XKB_MAP_PART_KEY_TYPES;
    xcb_xkb_select_events(connection.get(), XCB_XKB_ID_USE_CORE_KBD, events, 0, events, parts,
                          parts, nullptr);
}

void watchKeyboards(XcbConnection& connection) {
    const struct {
        xcb_input_event_mask_t head;
        std::uint32_t events;
    } mask{{XCB_INPUT_DEVICE_ALL, 1}, XCB_INPUT_XI_EVENT_MASK_HIERARCHY};
    xcb_input_xi_select_events(connection.get(), connection.root(), 1, &mask.head);
}

// Xwayland with libei offers synthetic keys to the compositor. In Sway it fails at the first key of
// its own keyboard, drops that key, and takes all later ones itself. Before, it drops the keys of
// the compositor's keyboard too. The release of a key that is up does nothing elsewhere. KWin and
// GNOME would ask the user at that key.
void endOfferOfKeys(XcbConnection& connection) {
    FakeKeyboard(connection).release(xcb_get_setup(connection.get())->min_keycode);
}

}  // namespace

X11Session::X11Session(XcbConnection& connection, PollLoop& loop, platform::Log& log,
                       HotKeys::Events hotKeyEvents, OnLift onLift,
                       std::atomic<FrontWindow::Known>& front,
                       std::chrono::milliseconds maxKeyboardWait, Compositor compositor)
    : connection_(connection),
      log_(log),
      keyboard_(connection),
      front_(connection, front, compositor.host),
      hotKeys_(connection, keyboard_, heard(std::move(hotKeyEvents))),
      typist_(connection, keyboard_, front_, hotKeys_, loop, log, std::move(onLift),
              maxKeyboardWait),
      holds_(connection, keyboard_, front_, hotKeys_, loop, std::move(compositor.holds)) {
    connection.selectRootEvents(XCB_EVENT_MASK_PROPERTY_CHANGE);
    watchKeyboardMap(connection);
    watchKeyboards(connection);
    // Every change from here on is announced.
    keyboard_.restore();
    keyboard_.reread();
    front_.refresh();
    if (compositor.host != nullptr) {
        endOfferOfKeys(connection);
    }
}

HotKeys::Events X11Session::heard(HotKeys::Events events) {
    events.onPressed = [this, onPressed = std::move(events.onPressed)](HotKeyNumber number) {
        // The listener asks which process is in front.
        front_.refreshUnannounced();
        onPressed(number);
        typist_.probeTarget();
    };
    return events;
}

// Sending makes the library read events too, and the descriptor does not tell of them any more. So
// the last look at the events comes when nothing is left to send.
bool X11Session::drain() {
    bool hasHandled = true;
    while (std::exchange(hasHandled, false)) {
        xcb_flush(connection_.get());
        while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
            handle(*event);
            hasHandled = true;
        }
    }
    return !connection_.isBroken();
}

void X11Session::handle(const xcb_generic_event_t& event) {
    const auto type = static_cast<std::uint8_t>(event.response_type & ~sentByClient);
    if (event.response_type == 0) {
        report(reinterpret_cast<const xcb_generic_error_t&>(event));
    } else if (type == XCB_GE_GENERIC) {
        handleXinput(reinterpret_cast<const xcb_ge_generic_event_t&>(event));
    } else if (type == connection_.xkbFirstEvent()) {
        if (keyboard_.handleMapChange(event.full_sequence)) {
            typist_.handleChange();
        }
        hotKeys_.handleMapChange();
    } else if (type == XCB_PROPERTY_NOTIFY) {
        handleProperty(reinterpret_cast<const xcb_property_notify_event_t&>(event));
    } else if (type == XCB_DESTROY_NOTIFY) {
        typist_.handleDestroyed(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window);
        typist_.handleChange();
    } else if (type == XCB_FOCUS_IN || type == XCB_FOCUS_OUT || type == XCB_MAP_NOTIFY) {
        typist_.handleChange();
    } else if (type == XCB_CLIENT_MESSAGE) {
        typist_.handleMessage(reinterpret_cast<const xcb_client_message_event_t&>(event));
    }
}

void X11Session::handleProperty(const xcb_property_notify_event_t& event) {
    if (front_.handleProperty(event)) {
        holds_.handleFrontChange();
        typist_.handleChange();
    }
}

void X11Session::handleXinput(const xcb_ge_generic_event_t& event) {
    if (event.extension != connection_.xinputOpcode()) {
        return;
    }
    switch (event.event_type) {
        case XCB_INPUT_KEY_PRESS:
            hotKeys_.handlePress(reinterpret_cast<const xcb_input_key_press_event_t&>(event));
            break;
        case XCB_INPUT_KEY_RELEASE:
            hotKeys_.handleGrabbedRelease(
                reinterpret_cast<const xcb_input_key_release_event_t&>(event));
            break;
        case XCB_INPUT_RAW_KEY_RELEASE: {
            const auto& release = reinterpret_cast<const xcb_input_raw_key_release_event_t&>(event);
            hotKeys_.handleRelease(release.detail, release.full_sequence);
            break;
        }
        case XCB_INPUT_HIERARCHY: {
            constexpr std::uint32_t gone = XCB_INPUT_HIERARCHY_MASK_SLAVE_REMOVED |
                                           XCB_INPUT_HIERARCHY_MASK_SLAVE_DETACHED |
                                           XCB_INPUT_HIERARCHY_MASK_DEVICE_DISABLED;
            const auto& change = reinterpret_cast<const xcb_input_hierarchy_event_t&>(event);
            connection_.findKeyboards();
            if ((change.flags & gone) != 0) {
                hotKeys_.handleKeyboardRemoved();
            }
            break;
        }
        default:
            break;
    }
}

// A window may vanish at any time, also between two requests about it, and so may a keyboard. A
// window may be unmapped just before it gets the focus.
void X11Session::report(const xcb_generic_error_t& error) {
    constexpr std::uint8_t badWindow = 3;
    constexpr std::uint8_t badMatch = 8;
    const bool isUnmapped = error.error_code == badMatch && error.major_code == XCB_SET_INPUT_FOCUS;
    if (error.error_code == badWindow && error.major_code == XCB_CHANGE_WINDOW_ATTRIBUTES) {
        // The window has gone before its events were chosen.
        typist_.handleDestroyed(error.resource_id);
    }
    if (error.error_code != badWindow && !isUnmapped && !connection_.isMissingKeyboard(error)) {
        log_.write("TarvikDictate: the X server refused request " +
                   std::to_string(error.major_code) + "." + std::to_string(error.minor_code) +
                   " with error " + std::to_string(error.error_code));
    }
}

}  // namespace tarvik::linuxdesktop
