// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/ListenerFence.h"

#include <utility>

#include "platform/linux/accessibility/AtspiProtocol.h"
#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

namespace {

using Next = std::function<void()>;

// An error of the receiver's own is a reply too.
MessageBus::OnReply unlessGone(Next next) {
    return [next = std::move(next)](sd_bus_message* reply) {
        if (!isNoReply(reply)) {
            next();
        }
    };
}

void callRegistry(MessageBus& bus, Next next) {
    bus.call(bus.newCall(atspi::registry, atspi::registryInterface, "GetRegisteredEvents"),
             MessageBus::noTimeout, unlessGone(std::move(next)));
}

// The role is a method, which every toolkit handles in the order of its messages.
void callProgram(MessageBus& bus, const BusObject& program, Next next) {
    bus.call(bus.newCall(program, atspi::accessibleInterface, "GetRole"), MessageBus::noTimeout,
             unlessGone(std::move(next)));
}

}  // namespace

void ListenerFence::pass(MessageBus& bus, const BusObject& program, Next onPassed) {
    callRegistry(bus, [&bus, program, onPassed = std::move(onPassed)] {
        callProgram(bus, program, [&bus, onPassed] { callRegistry(bus, onPassed); });
    });
}

}  // namespace tarvik::linuxdesktop
