// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/GlobalAccel.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

// At the login KWin may be busy for long.
constexpr auto callTimeout = 20s;
// After another answer of KWin.
constexpr auto ownerTimeout = 500ms;
constexpr const char* component = "com.tarvik.dictate";
constexpr const char* componentTitle = "Tarvik Dictate";
constexpr const char* accelInterface = "org.kde.KGlobalAccel";
const BusObject accelObject{GlobalAccel::busName, "/kglobalaccel"};

// The action is there, and what an earlier process or the user gave to it does not matter.
constexpr std::uint32_t isPresent = 2;
constexpr std::uint32_t replacesKeys = 4;
// Only a shortcut of exactly the same key.
constexpr std::int32_t equalKey = 0;

using Sequence = GlobalAccel::Sequence;

std::optional<std::vector<Sequence>> sequencesIn(sd_bus_message* message) {
    if (isError(message) || sd_bus_message_enter_container(message, 'a', "(ai)") <= 0) {
        return std::nullopt;
    }
    std::vector<Sequence> sequences;
    while (sd_bus_message_enter_container(message, 'r', "ai") > 0) {
        const void* numbers = nullptr;
        std::size_t size = 0;
        if (sd_bus_message_read_array(message, 'i', &numbers, &size) < 0) {
            return std::nullopt;
        }
        const auto* first = static_cast<const std::int32_t*>(numbers);
        Sequence& sequence = sequences.emplace_back();
        std::copy_n(first, std::min(size / sizeof(std::int32_t), sequence.size()),
                    sequence.begin());
        sd_bus_message_exit_container(message);
    }
    return sequences;
}

// Of a shortcut the first key counts here.
std::vector<std::int32_t> firstKeysIn(sd_bus_message* message) {
    std::vector<std::int32_t> keys;
    for (const Sequence& sequence : sequencesIn(message).value_or(std::vector<Sequence>{})) {
        keys.push_back(sequence.front());
    }
    return keys;
}

// The first action of another program in a list of shortcuts.
std::optional<GlobalAccel::Action> ownerIn(sd_bus_message* reply) {
    if (isError(reply) || sd_bus_message_enter_container(reply, 'a', "(ssssssaiai)") <= 0) {
        return std::nullopt;
    }
    while (sd_bus_message_enter_container(reply, 'r', "ssssssaiai") > 0) {
        const char* action = nullptr;
        const char* actionTitle = nullptr;
        const char* program = nullptr;
        const char* programTitle = nullptr;
        if (sd_bus_message_read(reply, "ssss", &action, &actionTitle, &program, &programTitle) <=
            0) {
            return std::nullopt;
        }
        if (std::string_view(program) != component) {
            const auto titleOr = [](const char* title, const char* name) {
                return std::string(*title != '\0' ? title : name);
            };
            return GlobalAccel::Action{
                program, action,
                titleOr(programTitle, program) + ", " + titleOr(actionTitle, action)};
        }
        if (sd_bus_message_skip(reply, "ssaiai") < 0 || sd_bus_message_exit_container(reply) < 0) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

std::string signalRule(const std::string& interfaceName, const std::string& more) {
    return "type='signal',sender='" + std::string(GlobalAccel::busName) + "',interface='" +
           interfaceName + "'," + more;
}

}  // namespace

GlobalAccel::GlobalAccel(MessageBus& bus, Events events) : bus_(bus), events_(std::move(events)) {
    const auto observeKeys = [this](const std::string& signal,
                                    const std::function<void(const std::string&)>& onKey) {
        bus_.observe(signalRule("org.kde.kglobalaccel.Component",
                                "member='" + signal + "',arg0='" + component + "'"),
                     [onKey](sd_bus_message* message) {
                         const char* ours = nullptr;
                         const char* action = nullptr;
                         if (sd_bus_message_read(message, "ss", &ours, &action) > 0) {
                             onKey(action);
                         }
                     });
    };
    observeKeys("globalShortcutPressed", events_.onPressed);
    observeKeys("globalShortcutReleased", events_.onReleased);
    bus_.observe(signalRule(accelInterface, "member='yourShortcutsChanged'"),
                 [this](sd_bus_message* signal) { handleKeysChanged(signal); });
}

void GlobalAccel::handleKeysChanged(sd_bus_message* signal) {
    char** words = nullptr;
    if (sd_bus_message_read_strv(signal, &words) <= 0) {
        return;
    }
    std::vector<std::string> action;
    for (char** word = words; *word != nullptr; ++word) {
        action.emplace_back(*word);
        std::free(*word);
    }
    std::free(words);
    if (action.size() > 1 && action[0] == component) {
        events_.onKeysChanged(action[1], firstKeysIn(signal));
    }
}

void GlobalAccel::add(const std::string& action, const std::string& title, std::int32_t key,
                      std::function<void(Registration)> onDone) {
    const char* const name = action.c_str();
    // The receiver handles the calls of one connection in their order.
    bus_.send(bus_.newCall(accelObject, accelInterface, "doRegister", "as", 4, component, name,
                           componentTitle, title.c_str()));
    bus_.call(
        bus_.newCall(accelObject, accelInterface, "setShortcutKeys", "asa(ai)u", 4, component, name,
                     componentTitle, title.c_str(), 1, 4, key, 0, 0, 0, isPresent | replacesKeys),
        callTimeout, [key, onDone = std::move(onDone)](sd_bus_message* reply) {
            const std::vector<std::int32_t> keys = firstKeysIn(reply);
            onDone(keys.empty()          ? Registration::failed
                   : keys.front() == key ? Registration::done
                                         : Registration::taken);
        });
}

void GlobalAccel::remove(const std::string& action, std::function<void()> onDone) {
    bus_.call(
        bus_.newCall(accelObject, accelInterface, "unregister", "ss", component, action.c_str()),
        callTimeout, [onDone = std::move(onDone)](sd_bus_message*) { onDone(); });
}

void GlobalAccel::askOwner(std::int32_t key,
                           std::function<void(const std::optional<Action>& owner)> onKnown) {
    bus_.call(bus_.newCall(accelObject, accelInterface, "globalShortcutsByKey", "(ai)(i)", 4, key,
                           0, 0, 0, equalKey),
              ownerTimeout,
              [onKnown = std::move(onKnown)](sd_bus_message* reply) { onKnown(ownerIn(reply)); });
}

void GlobalAccel::askKeys(
    const Action& action,
    std::function<void(const std::optional<std::vector<Sequence>>& keys)> onKnown) {
    bus_.call(bus_.newCall(accelObject, accelInterface, "shortcutKeys", "as", 4,
                           action.program.c_str(), action.name.c_str(), "", ""),
              callTimeout, [onKnown = std::move(onKnown)](sd_bus_message* reply) {
                  onKnown(sequencesIn(reply));
              });
}

void GlobalAccel::setKeys(const Action& action, const std::vector<Sequence>& keys,
                          std::function<void()> onDone) {
    BusMessage call = bus_.newCall(accelObject, accelInterface, "setForeignShortcutKeys", "as", 4,
                                   action.program.c_str(), action.name.c_str(), "", "");
    if (call) {
        sd_bus_message_open_container(call.get(), 'a', "(ai)");
        for (const Sequence& keysOfOne : keys) {
            sd_bus_message_append(call.get(), "(ai)", 4, keysOfOne[0], keysOfOne[1], keysOfOne[2],
                                  keysOfOne[3]);
        }
        sd_bus_message_close_container(call.get());
    }
    bus_.call(std::move(call), callTimeout,
              [onDone = std::move(onDone)](sd_bus_message*) { onDone(); });
}

}  // namespace tarvik::linuxdesktop
