// SPDX-License-Identifier: MIT
#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <functional>
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
    /// Asks which program and which of its actions have `key`, as the user sees them. The text is
    /// empty when none has, or when nobody answers.
    void askOwner(std::int32_t key, std::function<void(const std::string& owner)> onKnown);

  private:
    void handleKeysChanged(sd_bus_message* signal);

    MessageBus& bus_;
    Events events_;
};

}  // namespace tarvik::linuxdesktop
