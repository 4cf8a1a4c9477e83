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

GlobalAccelHotKeys::GlobalAccelHotKeys(MessageBus& bus, platform::Log& log, Events events,
                                       OnTaken onTaken, OnHold onHold)
    : log_(log),
      events_(std::move(events)),
      onTaken_(std::move(onTaken)),
      onHold_(std::move(onHold)),
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
        onStatus(platform::eventHotKeyInvalidErr, "");
        return;
    }
    if (numberOf(combination->action)) {
        onStatus(platform::eventHotKeyExistsErr, "");
        return;
    }
    hotKeys_[number] = combination;
    registerKey(number, [this, number, onStatus = std::move(onStatus)](platform::OSStatus status,
                                                                       const std::string& reason) {
        if (status != platform::noErr) {
            hotKeys_.erase(number);
        }
        onStatus(status, reason);
    });
}

void GlobalAccelHotKeys::registerKey(HotKeyNumber number, OnStatus onStatus) {
    const Combination& combination = *hotKeys_[number];
    globalAccel_.add(combination.action, std::string("Dictate by ") + combination.text,
                     combination.key,
                     [this, number, &combination,
                      onStatus = std::move(onStatus)](GlobalAccel::Registration registration) {
                         handleRegistration(number, combination, registration, onStatus);
                     });
}

void GlobalAccelHotKeys::handleRegistration(HotKeyNumber number, const Combination& combination,
                                            GlobalAccel::Registration registration,
                                            OnStatus onStatus) {
    // The action of a hotkey that is not wanted any more has been deleted, and the next one of the
    // same name may exist.
    if (!hotKeys_.contains(number)) {
        onStatus(platform::eventInternalErr, "");
        return;
    }
    if (registration == GlobalAccel::Registration::failed) {
        globalAccel_.remove(combination.action, [] {});
        onStatus(platform::eventInternalErr, "");
        return;
    }
    // New versions of KDE give one key to several actions.
    globalAccel_.askOwner(combination.key, [this, number, &combination, registration,
                                            onStatus = std::move(onStatus)](const auto& owner) {
        if (owner && foreign_.isAgreed(*owner, combination.key)) {
            takeAgreed(number, combination, *owner, onStatus);
        } else if (owner || registration == GlobalAccel::Registration::taken) {
            refuse(number, combination, owner, onStatus);
        } else {
            setRefusal(combination, std::nullopt);
            onStatus(platform::noErr, "");
        }
    });
}

void GlobalAccelHotKeys::takeAgreed(HotKeyNumber number, const Combination& combination,
                                    const GlobalAccel::Action& owner, OnStatus onStatus) {
    foreign_.take(
        owner, combination.key,
        [this, number, &combination, owner, onStatus = std::move(onStatus)](bool isTaken) {
            if (isTaken && hotKeys_.contains(number)) {
                registerKey(number, onStatus);
            } else {
                refuse(number, combination, owner, onStatus);
            }
        });
}

void GlobalAccelHotKeys::refuse(HotKeyNumber number, const Combination& combination,
                                const std::optional<GlobalAccel::Action>& owner,
                                const OnStatus& onStatus) {
    // The action is of no use without its key.
    if (hotKeys_.contains(number)) {
        globalAccel_.remove(combination.action, [] {});
    }
    setRefusal(combination, owner);
    onStatus(platform::eventHotKeyExistsErr,
             std::string("KDE has given ") + combination.text +
                 " to: " + (owner ? owner->text : "another program"));
}

void GlobalAccelHotKeys::setRefusal(const Combination& combination,
                                    const std::optional<GlobalAccel::Action>& owner) {
    std::erase_if(refusals_, [&combination](const Refusal& refusal) {
        return refusal.combination == &combination;
    });
    if (owner) {
        refusals_.push_back({&combination, *owner});
    }
    onTaken_(!refusals_.empty());
}

void GlobalAccelHotKeys::takeOver() {
    takeNext(refusals_, false);
}

void GlobalAccelHotKeys::takeNext(std::vector<Refusal> left, bool hasTaken) {
    if (left.empty()) {
        if (hasTaken) {
            events_.onFreed();
        }
        return;
    }
    const Refusal refusal = left.back();
    left.pop_back();
    foreign_.take(refusal.owner, refusal.combination->key,
                  [this, refusal, left = std::move(left), hasTaken](bool isTaken) {
                      if (isTaken) {
                          setRefusal(*refusal.combination, std::nullopt);
                      }
                      log_.write("TarvikDictate: " + refusal.owner.text +
                                 (isTaken ? std::string(" has given ") + refusal.combination->text +
                                                " up, and gets it back when the application ends"
                                          : std::string(" keeps ") + refusal.combination->text));
                      takeNext(left, hasTaken || isTaken);
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
    // The keys go back when no action of this program has them any more.
    const auto left = std::make_shared<std::size_t>(removed.size());
    const auto onRemoved = [this, left, onDone = std::move(onDone)] {
        if (*left == 0 || --*left == 0) {
            foreign_.giveBack(onDone);
        }
    };
    if (removed.empty()) {
        onRemoved();
    }
    for (const auto& [number, combination] : removed) {
        globalAccel_.remove(combination->action, onRemoved);
    }
}

// KDE repeats the press of a held key.
void GlobalAccelHotKeys::handlePressed(const std::string& action) {
    const auto number = numberOf(action);
    if (number && held_ != number) {
        endHold();
        held_ = number;
        onHold_(true);
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
        onHold_(false);
    }
    return ended;
}

void GlobalAccelHotKeys::endHold() {
    if (const auto ended = takeHold()) {
        events_.onReleased(*ended);
    }
}

}  // namespace tarvik::linuxdesktop
