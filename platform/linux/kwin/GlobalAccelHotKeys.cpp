// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/GlobalAccelHotKeys.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

// As Qt numbers them.
constexpr std::int32_t altBit = 0x08000000;
constexpr std::int32_t shiftBit = 0x02000000;
constexpr std::int32_t spaceKey = 0x20;

}  // namespace

GlobalAccelHotKeys::GlobalAccelHotKeys(MessageBus& bus, platform::Log& log, Events events)
    : log_(log),
      events_(std::move(events)),
      globalAccel_(bus, {[this](const std::string& action) { handlePressed(action); },
                         [this](const std::string& action) { handleReleased(action); },
                         [this](const std::string& action, const std::vector<std::int32_t>& keys) {
                             handleKeysChanged(action, keys);
                         }}) {}

const GlobalAccelHotKeys::Combination* GlobalAccelHotKeys::combinationOf(std::uint32_t modifiers) {
    static constexpr std::array combinations{
        Combination{"alt-space", "Alt+Space", platform::optionKeyMask, altBit | spaceKey},
        Combination{"alt-shift-space", "Alt+Shift+Space",
                    platform::optionKeyMask | platform::shiftKeyMask,
                    altBit | shiftBit | spaceKey}};
    const auto* found = std::ranges::find(combinations, modifiers, &Combination::modifiers);
    return found != combinations.end() ? found : nullptr;
}

std::optional<HotKeyNumber> GlobalAccelHotKeys::numberOf(const std::string& action) const {
    const auto found = std::ranges::find_if(
        hotKeys_, [&action](const auto& entry) { return entry.second->action == action; });
    return found != hotKeys_.end() ? std::optional(found->first) : std::nullopt;
}

void GlobalAccelHotKeys::add(HotKeyNumber number, std::uint32_t keyCode, std::uint32_t modifiers,
                             OnStatus onStatus) {
    const Combination* combination = combinationOf(modifiers);
    if (keyCode != platform::spaceKeyCode || combination == nullptr) {
        onStatus(platform::eventHotKeyInvalidErr);
        return;
    }
    if (numberOf(combination->action)) {
        onStatus(platform::eventHotKeyExistsErr);
        return;
    }
    hotKeys_[number] = combination;
    registerKey(number, [this, number, combination, onStatus = std::move(onStatus)](
                            platform::OSStatus status, const std::string& owner) {
        if (status == platform::eventHotKeyExistsErr) {
            log_.write(std::string("TarvikDictate: KDE has given ") + combination->text +
                       " to: " + owner);
        }
        if (status != platform::noErr) {
            hotKeys_.erase(number);
        }
        onStatus(status);
    });
}

void GlobalAccelHotKeys::registerKey(
    HotKeyNumber number,
    std::function<void(platform::OSStatus, const std::string& owner)> onStatus) {
    const Combination& combination = *hotKeys_[number];
    globalAccel_.add(
        combination.action, std::string("Dictate by ") + combination.text, combination.key,
        [this, number, &combination,
         onStatus = std::move(onStatus)](GlobalAccel::Registration registration) {
            const bool isWanted = hotKeys_.contains(number);
            if (registration == GlobalAccel::Registration::done && isWanted) {
                onStatus(platform::noErr, "");
                return;
            }
            // The action is of no use without its key. One that is not wanted any more has been
            // deleted, and the next one of the same name may exist.
            if (isWanted) {
                globalAccel_.remove(combination.action, [] {});
            }
            if (registration == GlobalAccel::Registration::taken) {
                globalAccel_.askOwner(combination.key, [onStatus](const std::string& owner) {
                    onStatus(platform::eventHotKeyExistsErr,
                             owner.empty() ? "another program" : owner);
                });
            } else {
                onStatus(platform::eventInternalErr, "");
            }
        });
}

void GlobalAccelHotKeys::remove(HotKeyNumber number, std::function<void()> onDone) {
    const auto found = hotKeys_.find(number);
    if (found == hotKeys_.end()) {
        onDone();
        return;
    }
    if (held_ == number) {
        takeHold();
    }
    globalAccel_.remove(found->second->action, std::move(onDone));
    hotKeys_.erase(found);
}

void GlobalAccelHotKeys::removeAll(std::function<void()> onDone) {
    endHold();
    const auto removed = std::exchange(hotKeys_, {});
    if (removed.empty()) {
        onDone();
        return;
    }
    const auto left = std::make_shared<std::size_t>(removed.size());
    for (const auto& [number, combination] : removed) {
        globalAccel_.remove(combination->action, [left, onDone] {
            if (--*left == 0) {
                onDone();
            }
        });
    }
}

void GlobalAccelHotKeys::handleStart() {
    for (const auto& [number, combination] : hotKeys_) {
        registerKey(number, [this, number = number, combination = combination](
                                platform::OSStatus status, const std::string& owner) {
            if (status == platform::eventHotKeyExistsErr) {
                events_.onLost(number,
                               std::string("KDE has given ") + combination->text + " to: " + owner);
            } else if (status != platform::noErr && hotKeys_.contains(number)) {
                events_.onLost(number, "KDE does not answer");
            }
        });
    }
}

// KDE repeats the press of a held key.
void GlobalAccelHotKeys::handlePressed(const std::string& action) {
    const auto number = numberOf(action);
    if (number && held_ != number) {
        endHold();
        held_ = number;
        events_.onHold(true);
        events_.onPressed(*number);
    }
}

void GlobalAccelHotKeys::handleReleased(const std::string& action) {
    if (const auto number = numberOf(action); number && held_ == number) {
        endHold();
    }
}

void GlobalAccelHotKeys::handleKeysChanged(const std::string& action,
                                           const std::vector<std::int32_t>& keys) {
    const auto number = numberOf(action);
    if (!number) {
        return;
    }
    const Combination& combination = *hotKeys_[*number];
    if (std::ranges::find(keys, combination.key) == keys.end()) {
        events_.onLost(*number, std::string(combination.text) +
                                    " was taken away in the settings of KDE's shortcuts");
    }
}

std::optional<HotKeyNumber> GlobalAccelHotKeys::takeHold() {
    const auto ended = std::exchange(held_, std::nullopt);
    if (ended) {
        events_.onHold(false);
    }
    return ended;
}

void GlobalAccelHotKeys::endHold() {
    if (const auto ended = takeHold()) {
        events_.onReleased(*ended);
    }
}

}  // namespace tarvik::linuxdesktop
