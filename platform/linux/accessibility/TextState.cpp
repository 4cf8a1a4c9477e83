// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/TextState.h"

#include <algorithm>

#include "platform/linux/accessibility/AtspiText.h"
#include "platform/linux/accessibility/CallBatch.h"
#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

std::optional<TextState> TextState::query(MessageBus& bus, const AtspiElement& element,
                                          SteadyTime deadline) {
    const AtspiText widget(bus, element);
    TextState state;
    bool hasSelection = false;
    CallBatch queries(bus, deadline);
    queries.add(bus.newCall(element.object(), atspi::accessibleInterface, "GetState"),
                [&](sd_bus_message* reply) { state.states = atspi::stateSetIn(reply); });
    // The program replies in the order of the calls. The range counts only when there is a
    // selection: without one, some programs reply with an error and some with an old range.
    queries.add(widget.newSelectionCount(),
                [&](sd_bus_message* reply) { hasSelection = integerIn(reply).value_or(0) > 0; });
    queries.add(widget.newSelection(), [&](sd_bus_message* reply) {
        std::int32_t start = 0;
        std::int32_t end = 0;
        if (hasSelection && sd_bus_message_read(reply, "ii", &start, &end) > 0) {
            state.selectionStart = std::min(start, end);
            state.selectionEnd = std::max(start, end);
        }
    });
    queries.add(widget.newCaretOffset(),
                [&](sd_bus_message* reply) { state.caret = integerPropertyIn(reply); });
    queries.add(widget.newCharacterCount(),
                [&](sd_bus_message* reply) { state.count = integerPropertyIn(reply); });
    return queries.await() ? std::optional(state) : std::nullopt;
}

}  // namespace tarvik::linuxdesktop
