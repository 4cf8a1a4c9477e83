// SPDX-License-Identifier: MIT

#include "speech-service/Figures.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "speech-service/Calendar.h"
#include "speech-service/NumberWords.h"

namespace tarvik::service {

namespace {

/// What to write for the first words of a sequence, and how many words that takes.
struct Figure {
    std::string text;
    std::size_t length = 0;
};

std::string_view at(SpokenWords words, std::size_t index) {
    return index < words.size() ? words[index] : std::string_view();
}

std::string grouped(long value) {
    std::string text = std::to_string(value);
    if (text.size() >= 5) {
        for (std::size_t end = text.size() - 3;
             end > 0 && end<text.size(); end = end> 3 ? end - 3 : 0) {
            text.insert(end, ",");
        }
    }
    return text;
}

std::string twoDigits(long value) {
    return (value < 10 ? "0" : "") + std::to_string(value);
}

std::string ordinalText(long value) {
    constexpr std::array<std::string_view, 4> endings{"th", "st", "nd", "rd"};
    const auto unit = static_cast<std::size_t>(value % 10);
    const bool isTeen = value / 10 % 10 == 1;
    return std::to_string(value) + std::string(endings[isTeen || unit > 3 ? 0 : unit]);
}

/// Three and more digits that were spelled: a telephone number, a code.
std::optional<Figure> digitsAt(SpokenWords words) {
    Figure figure;
    while (const std::optional<int> digit = spokenDigit(at(words, figure.length))) {
        figure.text += std::to_string(*digit);
        ++figure.length;
    }
    // "oh" at the end is a sigh.
    return figure.length >= 3 && words[figure.length - 1] != "oh" && words.front() != "oh"
               ? std::optional(figure)
               : std::nullopt;
}

/// "AM" or "PM" and the number of its words.
std::optional<Figure> halfOfDayAt(SpokenWords words) {
    const std::string_view first = at(words, 0);
    if (first == "a.m." || first == "a.m") {
        return Figure{"AM", 1};
    }
    if (first == "p.m." || first == "p.m" || first == "pm") {
        return Figure{"PM", 1};
    }
    if ((first == "a" || first == "p") && (at(words, 1) == "m" || at(words, 1) == "m.")) {
        return Figure{first == "a" ? "AM" : "PM", 2};
    }
    return std::nullopt;
}

std::optional<SpokenNumber> minutesAt(SpokenWords words) {
    if (at(words, 0) == "oh") {
        const std::optional<int> digit = spokenDigit(at(words, 1));
        return digit && *digit > 0 ? std::optional(SpokenNumber{*digit, 2}) : std::nullopt;
    }
    const std::optional<SpokenNumber> minutes = spokenBelow100(words);
    return minutes && minutes->value >= 10 && minutes->value < 60 ? minutes : std::nullopt;
}

bool isBeforeTime(std::string_view word) {
    constexpr std::array<std::string_view, 8> names{"at",     "by",    "until", "till",
                                                    "before", "after", "since", "around"};
    return std::find(names.begin(), names.end(), word) != names.end();
}

std::optional<Figure> timeAt(SpokenWords words, std::string_view before) {
    const std::optional<SpokenNumber> hour = spokenBelow100(words);
    if (!hour || hour->length != 1 || hour->value < 1 || hour->value > 12) {
        return std::nullopt;
    }
    const std::optional<SpokenNumber> minutes = minutesAt(words.subspan(1));
    const std::size_t length = 1 + (minutes ? minutes->length : 0);
    const std::string text =
        std::to_string(hour->value) + (minutes ? ":" + twoDigits(minutes->value) : "");
    if (const std::optional<Figure> half = halfOfDayAt(words.subspan(length))) {
        return Figure{text + " " + half->text, length + half->length};
    }
    const bool isTime = minutes ? isBeforeTime(before) : at(words, 1) == "o'clock";
    return isTime ? std::optional(Figure{text, length}) : std::nullopt;
}

/// A day after the name of a month, with its year.
std::optional<Figure> dayAt(SpokenWords words, std::string_view before) {
    if (!isMonthBeforeDay(before)) {
        return std::nullopt;
    }
    const std::optional<SpokenNumber> ordinal = spokenOrdinal(words);
    const std::optional<SpokenNumber> day = ordinal ? ordinal : spokenBelow100(words);
    if (!day || day->value < 1 || day->value > 31 || spokenYear(words)) {
        return std::nullopt;
    }
    return Figure{ordinal ? ordinalText(day->value) : std::to_string(day->value), day->length};
}

std::optional<Figure> ordinalAt(SpokenWords words) {
    const std::optional<SpokenNumber> ordinal = spokenOrdinal(words);
    if (!ordinal) {
        return std::nullopt;
    }
    const bool isDate =
        at(words, ordinal->length) == "of" && isMonthBeforeDay(at(words, ordinal->length + 1));
    if (ordinal->value < 10 && !isDate) {
        return std::nullopt;
    }
    return Figure{ordinalText(ordinal->value), ordinal->length};
}

/// The digits after "point".
std::string decimalsAt(SpokenWords words) {
    std::string decimals;
    if (at(words, 0) == "point") {
        while (const std::optional<int> digit = spokenDigit(at(words, 1 + decimals.size()))) {
            decimals += std::to_string(*digit);
        }
    }
    return decimals;
}

Figure withCents(Figure amount, SpokenWords words) {
    const bool hasAnd = at(words, amount.length) == "and";
    const std::size_t start = amount.length + (hasAnd ? 1 : 0);
    const std::optional<SpokenNumber> cents =
        start < words.size() ? spokenBelow100(words.subspan(start)) : std::nullopt;
    if (cents && at(words, start + cents->length) == "cents") {
        return {amount.text + "." + twoDigits(cents->value), start + cents->length + 1};
    }
    return amount;
}

std::optional<Figure> withUnit(const std::string& number, std::size_t length, SpokenWords words) {
    const std::string_view unit = at(words, length);
    if (unit == "percent") {
        return Figure{number + "%", length + 1};
    }
    if (unit == "dollars" || unit == "dollar") {
        return withCents({"$" + number, length + 1}, words);
    }
    if (unit == "euros" || unit == "euro") {
        return withCents({"€" + number, length + 1}, words);
    }
    return std::nullopt;
}

std::optional<Figure> numberAt(SpokenWords words) {
    if (const std::optional<SpokenNumber> year = spokenYear(words)) {
        return Figure{std::to_string(year->value), year->length};
    }
    const std::optional<SpokenNumber> number = spokenCardinal(words);
    if (!number) {
        return std::nullopt;
    }
    const std::string decimals = decimalsAt(words.subspan(number->length));
    const std::string text = grouped(number->value) + (decimals.empty() ? "" : "." + decimals);
    const std::size_t length = number->length + (decimals.empty() ? 0 : 1 + decimals.size());
    if (const std::optional<Figure> amount = withUnit(text, length, words)) {
        return amount;
    }
    return number->value >= 10 || !decimals.empty() ? std::optional(Figure{text, length})
                                                    : std::nullopt;
}

std::optional<Figure> figureAt(SpokenWords words, std::string_view before) {
    if (std::optional<Figure> time = timeAt(words, before)) {
        return time;
    }
    if (std::optional<Figure> digits = digitsAt(words)) {
        return digits;
    }
    if (std::optional<Figure> day = dayAt(words, before)) {
        return day;
    }
    if (std::optional<Figure> ordinal = ordinalAt(words)) {
        return ordinal;
    }
    return numberAt(words);
}

WrittenWord joined(std::span<const WrittenWord> words, std::string written) {
    WrittenWord result{words.front().spoken, std::move(written)};
    for (const WrittenWord& word : words.subspan(1)) {
        result.spoken.text += " " + word.spoken.text;
        result.spoken.confidence = std::min(result.spoken.confidence, word.spoken.confidence);
    }
    result.spoken.end = words.back().spoken.end;
    return result;
}

}  // namespace

std::vector<WrittenWord> withFigures(const std::vector<WrittenWord>& words) {
    std::vector<std::string_view> texts;
    for (const WrittenWord& word : words) {
        texts.push_back(word.spoken.text);
    }
    std::vector<WrittenWord> result;
    for (std::size_t i = 0; i < words.size();) {
        const std::string_view before = i > 0 ? texts[i - 1] : std::string_view();
        if (std::optional<Figure> figure = figureAt(SpokenWords(texts).subspan(i), before)) {
            // A month before its day gets its capital even if its name is also a verb.
            if (!isCalendarName(before) && dayAt(SpokenWords(texts).subspan(i), before)) {
                result.back().written.front() =
                    static_cast<char>(result.back().written.front() & ~0x20);
            }
            result.push_back(joined(std::span(words).subspan(i, figure->length), figure->text));
            i += figure->length;
        } else {
            result.push_back(words[i]);
            ++i;
        }
    }
    return result;
}

}  // namespace tarvik::service
