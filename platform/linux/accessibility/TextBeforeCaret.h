// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "platform/linux/accessibility/AtspiElement.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// Whether `text` stands right before the caret of a document. `element` is the part of the
/// document that has the caret. The text may begin in a part before, for example on an earlier
/// page. Blocks until `deadline` at the most; false when a reply is missing by then. The bus's
/// thread, outside handlers of the bus.
bool standsBeforeCaret(MessageBus& bus, const AtspiElement& element, std::string_view text,
                       SteadyTime deadline);

}  // namespace tarvik::linuxdesktop
