// SPDX-License-Identifier: MIT

#include "insertion/Pasteboard.h"

#include <string>

#include "base/Text.h"

namespace tarvik {

namespace {

constexpr std::size_t unitsPerPress = 20;
constexpr std::uint16_t virtualKey = 0;

}  // namespace

void Pasteboard::typeString(std::string_view text, std::optional<platform::ProcessIdentifier> toPid,
                            platform::KeyboardEvents& keyboard) {
    const auto source = keyboard.createSource(platform::eventSourceStateCombinedSession);
    const std::u16string allUnits = utf16FromUtf8(text);
    const auto postEvent = [&](const std::shared_ptr<platform::KeyboardEvent>& event) {
        if (toPid) {
            keyboard.postToPid(*toPid, event);
        } else {
            keyboard.post(platform::hidEventTap, event);
        }
    };
    for (std::size_t first = 0; first < allUnits.size(); first += unitsPerPress) {
        const auto units = std::u16string_view(allUnits).substr(first, unitsPerPress);
        const auto keyDown = keyboard.createKeyboardEvent(source, virtualKey, true);
        if (!keyDown) {
            continue;
        }
        const auto keyUp = keyboard.createKeyboardEvent(source, virtualKey, false);
        if (!keyUp) {
            continue;
        }
        keyboard.setUnicodeString(*keyDown, units);
        keyboard.setUnicodeString(*keyUp, units);
        postEvent(keyDown);
        postEvent(keyUp);
    }
}

}  // namespace tarvik
