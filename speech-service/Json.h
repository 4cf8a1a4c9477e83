// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace tarvik::service {

/// A UTF-8 text as a JSON string in ASCII, with its quotes. Invalid bytes become U+FFFD.
std::string jsonString(std::string_view text);

/// A number as JSON with at most three decimals.
std::string jsonNumber(double number);

}  // namespace tarvik::service
