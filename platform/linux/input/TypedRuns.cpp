// SPDX-License-Identifier: MIT

#include "platform/linux/input/TypedRuns.h"

#include <algorithm>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

bool isHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

bool isLineBreakOrTab(char32_t character) {
    return character == U'\t' || character == U'\n' || character == U'\r' || character == 0x2028 ||
           character == 0x2029;
}

bool isControl(char32_t character) {
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

void appendTyped(std::u32string& text, char32_t character, bool followsReturn) {
    if (isLineBreakOrTab(character)) {
        if (!(character == U'\n' && followsReturn)) {
            text += U' ';
        }
    } else if (!isControl(character)) {
        text += character;
    }
}

std::u32string charactersOf(std::u16string_view units) {
    std::u32string text;
    char32_t previous = 0;
    for (std::size_t i = 0; i < units.size(); ++i) {
        char32_t character = units[i];
        if (isHighSurrogate(units[i]) && i + 1 < units.size() && isLowSurrogate(units[i + 1])) {
            character = 0x10000 + ((character - 0xD800) << 10) + (units[++i] - 0xDC00U);
        } else if (isHighSurrogate(units[i]) || isLowSurrogate(units[i])) {
            character = replacementCharacter;
        }
        appendTyped(text, character, previous == U'\r');
        previous = character;
    }
    return text;
}

}  // namespace

void TypedRuns::add(std::optional<platform::ProcessIdentifier> process, std::u16string_view units) {
    if (units.empty()) {
        return;
    }
    if (runs_.empty() || runs_.back().process != process) {
        runs_.push_back({process, {}});
    }
    runs_.back().units += units;
}

bool TypedRuns::contains(std::optional<platform::ProcessIdentifier> process) const {
    return std::ranges::any_of(runs_, [&](const Run& run) { return run.process == process; });
}

std::vector<TypedText> TypedRuns::takeTexts() {
    std::optional<Run> rest;
    if (!runs_.empty() && isHighSurrogate(runs_.back().units.back())) {
        rest = Run{runs_.back().process, {runs_.back().units.back()}};
        runs_.back().units.pop_back();
    }
    std::vector<TypedText> texts = takeEverything();
    if (rest) {
        runs_.push_back(std::move(*rest));
    }
    return texts;
}

std::vector<TypedText> TypedRuns::takeEverything() {
    std::vector<TypedText> texts;
    for (const Run& run : std::exchange(runs_, {})) {
        if (std::u32string characters = charactersOf(run.units); !characters.empty()) {
            texts.push_back({run.process, std::move(characters)});
        }
    }
    return texts;
}

}  // namespace tarvik::linuxdesktop
