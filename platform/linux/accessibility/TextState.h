// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

#include "platform/linux/accessibility/AtspiElement.h"
#include "platform/linux/accessibility/AtspiProtocol.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// What a widget says of its text before the text is changed. An empty value is an error. Offsets
/// are in the unit of AtspiText.
struct TextState {
    std::optional<atspi::StateSet> states;
    /// The same offset twice where nothing is selected.
    std::int64_t selectionStart = 0;
    std::int64_t selectionEnd = 0;
    std::optional<std::int64_t> caret;
    std::optional<std::int64_t> count;

    /// Blocks until `deadline` at the most; empty when a reply is missing by then. The bus's
    /// thread, outside handlers of the bus.
    static std::optional<TextState> query(MessageBus& bus, const AtspiElement& element,
                                          SteadyTime deadline);
};

}  // namespace tarvik::linuxdesktop
