// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace tarvik::service {

/// A number at the start of a sequence of words, and how many words it takes.
struct SpokenNumber {
    long value = 0;
    std::size_t length = 0;
};

using SpokenWords = std::span<const std::string_view>;

/// 0 to 9, "oh" included.
std::optional<int> spokenDigit(std::string_view word);

/// A number from 0 to 99, as in "twenty three".
std::optional<SpokenNumber> spokenBelow100(SpokenWords words);

/// A cardinal number, as in "three thousand two hundred and five".
std::optional<SpokenNumber> spokenCardinal(SpokenWords words);

/// A year from 1300 to 2099 in two halves, as in "nineteen eighty four" and "nineteen oh five".
std::optional<SpokenNumber> spokenYear(SpokenWords words);

/// An ordinal number from 1 to 99, as in "twenty first".
std::optional<SpokenNumber> spokenOrdinal(SpokenWords words);

}  // namespace tarvik::service
