// SPDX-License-Identifier: MIT

#include "platform/linux/x11/KeyBurst.h"

#include <xcb/xinput.h>

#include <utility>
#include <vector>

#include "platform/linux/x11/FilterSuspension.h"
#include "platform/linux/x11/ServerGrab.h"
#include "platform/linux/x11/XkbProtocol.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr std::uint8_t everyModifier = 0xFF;

/// Where the focus is after each keystroke. The answers are read when all keys are on their way.
class FocusChecks {
  public:
    /// Asks nothing where `window` is XCB_NONE.
    FocusChecks(XcbConnection& connection, xcb_window_t window)
        : connection_(connection), window_(window) {}
    FocusChecks(const FocusChecks&) = delete;
    FocusChecks& operator=(const FocusChecks&) = delete;

    void ask() {
        if (window_ != XCB_NONE) {
            questions_.push_back(xcb_get_input_focus(connection_.get()));
        }
    }
    /// How many of `count` keystrokes went to the window, which had the focus up to there.
    std::size_t countOf(std::size_t count) const {
        std::size_t reached = 0;
        bool hasFocus = true;
        for (const auto question : questions_) {
            const XcbReply<xcb_get_input_focus_reply_t> reply(
                xcb_get_input_focus_reply(connection_.get(), question, nullptr));
            hasFocus = hasFocus && reply && reply->focus == window_;
            reached += hasFocus ? 1 : 0;
        }
        return window_ == XCB_NONE ? count : reached;
    }

  private:
    XcbConnection& connection_;
    const xcb_window_t window_;
    std::vector<xcb_get_input_focus_cookie_t> questions_;
};

}  // namespace

KeyBurst::KeyBurst(XcbConnection& connection, Keyboard& keyboard, FrontWindow& front,
                   HotKeys& hotKeys, OnLift onLift)
    : connection_(connection),
      keyboard_(keyboard),
      front_(front),
      hotKeys_(hotKeys),
      onLift_(std::move(onLift)),
      fake_(connection) {}

KeyboardState KeyBurst::readState() {
    chooseKeyboard();
    const auto stateCookie = xcb_xkb_get_state(connection_.get(), XCB_XKB_ID_USE_CORE_KBD);
    const auto keysCookie = xcb_query_keymap(connection_.get());
    const XcbReply<xcb_xkb_get_state_reply_t> xkb(
        xcb_xkb_get_state_reply(connection_.get(), stateCookie, nullptr));
    KeyboardState state;
    if (xkb) {
        state.group = xkb->group;
        state.lockedModifiers = xkb->lockedMods;
        state.latchedModifiers = xkb->latchedMods;
    }
    state.down = keysDown(connection_, keysCookie);
    state.unusable = state.down | fake_.keysDown() | hotKeys_.observedKeys();
    return state;
}

// While the server listens to this client alone, nobody changes the map or grabs the keyboard
// between the check and the last key. A window manager moves no focus either, unless the server
// listens to the window manager as well, as Xwayland does.
KeyBurst::Result KeyBurst::type(std::u32string_view characters,
                                std::optional<platform::ProcessIdentifier> process,
                                xcb_window_t window, xcb_window_t behind) {
    const ServerGrab grab(connection_);
    hotKeys_.beginTyping();
    const Result result = typeUndisturbed(characters, process, window, behind);
    hotKeys_.endTyping();
    return result;
}

KeyBurst::Result KeyBurst::typeUndisturbed(std::u32string_view characters,
                                           std::optional<platform::ProcessIdentifier> process,
                                           xcb_window_t window, xcb_window_t behind) {
    const xcb_window_t focused =
        process ? front_.focusIn(*process, window) : xcb_window_t{XCB_NONE};
    const bool isInFront = !process || focused != XCB_NONE;
    // The window may have gone since it was chosen, and another program's may have its number.
    if (!isInFront && (behind == XCB_NONE || front_.processOf(behind) != process ||
                       !front_.canBeGivenFocus(behind))) {
        return {Outcome::notInFront};
    }
    keyboard_.reread();
    giveKeyboardsBack();
    const KeyboardState state = readState();
    std::vector<Keystroke> strokes;
    for (const char32_t character : characters) {
        const auto stroke = keyboard_.strokeFor(character, state.group, state.unusable);
        if (!stroke) {
            return {Outcome::keysChanged};
        }
        strokes.push_back(*stroke);
    }
    if (!takeKeyboard()) {
        return {Outcome::keyboardTaken};
    }
    const std::size_t typed = isInFront ? press(strokes, state, focused, XCB_NONE)
                                        : press(strokes, state, behind, behind);
    return {typed == strokes.size() ? Outcome::done : Outcome::keyboardTaken, typed};
}

// Keys go to the program that has grabbed the keyboard (a menu, a locked screen), wherever the
// focus is. A grab of this client proves that no other program has one.
bool KeyBurst::takeKeyboard() {
    constexpr std::uint32_t events = XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE;
    const XcbReply<xcb_input_xi_grab_device_reply_t> reply(xcb_input_xi_grab_device_reply(
        connection_.get(),
        xcb_input_xi_grab_device(connection_.get(), connection_.root(), XCB_CURRENT_TIME, XCB_NONE,
                                 connection_.keyboard(), XCB_INPUT_GRAB_MODE_22_ASYNC,
                                 XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_OWNER_NO_OWNER, 1,
                                 &events),
        nullptr));
    return reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
}

// Modifiers are lifted while this client has the grab, so no program takes a lifted Alt for the
// user's wish to see its menu. Modifiers are never pressed again, since the user may have let go by
// then. A hotkey that is pressed meanwhile detaches its keyboard, and a lift on that keyboard has
// no effect. Once the modifiers are up no hotkey can be pressed.
bool KeyBurst::liftModifiers(std::vector<xcb_keycode_t> held) {
    constexpr int maxTries = 4;
    if (onLift_) {
        onLift_(keyboard_.eventManagerMask(held));
    }
    for (int tries = 0; !held.empty() && tries < maxTries; ++tries) {
        giveKeyboardsBack();
        chooseKeyboard();
        for (const xcb_keycode_t key : held) {
            hotKeys_.expectRelease(key, fake_.release(key));
        }
        held = heldModifiers(keysDown(connection_, xcb_query_keymap(connection_.get())));
    }
    return held.empty();
}

std::vector<xcb_keycode_t> KeyBurst::heldModifiers(const KeysDown& down) const {
    std::vector<xcb_keycode_t> held = keyboard_.modifierKeys(everyModifier);
    std::erase_if(held, [&](xcb_keycode_t key) { return !down[key]; });
    return held;
}

// A window behind has the focus no longer than the server needs for the keys, so that none of the
// user's own keys goes there. Shift is locked where a keystroke needs Shift, and never pressed: a
// pressed key would have to be released, which the user may do first. Answers how many keystrokes
// went to `verified`, or to whatever has the focus where that is XCB_NONE.
std::size_t KeyBurst::press(std::span<const Keystroke> strokes, const KeyboardState& state,
                            xcb_window_t verified, xcb_window_t behind) {
    const auto focus = behind == XCB_NONE ? std::nullopt : front_.focus();
    const FilterSuspension suspension(connection_, fake_.device());
    // The first event of another keyboard makes the server announce a new map. Qt 5 then forgets a
    // Shift that was locked before the announcement. The release of a key that is up does nothing
    // else.
    fake_.release(strokes.front().key);
    const auto held = heldModifiers(state.down);
    if (!held.empty() && !liftModifiers(held)) {
        xcb_input_xi_ungrab_device(connection_.get(), XCB_CURRENT_TIME, connection_.keyboard());
        return 0;
    }
    const auto affected = static_cast<std::uint8_t>(everyModifier & ~keyboard_.numLockMask());
    const auto lockedBefore = static_cast<std::uint8_t>(state.lockedModifiers & affected);
    const std::uint8_t bypass = keyboard_.bypassMask();
    std::uint8_t locked = lockedBefore;
    const auto lock = [&](std::uint8_t modifiers) {
        xcb_xkb_latch_lock_state(connection_.get(), XCB_XKB_ID_USE_CORE_KBD, affected, modifiers, 0,
                                 0, everyModifier, 0, 0);
        locked = modifiers;
    };
    // Sticky keys latch a modifier that is lifted.
    if (locked != bypass || state.latchedModifiers != 0 || !held.empty()) {
        lock(bypass);
    }
    xcb_input_xi_ungrab_device(connection_.get(), XCB_CURRENT_TIME, connection_.keyboard());
    FocusChecks checks(connection_, verified);
    const bool hasFocus = !focus || front_.setFocus({behind});
    for (const Keystroke& stroke : hasFocus ? strokes : std::span<const Keystroke>()) {
        const auto needed =
            static_cast<std::uint8_t>(bypass | (stroke.isShifted ? XCB_MOD_MASK_SHIFT : 0));
        if (locked != needed) {
            lock(needed);
        }
        fake_.press(stroke.key);
        checks.ask();
        fake_.release(stroke.key);
    }
    if (locked != lockedBefore) {
        lock(lockedBefore);
    }
    const std::size_t typed = hasFocus ? checks.countOf(strokes.size()) : 0;
    // Whoever has taken the focus decides who has it from there.
    if (focus && typed == strokes.size()) {
        front_.setFocus(*focus);
    }
    return typed;
}

// A hotkey whose press is still to be handled has its keyboard detached.
void KeyBurst::giveKeyboardsBack() {
    for (const std::uint16_t keyboard : connection_.keyboards()) {
        xcb_input_xi_ungrab_device(connection_.get(), XCB_CURRENT_TIME, keyboard);
    }
}

// Keys from another keyboard than the one before make the server announce a new map to everybody,
// and the user's next key would do so again. So the keys come from the keyboard that the user uses.
void KeyBurst::chooseKeyboard() {
    const std::uint16_t inUse = hotKeys_.keyboardInUse();
    const std::uint16_t wanted = inUse != 0 ? inUse : connection_.xwaylandKeyboard();
    fake_ = FakeKeyboard(connection_);
    if (wanted == 0) {
        return;
    }
    const XcbReply<xcb_input_xi_query_device_reply_t> reply(xcb_input_xi_query_device_reply(
        connection_.get(), xcb_input_xi_query_device(connection_.get(), wanted), nullptr));
    if (!reply || reply->num_infos == 0) {
        return;
    }
    const auto* device = xcb_input_xi_query_device_infos_iterator(reply.get()).data;
    if (device->type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD && device->enabled != 0) {
        fake_ = FakeKeyboard(connection_, wanted);
    }
}

}  // namespace tarvik::linuxdesktop
