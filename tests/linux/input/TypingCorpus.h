// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace tarvik::tests {

/// Every kind of script, combining characters, right to left, and emoji of several characters.
inline constexpr std::string_view typingCorpus[] = {
    "The quick brown fox: 0123456789 !\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~ ABC xyz",
    "Zażółć gęślą jaźń – „tak”, Łódź, ŻÓŁĆ…",
    "Größe, Übermut, ärgerlich – „Ja, heiß!“",
    "Tiếng Việt có dấu; Tie\u0302\u0301ng",
    "Съешь же ещё этих мягких французских булок, да выпей чаю.",
    "Γαζέες καὶ μυρτιὲς δὲν θὰ βρῶ πιὰ",
    "مرحبا بالعالم، كيف حالك؟",
    "שלום עולם, מה שלומך?",
    "こんにちは世界、日本語のテキストです。",
    "안녕하세요 세계",
    "Fine 👍🏽 family 👨‍👩‍👧‍👦 flag 🇵🇱 ❤️ end",
};

}  // namespace tarvik::tests
