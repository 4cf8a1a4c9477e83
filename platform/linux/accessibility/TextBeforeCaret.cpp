// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/TextBeforeCaret.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/linux/accessibility/AtspiProtocol.h"
#include "platform/linux/accessibility/AtspiText.h"
#include "platform/linux/accessibility/CallBatch.h"
#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

bool standsBeforeCaret(MessageBus& bus, const AtspiElement& element, std::string_view text,
                       SteadyTime deadline) {
    std::string rest(text);
    for (std::string path = element.path; !rest.empty();) {
        const AtspiElement part(element.application, path);
        const AtspiText widget(bus, part);
        std::optional<std::int64_t> end;
        std::optional<BusObject> partBefore;
        CallBatch queries(bus, deadline);
        queries.add(path == element.path ? widget.newCaretOffset() : widget.newCharacterCount(),
                    [&](sd_bus_message* reply) { end = integerPropertyIn(reply); });
        queries.add(bus.newCall(part.object(), atspi::accessibleInterface, "GetRelationSet"),
                    [&](sd_bus_message* reply) {
                        partBefore = atspi::relatedObjectIn(reply, atspi::flowsFromRelation);
                    });
        if (!queries.await() || !end) {
            return false;
        }
        // A program that counts characters shows more than is left of the text.
        const std::int64_t begin = std::max<std::int64_t>(*end - AtspiText::utf16LengthOf(rest), 0);
        std::optional<std::string> shown;
        CallBatch query(bus, deadline);
        query.add(widget.newReading(begin, *end),
                  [&](sd_bus_message* reply) { shown = textIn(reply); });
        if (!query.await() || !shown) {
            return false;
        }
        if (shown->size() >= rest.size()) {
            return shown->ends_with(rest);
        }
        if (!rest.ends_with(*shown) || !partBefore) {
            return false;
        }
        rest.erase(rest.size() - shown->size());
        path = partBefore->path;
    }
    return true;
}

}  // namespace tarvik::linuxdesktop
