// SPDX-License-Identifier: MIT

#include "platform/linux/gnome/GnomeHotKeys.h"

#include <algorithm>
#include <utility>

#include "platform/linux/bus/BusReplies.h"
#include "platform/linux/input/CombinationText.h"

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

constexpr const char* objectName = "com.tarvik.dictate.HotKeys";
constexpr const char* objectPath = "/com/tarvik/dictate/HotKeys";
constexpr const char* objectInterface = "com.tarvik.dictate.HotKeys";

// Of the bus, to a request for a name.
constexpr std::uint32_t doNotQueue = 4;
constexpr std::uint32_t isOwner = 1;

constexpr const char* holdName = "hold";
constexpr const char* toggleName = "toggle";

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

std::string command(std::uint32_t modifiers) {
    return std::string("gdbus call --session --dest ") + objectName + " --object-path " +
           objectPath + " --method " + objectInterface + ".Press " +
           (isToggle(modifiers) ? toggleName : holdName);
}

}  // namespace

const sd_bus_vtable GnomeHotKeys::methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Press", "s", "", &GnomeHotKeys::onPress, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

GnomeHotKeys::GnomeHotKeys(MessageBus& bus, IbusEngine& engine, EventLoop& loop, platform::Log& log,
                           Events events, OnTaken onTaken)
    : bus_(bus),
      engine_(engine),
      log_(log),
      events_(std::move(events)),
      onTaken_(std::move(onTaken)),
      repeatDeadline_(loop),
      shellDeadline_(loop) {
    bus_.addObject(objectPath, objectInterface, methods, this);
}

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
                           "org.freedesktop.DBus", "RequestName", "su", objectName, doNotQueue),
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
    if (const auto owner = shortcuts_.ownerOf(modifiers)) {
        if (modifiers == platform::optionKeyMask && windowMenu_.isInMenu()) {
            onTaken_(true);
        }
        onStatus(platform::eventHotKeyExistsErr,
                 combinationText(modifiers) + " belongs to GNOME's shortcut: " + *owner);
    } else if (shortcuts_.bind(modifiers, command(modifiers))) {
        hotKeys_[number] = modifiers;
        onStatus(platform::noErr, "");
    } else {
        onStatus(platform::eventInternalErr, "GNOME does not take the shortcut");
    }
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
        bus_.releaseName(objectName);
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

int GnomeHotKeys::onPress(sd_bus_message* call, void* self, sd_bus_error*) {
    const std::string name = textIn(call).value_or("");
    static_cast<GnomeHotKeys*>(self)->handlePress(
        platform::optionKeyMask | (name == toggleName ? platform::shiftKeyMask : 0));
    return sd_bus_reply_method_return(call, "");
}

std::optional<GnomeHotKeys::Repeat> GnomeHotKeys::repeatSetting() {
    const GnomeSettings keyboard("org.gnome.desktop.peripherals.keyboard");
    if (!keyboard.flag("repeat").value_or(true)) {
        return std::nullopt;
    }
    return Repeat{std::chrono::milliseconds(keyboard.number("delay").value_or(500)),
                  std::chrono::milliseconds(keyboard.number("repeat-interval").value_or(30))};
}

void GnomeHotKeys::handlePress(std::uint32_t modifiers) {
    const auto found = std::ranges::find_if(
        hotKeys_, [modifiers](const auto& entry) { return entry.second == modifiers; });
    if (found == hotKeys_.end()) {
        return;
    }
    const HotKeyNumber number = found->first;
    const SteadyTime now = std::chrono::steady_clock::now();
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
