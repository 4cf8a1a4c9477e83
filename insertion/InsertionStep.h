// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include "platform/Accessibility.h"
#include "platform/KeyboardEvents.h"

namespace tarvik {

/// Where the text of a recording goes: the element and the process that had the keyboard focus when
/// the recording began. Both may be absent.
struct InsertionTarget {
    platform::AXUIElementRef element;
    std::optional<platform::ProcessIdentifier> processIdentifier;
};

/// Inserts `text` into `target`: replaces the selection of the target's element. Types the text
/// when there is no element or when the write fails. Does nothing for an empty text. Main thread.
void insertPiece(const std::string& text, const InsertionTarget& target,
                 platform::Accessibility& accessibility, platform::KeyboardEvents& keyboard);

}  // namespace tarvik
