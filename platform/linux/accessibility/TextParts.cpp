// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/TextParts.h"

#include <algorithm>

namespace tarvik::linuxdesktop {

std::string commonPrefix(const std::string& text, const std::string& found) {
    auto end = std::mismatch(text.begin(), text.end(), found.begin(), found.end()).first;
    while (end != text.begin() && end != text.end() && (*end & 0xC0) == 0x80) {
        --end;
    }
    return {text.begin(), end};
}

bool isCutFrom(std::string_view text, std::string_view whole) {
    constexpr std::string_view replacement = "\uFFFD";
    if (text.ends_with(replacement)) {
        text.remove_suffix(replacement.size());
    }
    return text.size() < whole.size() && whole.starts_with(text);
}

}  // namespace tarvik::linuxdesktop
