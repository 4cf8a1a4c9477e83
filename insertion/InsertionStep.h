#pragma once

#include <optional>
#include <string>

#include "platform/Accessibility.h"
#include "platform/KeyboardEvents.h"

namespace tarvik {

/// Where the text of a recording goes: what had the keyboard when the recording began.
struct InsertionTarget {
    platform::AXUIElementRef element;
    std::optional<platform::ProcessIdentifier> processIdentifier;
};

/// Puts one piece of text into the target: replaces the selection of its element, and where there
/// is no element or it refuses, types the text. An empty piece does nothing. Main thread.
void insertPiece(const std::string& text, const InsertionTarget& target,
                 platform::Accessibility& accessibility, platform::KeyboardEvents& keyboard);

}  // namespace tarvik
