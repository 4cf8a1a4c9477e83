// SPDX-License-Identifier: MIT

#include "platform/linux/sway/SwayHotKeys.h"

#include <fcntl.h>
#include <simdjson.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <set>
#include <utility>

#include "platform/linux/input/CombinationText.h"
#include "platform/linux/sway/ConfiguredBindings.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

// How much later than a keyboard's settings say its repeats may come.
constexpr auto delayTolerance = 150ms;
constexpr auto intervalTolerance = 70ms;
// Where the compositor does not tell.
constexpr KeyRepeat::Setting usualRepeat{600ms, 40ms};

constexpr const char* otherInstance = "another instance has bindings in this Sway session";

// What the bindings of this process say, before the number of the hotkey.
std::string mark() {
    return "com.tarvik.dictate " + std::to_string(getpid()) + " ";
}

std::set<std::string> modifierNames(std::uint32_t modifiers) {
    std::set<std::string> names;
    if ((modifiers & platform::optionKeyMask) != 0) {
        names.insert("mod1");
    }
    if ((modifiers & platform::shiftKeyMask) != 0) {
        names.insert("shift");
    }
    return names;
}

std::string symbols(std::uint32_t modifiers) {
    std::string text;
    for (const std::string& name : modifierNames(modifiers)) {
        text += name + "+";
    }
    return text + "space";
}

std::string bindCommands(HotKeyNumber number, std::uint32_t modifiers) {
    const std::string combination = symbols(modifiers);
    const std::string nothing = " nop " + mark() + std::to_string(number);
    return "bindsym " + combination + nothing + " press; bindsym --release " + combination +
           nothing + " release";
}

std::string unbindCommands(std::uint32_t modifiers) {
    const std::string combination = symbols(modifiers);
    return "unbindsym " + combination + "; unbindsym --release " + combination;
}

std::string textAt(std::string_view json, const char* pointer) {
    simdjson::dom::parser parser;
    std::string_view text;
    const auto error = parser.parse(json.data(), json.size()).at_pointer(pointer).get(text);
    return error == simdjson::SUCCESS ? std::string(text) : std::string();
}

bool hasSucceeded(std::string_view reply) {
    simdjson::dom::parser parser;
    simdjson::dom::array results;
    if (parser.parse(reply.data(), reply.size()).get(results) != simdjson::SUCCESS) {
        return false;
    }
    return std::ranges::all_of(results, [](const simdjson::dom::element result) {
        bool success = false;
        return result["success"].get(success) == simdjson::SUCCESS && success;
    });
}

}  // namespace

SwayHotKeys::SwayHotKeys(SwayConnection& connection, EventLoop& loop, platform::Log& log,
                         Events events, AskRepeat askRepeat)
    : connection_(connection),
      log_(log),
      events_(std::move(events)),
      askRepeat_(std::move(askRepeat)),
      repeatDeadline_(loop) {}

SwayHotKeys::~SwayHotKeys() {
    endHold();
}

void SwayHotKeys::add(HotKeyNumber number, std::uint32_t keyCode, std::uint32_t modifiers,
                      OnStatus onStatus) {
    constexpr std::uint32_t known = platform::optionKeyMask | platform::shiftKeyMask;
    if (keyCode != platform::spaceKeyCode || (modifiers & ~known) != 0) {
        onStatus(platform::eventHotKeyInvalidErr, "");
        return;
    }
    const bool isTaken = std::ranges::any_of(
        hotKeys_, [modifiers](const auto& entry) { return entry.second.modifiers == modifiers; });
    if (isTaken) {
        onStatus(platform::eventHotKeyExistsErr, "");
        return;
    }
    if (!claim()) {
        onStatus(platform::eventHotKeyExistsErr, otherInstance);
        return;
    }
    hotKeys_[number] = {modifiers};
    withOwner(modifiers, [this, number, modifiers, onStatus = std::move(onStatus)](
                             const std::optional<std::string>& command) {
        if (!hotKeys_.contains(number)) {
            onStatus(platform::eventInternalErr, "");
        } else if (command) {
            hotKeys_.erase(number);
            releaseIfEmpty();
            onStatus(
                platform::eventHotKeyExistsErr,
                "Sway's configuration binds " + combinationText(modifiers) + " to: " + *command);
        } else {
            bind(number, [this, number, onStatus](bool isBound) {
                if (!isBound) {
                    hotKeys_.erase(number);
                    releaseIfEmpty();
                }
                onStatus(isBound ? platform::noErr : platform::eventInternalErr,
                         isBound ? "" : "Sway refuses the binding");
            });
        }
    });
}

// A process that ends gives its lock up, however it ends. The empty file stays until the session's
// end: whoever removed it might remove another instance's.
bool SwayHotKeys::claim() {
    if (lock_) {
        return true;
    }
    const std::string path = SwayConnection::socketPath().string() + ".tarvik-dictate";
    FileDescriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!file) {
        // Where no file can be made, bindings count more than telling instances apart.
        return true;
    }
    if (flock(file.number(), LOCK_EX | LOCK_NB) != 0) {
        return false;
    }
    lock_ = std::move(file);
    return true;
}

void SwayHotKeys::releaseIfEmpty() {
    if (hotKeys_.empty()) {
        lock_ = FileDescriptor();
    }
}

void SwayHotKeys::withOwner(std::uint32_t modifiers,
                            std::function<void(std::optional<std::string> command)> onKnown) {
    const auto path = std::make_shared<std::string>();
    connection_.request(SwayConnection::Request::getVersion, "", [path](std::string_view json) {
        *path = textAt(json, "/loaded_config_file_name");
    });
    connection_.request(SwayConnection::Request::getConfig, "",
                        [path, modifiers, onKnown = std::move(onKnown)](std::string_view json) {
                            const ConfiguredBindings bindings(textAt(json, "/config"), *path);
                            onKnown(bindings.commandOfSpace(modifierNames(modifiers)));
                        });
}

void SwayHotKeys::bind(HotKeyNumber number, std::function<void(bool isBound)> onBound) {
    HotKey& hotKey = hotKeys_[number];
    hotKey.isBound = true;
    connection_.run(bindCommands(number, hotKey.modifiers),
                    [this, number, onBound = std::move(onBound)](std::string_view reply) {
                        const bool isBound = hasSucceeded(reply);
                        if (const auto found = hotKeys_.find(number); found != hotKeys_.end()) {
                            found->second.isBound = isBound;
                        }
                        onBound(isBound);
                    });
}

void SwayHotKeys::remove(HotKeyNumber number, std::function<void()> onDone) {
    const auto found = hotKeys_.find(number);
    if (found == hotKeys_.end()) {
        onDone();
        return;
    }
    const HotKey removed = found->second;
    hotKeys_.erase(found);
    if (hold_ && hold_->number == number) {
        hold_.reset();
        repeatDeadline_.clear();
    }
    if (removed.isBound) {
        connection_.run(unbindCommands(removed.modifiers),
                        [this, onDone = std::move(onDone)](std::string_view) {
                            releaseIfEmpty();
                            onDone();
                        });
    } else {
        // Another binding of the combination is the user's own.
        releaseIfEmpty();
        onDone();
    }
}

void SwayHotKeys::removeAll(std::function<void()> onDone) {
    endHold();
    for (const auto& [number, hotKey] : std::exchange(hotKeys_, {})) {
        if (hotKey.isBound) {
            connection_.run(unbindCommands(hotKey.modifiers));
        }
    }
    // The reply to the last request comes after those before it.
    connection_.request(SwayConnection::Request::getVersion, "",
                        [this, onDone = std::move(onDone)](std::string_view) {
                            releaseIfEmpty();
                            onDone();
                        });
}

void SwayHotKeys::handleReload() {
    for (auto& [number, hotKey] : hotKeys_) {
        const bool wasBound = std::exchange(hotKey.isBound, false);
        withOwner(hotKey.modifiers,
                  [this, number = number, wasBound](const std::optional<std::string>& command) {
                      if (!hotKeys_.contains(number)) {
                          return;
                      }
                      if (!command) {
                          restore(number);
                      } else if (wasBound) {
                          events_.onLost(number, "Sway's configuration binds " +
                                                     combinationText(hotKeys_[number].modifiers) +
                                                     " to: " + *command);
                      }
                  });
    }
    events_.onFreed();
}

void SwayHotKeys::restore(HotKeyNumber number) {
    bind(number, [this, number](bool isBound) {
        if (!isBound && hotKeys_.contains(number)) {
            events_.onLost(number, "Sway refuses the binding");
        }
    });
}

void SwayHotKeys::handleBinding(std::string_view json) {
    const std::string command = textAt(json, "/binding/command");
    const std::string beginning = "nop " + mark();
    if (!command.starts_with(beginning)) {
        return;
    }
    const auto number =
        static_cast<HotKeyNumber>(std::strtoull(command.c_str() + beginning.size(), nullptr, 10));
    if (!hotKeys_.contains(number)) {
        return;
    }
    if (command.ends_with(" press")) {
        handlePress(number);
    } else if (hold_ && hold_->number == number) {
        endHold();
    }
}

void SwayHotKeys::handlePress(HotKeyNumber number) {
    if (hold_ && hold_->number == number && isRepeat()) {
        ++hold_->repeats;
        watchRepeats();
        return;
    }
    // Of a hold that has not ended, Sway has not reported the release.
    endHold();
    hold_ = Hold{number, std::chrono::steady_clock::now()};
    // Asked first: the listener may use another keyboard.
    askRepeat_([this, number](KeyRepeat::Setting setting) { handleRepeat(number, setting); });
    events_.onPressed(number);
}

void SwayHotKeys::handleRepeat(HotKeyNumber number, KeyRepeat::Setting setting) {
    if (!hold_ || hold_->number != number) {
        return;
    }
    hold_->repeat = setting;
    watchRepeats();
    if (!repeats() && !std::exchange(hasToldOfNoRepeat_, true)) {
        log_.write(
            "TarvikDictate: the keyboard does not repeat its keys; if another key is pressed "
            "during a hold, Sway reports no release, and the next press ends the recording");
    }
}

bool SwayHotKeys::repeats() const {
    return !hold_->repeat || (hold_->repeat->delay > 0ms && hold_->repeat->interval > 0ms);
}

// With a rate of 0, Sway still repeats a binding once.
bool SwayHotKeys::isRepeat() const {
    const auto held = std::chrono::steady_clock::now() - hold_->pressTime;
    return repeats() || (hold_->repeats == 0 && held > hold_->repeat->delay - intervalTolerance &&
                         held < hold_->repeat->delay + delayTolerance);
}

void SwayHotKeys::watchRepeats() {
    const auto verify = [this] { verifyEnd(2, hold_->repeats); };
    const auto repeat = hold_->repeat.value_or(usualRepeat);
    if (!repeats()) {
        return;
    }
    if (hold_->repeats > 0) {
        repeatDeadline_.set(2 * repeat.interval + intervalTolerance, verify);
    } else if (hold_->repeat) {
        repeatDeadline_.set(hold_->pressTime + repeat.delay + delayTolerance, verify);
    }
}

// A busy Sway repeats late. A repeat that is due is reported before the second of two replies, so
// that without one the key repeats no more.
void SwayHotKeys::verifyEnd(int roundTripsLeft, int repeats) {
    if (roundTripsLeft == 0) {
        endHold();
        return;
    }
    connection_.request(
        SwayConnection::Request::getVersion, "",
        [this, roundTripsLeft, repeats, pressTime = hold_->pressTime](std::string_view) {
            if (hold_ && hold_->pressTime == pressTime && hold_->repeats == repeats) {
                verifyEnd(roundTripsLeft - 1, repeats);
            }
        });
}

void SwayHotKeys::endHold() {
    repeatDeadline_.clear();
    if (const auto ended = std::exchange(hold_, std::nullopt)) {
        events_.onReleased(ended->number);
    }
}

}  // namespace tarvik::linuxdesktop
