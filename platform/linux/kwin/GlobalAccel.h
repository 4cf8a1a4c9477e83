// SPDX-License-Identifier: MIT
#pragma once

#include <systemd/sd-bus.h>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// The global shortcuts of KDE, as `org.kde.kglobalaccel` offers them on the session bus. Loop
/// thread only; no operation blocks. Every callback comes in a later turn, unless the bus is lost
/// first.
///
/// A shortcut is an action of this program with a key. Actions are told apart by a name.
class GlobalAccel {
  public:
    /// The name on the bus.
    static constexpr const char* busName = "org.kde.kglobalaccel";

    /// Up to four keys that are pressed one after the other, with modifiers as Qt numbers them; 0
    /// where there are fewer.
    using Sequence = std::array<std::int32_t, 4>;
    /// An action of any program.
    struct Action {
        std::string program;
        std::string name;
        /// The program and the action as the user sees them.
        std::string text;

        friend bool operator==(const Action& one, const Action& other) {
            return one.program == other.program && one.name == other.name;
        }
    };

    enum class Registration {
        /// The action has the key.
        done,
        /// An action of another program has the key, and the action of this program has none.
        taken,
        /// Nobody answered in time, or the answer was an error.
        failed
    };
    struct Events {
        /// A key of the action went down, or repeats.
        std::function<void(const std::string& action)> onPressed;
        /// A key of the action went up.
        std::function<void(const std::string& action)> onReleased;
        /// Somebody else has changed the keys of the action: the user, or another program.
        std::function<void(const std::string& action, const std::vector<std::int32_t>& keys)>
            onKeysChanged;
    };

    /// Hears of shortcuts from here on. `bus` outlives the object's callbacks.
    GlobalAccel(MessageBus& bus, Events events);
    GlobalAccel(const GlobalAccel&) = delete;
    GlobalAccel& operator=(const GlobalAccel&) = delete;

    /// Gives `key`, a key with modifiers as Qt numbers them, to the action, which the user sees as
    /// `title`.
    void add(const std::string& action, const std::string& title, std::int32_t key,
             std::function<void(Registration)> onDone);
    /// Deletes the action. `onDone` is called also when nobody answers.
    void remove(const std::string& action, std::function<void()> onDone);
    /// Asks which action of another program has `key`. Empty when none has, or when nobody answers.
    void askOwner(std::int32_t key,
                  std::function<void(const std::optional<Action>& owner)> onKnown);

    /// Asks for the keys of an action. Empty when nobody answers.
    void askKeys(const Action& action,
                 std::function<void(const std::optional<std::vector<Sequence>>& keys)> onKnown);
    /// Gives the action of another program these keys. `onDone` is called also when nobody answers.
    void setKeys(const Action& action, const std::vector<Sequence>& keys,
                 std::function<void()> onDone);

  private:
    void handleKeysChanged(sd_bus_message* signal);

    MessageBus& bus_;
    Events events_;
};

}  // namespace tarvik::linuxdesktop
