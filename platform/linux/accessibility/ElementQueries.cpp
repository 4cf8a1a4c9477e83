// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/ElementQueries.h"

#include <utility>

#include "platform/linux/accessibility/AtspiProtocol.h"
#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

void queryElement(MessageBus& bus, const std::shared_ptr<AtspiElement>& element,
                  const SendQuery& send) {
    const BusObject object = element->object();
    if (!element->isEditableText) {
        send(bus.newCall(object, atspi::accessibleInterface, "GetInterfaces"),
             [element](sd_bus_message* reply) {
                 element->isEditableText = atspi::hasEditableTextIn(reply);
             });
    }
    if (!element->role) {
        send(bus.newCall(object, atspi::accessibleInterface, "GetRole"),
             [element](sd_bus_message* reply) { element->role = unsignedIn(reply); });
    }
    if (!element->parent) {
        send(
            bus.newPropertyCall(object, atspi::accessibleInterface, "Parent"),
            [element](sd_bus_message* reply) { element->parent = atspi::objectPropertyIn(reply); });
    }
}

void queryElement(MessageBus& bus, const std::shared_ptr<AtspiElement>& element,
                  CallBatch& queries) {
    queryElement(bus, element, [&queries](BusMessage call, MessageBus::OnReply onReply) {
        queries.add(std::move(call), std::move(onReply));
    });
}

}  // namespace tarvik::linuxdesktop
