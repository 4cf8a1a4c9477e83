// SPDX-License-Identifier: MIT

#include "insertion/InsertionStep.h"

#include "insertion/Pasteboard.h"

namespace tarvik {

void insertPiece(const std::string& text, const InsertionTarget& target,
                 platform::Accessibility& accessibility, platform::KeyboardEvents& keyboard) {
    if (text.empty()) {
        return;
    }
    if (target.element &&
        accessibility.setAttributeValue(target.element, platform::axSelectedTextAttribute, text) ==
            platform::axErrorSuccess) {
        return;
    }
    Pasteboard::typeString(text, target.processIdentifier, keyboard);
}

}  // namespace tarvik
