// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// Finds out when a program knows who listens to its events. A program joins the registry of the
/// accessibility bus first, and asks the registry for the listeners next. Until the program has the
/// list of listeners, GTK 3 and GTK 4 drop their events.
///
/// The order of messages is the proof, with three calls one after the other. The first reply of the
/// registry shows that the program is about to get the reply to its joining. The program's own
/// reply then shows that the program has asked for the listeners. The second reply of the registry
/// shows that the list is under way. The program reads every later call after the list.
class ListenerFence {
  public:
    ListenerFence() = delete;

    /// Calls `onPassed` once every further call reaches the program after the list of listeners.
    /// `program` is the root object of a program that the registry has announced. `onPassed` is
    /// called in a handler of `bus`, and not at all when the program or the registry leaves the bus
    /// before. Belongs to the bus's thread; nothing blocks.
    static void pass(MessageBus& bus, const BusObject& program, std::function<void()> onPassed);
};

}  // namespace tarvik::linuxdesktop
