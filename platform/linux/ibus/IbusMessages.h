// SPDX-License-Identifier: MIT
#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "base/Result.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// IBus itself, on its own bus.
inline const BusObject ibusObject{"org.freedesktop.IBus", "/org/freedesktop/IBus"};
inline constexpr const char* ibusInterface = "org.freedesktop.IBus";

// How IBus writes its objects into messages, and how a connection to IBus begins.

/// Connects to IBus at `address`. IBus calls its clients without naming a destination, as no
/// message bus does, but wants to be greeted and told of rules as one. The messages of the
/// connection are numbered from `firstSerial` on.
Result<std::unique_ptr<MessageBus>> openIbus(const std::string& address,
                                             std::uint64_t firstSerial = 1);
/// Has IBus send what matches `rule`.
void addIbusRule(MessageBus& bus, const std::string& rule);
/// A call that IBus answers at once.
BusMessage newIbusQuestion(MessageBus& bus);
/// Calls `onSignal` for each signal of IBus that matches `rule`.
void observeIbus(MessageBus& bus, const std::string& rule, MessageBus::OnSignal onSignal);

/// Appends `text`, UTF-8, as a text without attributes. False when the text is not UTF-8.
bool appendIbusText(sd_bus_message* message, const std::string& text);
/// Appends the description of this application with one engine.
bool appendIbusComponent(sd_bus_message* message, const std::string& engine);
/// The name of the engine that a reply describes, in however many variants the description is.
std::optional<std::string> engineNameIn(sd_bus_message* reply);

}  // namespace tarvik::linuxdesktop
