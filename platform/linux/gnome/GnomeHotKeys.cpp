// SPDX-License-Identifier: MIT

#include "platform/linux/gnome/GnomeHotKeys.h"

#include <algorithm>
#include <utility>

#include "platform/linux/bus/BusReplies.h"
#include "platform/linux/input/CombinationText.h"
#include "platform/linux/settings/ProgramPaths.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto busTimeout = 1s;
constexpr auto shellInterval = 100ms;

// Whoever has the name has the shortcuts.
constexpr const char* claimName = "com.tarvik.dictate.HotKeys";
constexpr const char* helperName = "tarvik-dictate-shortcut";
constexpr const char* socketName = "tarvik-dictate-shortcuts";

// Of the bus, to a request for a name.
constexpr std::uint32_t doNotQueue = 4;
constexpr std::uint32_t isOwner = 1;

bool isToggle(std::uint32_t modifiers) {
    return (modifiers & platform::shiftKeyMask) != 0;
}

std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char character : text) {
        result += character == '\'' ? "'\\''" : std::string(1, character);
    }
    return result + "'";
}

std::optional<KeyRepetition> repetitionSetting() {
    const GnomeSettings keyboard("org.gnome.desktop.peripherals.keyboard");
    if (!keyboard.flag("repeat").value_or(true)) {
        return std::nullopt;
    }
    return KeyRepetition{
        std::chrono::milliseconds(keyboard.number("delay").value_or(500)),
        std::chrono::milliseconds(keyboard.number("repeat-interval").value_or(30))};
}

}  // namespace

GnomeHotKeys::GnomeHotKeys(MessageBus& bus, FieldEngine& engine, EventLoop& loop,
                           platform::Log& log, Events events, OnTaken onTaken,
                           XHoldListener::Follow onHold)
    : bus_(bus),
      loop_(loop),
      log_(log),
      events_(std::move(events)),
      onTaken_(std::move(onTaken)),
      hold_(engine, loop, {events_.onPressed, events_.onReleased, std::move(onHold)},
            repetitionSetting),
      shellDeadline_(loop) {}

void GnomeHotKeys::add(HotKeyNumber number, std::uint32_t keyCode, std::uint32_t modifiers,
                       OnStatus onStatus) {
    if (keyCode != platform::spaceKeyCode ||
        (modifiers & ~platform::shiftKeyMask) != platform::optionKeyMask) {
        onStatus(platform::eventHotKeyInvalidErr, "");
        return;
    }
    const bool isTaken = std::ranges::any_of(
        hotKeys_, [modifiers](const auto& entry) { return entry.second == modifiers; });
    if (isTaken) {
        onStatus(platform::eventHotKeyExistsErr, "");
        return;
    }
    claim([this, number, modifiers, onStatus = std::move(onStatus)](bool isFirst) {
        if (isFirst) {
            bind(number, modifiers, onStatus);
        } else {
            onStatus(platform::eventHotKeyExistsErr,
                     "another instance has shortcuts in this GNOME session");
        }
    });
}

void GnomeHotKeys::claim(std::function<void(bool isFirst)> onAnswer) {
    if (isOwner_) {
        onAnswer(true);
        return;
    }
    bus_.call(bus_.newCall({"org.freedesktop.DBus", "/org/freedesktop/DBus"},
                           "org.freedesktop.DBus", "RequestName", "su", claimName, doNotQueue),
              busTimeout, [this, onAnswer = std::move(onAnswer)](sd_bus_message* reply) {
                  if (unsignedIn(reply) == isOwner) {
                      isOwner_ = true;
                      shortcuts_.unbindAll();
                      if (windowMenu_.takeAgain()) {
                          awaitShell([onAnswer] { onAnswer(true); });
                          return;
                      }
                  }
                  onAnswer(isOwner_);
              });
}

// GNOME Shell gives a combination up when it has nothing else to do, and refuses the custom
// shortcut for good that asks for the combination before.
void GnomeHotKeys::awaitShell(std::function<void()> onDone) {
    askShell([this, onDone = std::move(onDone)]() mutable {
        shellDeadline_.set(shellInterval, [this, onDone = std::move(onDone)]() mutable {
            askShell(std::move(onDone));
        });
    });
}

void GnomeHotKeys::askShell(std::function<void()> onAnswer) {
    bus_.call(bus_.newPropertyCall({"org.gnome.Shell", "/org/gnome/Shell"}, "org.gnome.Shell",
                                   "ShellVersion"),
              busTimeout, [onAnswer = std::move(onAnswer)](sd_bus_message*) { onAnswer(); });
}

void GnomeHotKeys::bind(HotKeyNumber number, std::uint32_t modifiers, const OnStatus& onStatus) {
    const std::string helper = helperPath(helperName);
    const std::string socket = runtimePath(socketName);
    if (const auto owner = shortcuts_.ownerOf(modifiers)) {
        if (modifiers == platform::optionKeyMask && windowMenu_.isInMenu()) {
            onTaken_(true);
        }
        onStatus(platform::eventHotKeyExistsErr,
                 combinationText(modifiers) + " belongs to GNOME's shortcut: " + *owner);
    } else if (helper.empty()) {
        onStatus(platform::eventInternalErr, std::string(helperName) + " is missing");
    } else if (!listen(socket)) {
        onStatus(platform::eventInternalErr, "no socket at " + socket);
    } else if (shortcuts_.bind(modifiers, quoted(helper) + " " + quoted(socket) + " " +
                                              (isToggle(modifiers) ? toggleWord : holdWord))) {
        hotKeys_[number] = modifiers;
        onStatus(platform::noErr, "");
    } else {
        onStatus(platform::eventInternalErr, "GNOME does not take the shortcut");
    }
}

bool GnomeHotKeys::listen(const std::string& path) {
    if (!socket_) {
        socket_.emplace(path, loop_, [this](const ShortcutPress& press) { handlePress(press); });
    }
    if (!socket_->isOpen()) {
        socket_.reset();
    }
    return socket_.has_value();
}

void GnomeHotKeys::remove(HotKeyNumber number, std::function<void()> onDone) {
    hold_.cancel(number);
    if (const auto removed = hotKeys_.extract(number)) {
        shortcuts_.unbind(removed.mapped());
    }
    onDone();
}

void GnomeHotKeys::removeAll(std::function<void()> onDone) {
    hold_.end();
    for (const auto& [number, modifiers] : std::exchange(hotKeys_, {})) {
        shortcuts_.unbind(modifiers);
    }
    if (std::exchange(isOwner_, false)) {
        windowMenu_.giveBack();
        // The next instance makes its own in the same place.
        socket_.reset();
        bus_.releaseName(claimName);
    }
    onDone();
}

void GnomeHotKeys::takeFromWindowMenu() {
    if (windowMenu_.take()) {
        onTaken_(false);
        log_.write(
            "TarvikDictate: the menu of windows has given Alt+Space up, and gets it back when the "
            "application ends");
        awaitShell([this] { events_.onFreed(); });
    }
}

void GnomeHotKeys::handlePress(const ShortcutPress& press) {
    const std::uint32_t modifiers =
        platform::optionKeyMask | (press.isToggle != 0 ? platform::shiftKeyMask : 0);
    const auto found = std::ranges::find_if(
        hotKeys_, [modifiers](const auto& entry) { return entry.second == modifiers; });
    if (found != hotKeys_.end()) {
        hold_.handlePress(
            found->first, modifiers,
            std::min(SteadyTime(std::chrono::nanoseconds(press.nanoseconds)), loop_.now()));
    }
}

}  // namespace tarvik::linuxdesktop
