// SPDX-License-Identifier: MIT

#include "speech-service/NumberWords.h"

#include <algorithm>
#include <array>

namespace tarvik::service {

namespace {

constexpr std::array<std::string_view, 20> small{
    "zero",     "one",     "two",     "three",     "four",     "five",    "six",
    "seven",    "eight",   "nine",    "ten",       "eleven",   "twelve",  "thirteen",
    "fourteen", "fifteen", "sixteen", "seventeen", "eighteen", "nineteen"};

constexpr std::array<std::string_view, 20> smallOrdinals{
    "",           "first",     "second",    "third",       "fourth",     "fifth",     "sixth",
    "seventh",    "eighth",    "ninth",     "tenth",       "eleventh",   "twelfth",   "thirteenth",
    "fourteenth", "fifteenth", "sixteenth", "seventeenth", "eighteenth", "nineteenth"};

constexpr std::array<std::string_view, 10> tens{"",      "",      "twenty",  "thirty", "forty",
                                                "fifty", "sixty", "seventy", "eighty", "ninety"};

constexpr std::array<std::string_view, 10> tenOrdinals{
    "",         "",         "twentieth",  "thirtieth", "fortieth",
    "fiftieth", "sixtieth", "seventieth", "eightieth", "ninetieth"};

struct Scale {
    std::string_view name;
    long value;
};
constexpr std::array<Scale, 3> scales{
    {{"billion", 1'000'000'000}, {"million", 1'000'000}, {"thousand", 1'000}}};

template <std::size_t Size>
std::optional<long> indexIn(const std::array<std::string_view, Size>& names, SpokenWords words) {
    if (words.empty() || words.front().empty()) {
        return std::nullopt;
    }
    const auto found = std::find(names.begin(), names.end(), words.front());
    return found == names.end() ? std::nullopt : std::optional<long>(found - names.begin());
}

// "zero" is no part of a longer number.
std::optional<SpokenNumber> partBelow100(SpokenWords words) {
    const std::optional<SpokenNumber> part = spokenBelow100(words);
    return part && part->value > 0 ? part : std::nullopt;
}

// Adds the words after "hundred" or a scale, which "and" may join.
void addRest(SpokenNumber& number, SpokenWords words,
             std::optional<SpokenNumber> (*parse)(SpokenWords)) {
    const bool hasAnd = words.size() > number.length && words[number.length] == "and";
    const std::size_t skipped = number.length + (hasAnd ? 1 : 0);
    if (const std::optional<SpokenNumber> rest = parse(words.subspan(skipped))) {
        number = {number.value + rest->value, skipped + rest->length};
    }
}

std::optional<SpokenNumber> partBelow1000(SpokenWords words) {
    std::optional<SpokenNumber> number = partBelow100(words);
    if (number && words.size() > number->length && words[number->length] == "hundred") {
        number = {number->value * 100, number->length + 1};
        addRest(*number, words, partBelow100);
    }
    return number;
}

}  // namespace

std::optional<int> spokenDigit(std::string_view word) {
    if (word == "oh") {
        return 0;
    }
    const std::optional<long> index = indexIn(small, {&word, 1});
    return index && *index < 10 ? std::optional(static_cast<int>(*index)) : std::nullopt;
}

std::optional<SpokenNumber> spokenBelow100(SpokenWords words) {
    if (const std::optional<long> value = indexIn(small, words)) {
        return SpokenNumber{*value, 1};
    }
    const std::optional<long> ten = indexIn(tens, words);
    if (!ten) {
        return std::nullopt;
    }
    const std::optional<long> unit = indexIn(small, words.subspan(1));
    if (unit && *unit > 0 && *unit < 10) {
        return SpokenNumber{*ten * 10 + *unit, 2};
    }
    return SpokenNumber{*ten * 10, 1};
}

std::optional<SpokenNumber> spokenCardinal(SpokenWords words) {
    SpokenNumber number;
    for (const Scale& scale : scales) {
        const SpokenWords rest = words.subspan(number.length);
        const std::optional<SpokenNumber> part = partBelow1000(rest);
        if (part && rest.size() > part->length && rest[part->length] == scale.name) {
            number.value += part->value * scale.value;
            number.length += part->length + 1;
        }
    }
    if (number.length > 0) {
        addRest(number, words, partBelow1000);
        return number;
    }
    const std::optional<SpokenNumber> part = partBelow1000(words);
    return part ? part : spokenBelow100(words);
}

std::optional<SpokenNumber> spokenYear(SpokenWords words) {
    const std::optional<SpokenNumber> century = spokenBelow100(words);
    if (!century || century->length != 1 || century->value < 13 || century->value > 20 ||
        words.size() < 2) {
        return std::nullopt;
    }
    const SpokenWords rest = words.subspan(1);
    if (rest.front() == "oh" && rest.size() > 1) {
        const std::optional<int> digit = spokenDigit(rest[1]);
        return digit ? std::optional(SpokenNumber{century->value * 100 + *digit, 3}) : std::nullopt;
    }
    const std::optional<SpokenNumber> year = spokenBelow100(rest);
    if (!year || year->value < 10) {
        return std::nullopt;
    }
    return SpokenNumber{century->value * 100 + year->value, 1 + year->length};
}

std::optional<SpokenNumber> spokenOrdinal(SpokenWords words) {
    if (const std::optional<long> value = indexIn(smallOrdinals, words)) {
        return SpokenNumber{*value, 1};
    }
    if (const std::optional<long> ten = indexIn(tenOrdinals, words)) {
        return SpokenNumber{*ten * 10, 1};
    }
    const std::optional<long> ten = indexIn(tens, words);
    const std::optional<long> unit = ten ? indexIn(smallOrdinals, words.subspan(1)) : std::nullopt;
    if (!unit || *unit >= 10) {
        return std::nullopt;
    }
    return SpokenNumber{*ten * 10 + *unit, 2};
}

}  // namespace tarvik::service
