// SPDX-License-Identifier: MIT

#include "platform/linux/portal/PortalHotKeys.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

// The application registers its hotkeys one right after the other.
constexpr auto bindDelay = 100ms;
constexpr auto firstRetryInterval = 500ms;
constexpr int maxRetries = 3;

// An end too early costs words, and one too late costs silence.
constexpr SteadyTime::duration repeatTolerance = 500ms;
constexpr SteadyTime::duration firstRepeatTolerance = 1s;

}  // namespace

PortalHotKeys::PortalHotKeys(MessageBus& bus, EventLoop& loop, platform::Log& log, Events events)
    : log_(log),
      events_(std::move(events)),
      portal_(
          bus, loop, log,
          {[this](const std::string& name) { handleActivated(name); },
           [this](const std::string& name) { handleDeactivated(name); },
           [this](const ShortcutsPortal::Names& names, const std::string& reason) {
               handleBound(names, reason);
           },
           [this](const std::string& reason) { handleEnded(reason); }, [this] { bindLater(); }}),
      bindDeadline_(loop),
      retriesLeft_(maxRetries),
      retryInterval_(firstRetryInterval),
      repeatDeadline_(loop) {}

PortalHotKeys::~PortalHotKeys() {
    endHold();
}

const PortalHotKeys::Combination* PortalHotKeys::combinationOf(std::uint32_t modifiers) {
    static constexpr std::array combinations{
        Combination{"alt-space", "Alt+Space", "ALT+space", platform::optionKeyMask},
        Combination{"alt-shift-space", "Alt+Shift+Space", "ALT+SHIFT+space",
                    platform::optionKeyMask | platform::shiftKeyMask}};
    const auto* found = std::ranges::find(combinations, modifiers, &Combination::modifiers);
    return found != combinations.end() ? found : nullptr;
}

std::optional<HotKeyNumber> PortalHotKeys::numberOf(const std::string& name) const {
    const auto found = std::ranges::find_if(
        hotKeys_, [&name](const auto& entry) { return entry.second->name == name; });
    return found != hotKeys_.end() ? std::optional(found->first) : std::nullopt;
}

platform::OSStatus PortalHotKeys::want(HotKeyNumber number, std::uint32_t keyCode,
                                       std::uint32_t modifiers) {
    const Combination* combination = combinationOf(modifiers);
    if (keyCode != platform::spaceKeyCode || combination == nullptr) {
        return platform::eventHotKeyInvalidErr;
    }
    if (numberOf(combination->name)) {
        return platform::eventHotKeyExistsErr;
    }
    hotKeys_[number] = combination;
    retriesLeft_ = maxRetries;
    retryInterval_ = firstRetryInterval;
    bindLater();
    return platform::noErr;
}

void PortalHotKeys::add(HotKeyNumber number, std::uint32_t keyCode, std::uint32_t modifiers,
                        OnStatus onStatus) {
    onStatus(want(number, keyCode, modifiers), "");
}

void PortalHotKeys::remove(HotKeyNumber number, std::function<void()> onDone) {
    if (hold_.number() == number) {
        hold_.end();
        repeatDeadline_.clear();
    }
    if (hotKeys_.erase(number) > 0) {
        bindLater();
    }
    onDone();
}

void PortalHotKeys::removeAll(std::function<void()> onDone) {
    endHold();
    hotKeys_.clear();
    bindDeadline_.clear();
    portal_.close(onDone);
}

ShortcutsPortal::Names PortalHotKeys::wantedNames() const {
    ShortcutsPortal::Names names;
    for (const auto& [number, combination] : hotKeys_) {
        names.emplace_back(combination->name);
    }
    std::ranges::sort(names);
    return names;
}

void PortalHotKeys::bindLater() {
    bindDeadline_.set(bindDelay, [this] { bind(); });
}

void PortalHotKeys::bind() {
    ShortcutsPortal::Names wanted = wantedNames();
    if (wanted == boundNames_) {
        reportMissing();
        return;
    }
    boundNames_ = std::move(wanted);
    missing_.clear();
    if (hotKeys_.empty()) {
        portal_.close([] {});
        return;
    }
    std::vector<ShortcutsPortal::Shortcut> shortcuts;
    for (const auto& [number, combination] : hotKeys_) {
        shortcuts.push_back({combination->name, std::string("Dictate by ") + combination->text,
                             combination->trigger});
    }
    portal_.bind(std::move(shortcuts));
}

void PortalHotKeys::handleBound(const ShortcutsPortal::Names& names, const std::string& reason) {
    retriesLeft_ = maxRetries;
    retryInterval_ = firstRetryInterval;
    missing_.clear();
    for (const std::string& name : boundNames_) {
        if (std::ranges::find(names, name) == names.end()) {
            missing_[name] = reason;
        }
    }
    reportMissing();
}

void PortalHotKeys::reportMissing() {
    for (const auto& [number, combination] : hotKeys_) {
        if (const auto found = missing_.find(combination->name); found != missing_.end()) {
            events_.onLost(number, std::string(combination->text) + ": " + found->second);
        }
    }
}

// When no retry is left, the next portal on the bus is asked.
void PortalHotKeys::handleEnded(const std::string& reason) {
    endHold();
    const auto asked = std::exchange(boundNames_, {});
    if (hotKeys_.empty()) {
        return;
    }
    if (retriesLeft_ == maxRetries) {
        log_.write("TarvikDictate: " + reason + ", and is asked again");
    }
    if (retriesLeft_ > 0) {
        --retriesLeft_;
        bindDeadline_.set(retryInterval_, [this] { bind(); });
        retryInterval_ *= 2;
        return;
    }
    for (const std::string& name : asked) {
        missing_[name] = reason;
    }
    reportMissing();
}

void PortalHotKeys::handleActivated(const std::string& name) {
    const auto number = numberOf(name);
    if (!number) {
        return;
    }
    const SteadyTime now = std::chrono::steady_clock::now();
    switch (hold_.handle(*number, now)) {
        case RepeatedHold::Report::repeat:
            watchRepeats(now);
            break;
        case RepeatedHold::Report::press:
            endHold();
            hold_.begin(*number, now);
            watchRepeats(now);
            events_.onPressed(*number);
            break;
        case RepeatedHold::Report::late:
        // Portals do not tell how keys repeat, so no report is unclear.
        case RepeatedHold::Report::unclear:
            break;
    }
}

void PortalHotKeys::watchRepeats(SteadyTime now) {
    if (hold_.repeats() > 0) {
        repeatDeadline_.set(now + hold_.timeout(repeatTolerance),
                            [this] { endHoldWithoutSignal(); });
    } else if (hold_.repeatDelay()) {
        repeatDeadline_.set(now + 2 * *hold_.repeatDelay() + firstRepeatTolerance,
                            [this] { endHoldWithoutSignal(); });
    }
}

void PortalHotKeys::handleDeactivated(const std::string& name) {
    hold_.expectNoLateReports();
    if (const auto number = numberOf(name); number && hold_.number() == number) {
        endHold();
    }
}

void PortalHotKeys::endHoldWithoutSignal() {
    if (!std::exchange(hasLoggedMissingSignal_, true)) {
        log_.write(
            "TarvikDictate: the desktop's portal has not told of a release, and the hold has ended "
            "with the repeats of the key");
    }
    hold_.expectLateReports(std::chrono::steady_clock::now());
    endHold();
}

void PortalHotKeys::endHold() {
    repeatDeadline_.clear();
    if (const auto ended = hold_.end()) {
        events_.onReleased(*ended);
    }
}

}  // namespace tarvik::linuxdesktop
