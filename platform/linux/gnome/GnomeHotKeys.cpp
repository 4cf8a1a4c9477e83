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
// How much later than the keyboard's settings say a command may call.
constexpr auto callTolerance = 300ms;
// An end too early costs words, and one too late costs silence.
constexpr auto firstCallTolerance = 1s;
constexpr auto unseenTolerance = 2s;
constexpr int repeatTolerance = 4;

// Whoever has the name has the shortcuts.
constexpr const char* claimName = "com.tarvik.dictate.HotKeys";
constexpr const char* helperName = "tarvik-dictate-shortcut";
constexpr const char* socketName = "tarvik-dictate-shortcuts";

// Of the bus, to a request for a name.
constexpr std::uint32_t doNotQueue = 4;
constexpr std::uint32_t isOwner = 1;

// As the kernel numbers keys.
constexpr std::uint32_t spaceCode = 57;
constexpr std::uint32_t leftAltCode = 56;
constexpr std::uint32_t rightAltCode = 100;
constexpr std::uint32_t leftShiftCode = 42;
constexpr std::uint32_t rightShiftCode = 54;

bool isToggle(std::uint32_t modifiers) {
    return (modifiers & platform::shiftKeyMask) != 0;
}

bool belongsTo(std::uint32_t modifiers, std::uint32_t code) {
    return code == spaceCode || code == leftAltCode || code == rightAltCode ||
           (isToggle(modifiers) && (code == leftShiftCode || code == rightShiftCode));
}

std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char character : text) {
        result += character == '\'' ? "'\\''" : std::string(1, character);
    }
    return result + "'";
}

}  // namespace

GnomeHotKeys::GnomeHotKeys(MessageBus& bus, IbusEngine& engine, EventLoop& loop, platform::Log& log,
                           Events events, OnTaken onTaken)
    : bus_(bus),
      engine_(engine),
      loop_(loop),
      log_(log),
      events_(std::move(events)),
      onTaken_(std::move(onTaken)),
      repeatDeadline_(loop),
      shellDeadline_(loop) {}

GnomeHotKeys::~GnomeHotKeys() {
    endHold();
}

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
    if (repeats_.number() == number) {
        repeats_.end();
        repeatDeadline_.clear();
        engine_.release();
    }
    if (const auto removed = hotKeys_.extract(number)) {
        shortcuts_.unbind(removed.mapped());
    }
    onDone();
}

void GnomeHotKeys::removeAll(std::function<void()> onDone) {
    endHold();
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

std::optional<GnomeHotKeys::Repeat> GnomeHotKeys::repeatSetting() {
    const GnomeSettings keyboard("org.gnome.desktop.peripherals.keyboard");
    if (!keyboard.flag("repeat").value_or(true)) {
        return std::nullopt;
    }
    return Repeat{std::chrono::milliseconds(keyboard.number("delay").value_or(500)),
                  std::chrono::milliseconds(keyboard.number("repeat-interval").value_or(30))};
}

void GnomeHotKeys::handlePress(const ShortcutPress& press) {
    const std::uint32_t modifiers =
        platform::optionKeyMask | (press.isToggle != 0 ? platform::shiftKeyMask : 0);
    const auto found = std::ranges::find_if(
        hotKeys_, [modifiers](const auto& entry) { return entry.second == modifiers; });
    if (found == hotKeys_.end()) {
        return;
    }
    const HotKeyNumber number = found->first;
    const SteadyTime now = std::min(SteadyTime(std::chrono::nanoseconds(press.nanoseconds)),
                                    std::chrono::steady_clock::now());
    // A key that does not repeat has been pressed again.
    if (!hold_.repeat) {
        endHold();
    }
    switch (repeats_.handle(number, now)) {
        case RepeatedHold::Report::repeat:
            hold_.isSeen = engine_.hasField();
            watchRepeats();
            break;
        case RepeatedHold::Report::press:
            // Of a hold that has not ended, nobody has seen the release.
            endHold();
            beginHold(number, now);
            break;
        case RepeatedHold::Report::late:
            break;
    }
}

void GnomeHotKeys::beginHold(HotKeyNumber number, SteadyTime now) {
    repeats_.begin(number, now);
    hold_ = Hold{repeatSetting()};
    events_.onPressed(number);
    engine_.acquire();
    accompanyAlt();
    watchRepeats();
}

void GnomeHotKeys::watchRepeats() {
    if (!repeats_.number() || !hold_.repeat) {
        return;
    }
    const auto timeout = repeats_.timeout(repeatTolerance * hold_.repeat->interval + callTolerance);
    const auto first = repeats_.repeats() == 0 ? hold_.repeat->delay + firstCallTolerance : 0ms;
    repeatDeadline_.set(std::chrono::steady_clock::now() + first + timeout, [this] {
        if (!engine_.hasField()) {
            endHold();
        } else if (!hold_.isSeen) {
            // Only keys that were up before the engine had the field have gone unseen.
            repeatDeadline_.set(unseenTolerance, [this] { endHold(); });
        }
    });
}

void GnomeHotKeys::handleKey(const IbusEngine::Key& key) {
    const auto held = repeats_.number();
    if (!held) {
        return;
    }
    if (key.isUp && belongsTo(hotKeys_[*held], key.code)) {
        accompanyAlt();
        repeats_.expectLateReports(std::chrono::steady_clock::now());
        endHold();
    } else if (!key.isUp && !key.hasAlt) {
        // Alt went up before the engine had the field.
        endHold();
    } else {
        hold_.isSeen = true;
    }
}

void GnomeHotKeys::handleField() {
    if (!repeats_.number()) {
        return;
    }
    if (engine_.hasField()) {
        accompanyAlt();
    } else if (std::exchange(hold_.isSeen, false)) {
        watchRepeats();
    }
}

void GnomeHotKeys::accompanyAlt() {
    if (engine_.hasField() && !std::exchange(hold_.isAccompanied, true)) {
        engine_.tapControl();
    }
}

void GnomeHotKeys::endHold() {
    repeatDeadline_.clear();
    if (const auto ended = repeats_.end()) {
        events_.onReleased(*ended);
        engine_.release();
    }
}

}  // namespace tarvik::linuxdesktop
