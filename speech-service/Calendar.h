// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace tarvik::service {

/// The English names of days and months that are nothing else. "march" and "may" are missing,
/// because they are verbs more often.
inline constexpr std::array<std::string_view, 17> calendarNames{
    "monday", "tuesday",   "wednesday", "thursday", "friday",  "saturday",
    "sunday", "january",   "february",  "april",    "june",    "july",
    "august", "september", "october",   "november", "december"};

inline bool isCalendarName(std::string_view word) {
    return std::find(calendarNames.begin(), calendarNames.end(), word) != calendarNames.end();
}

/// Whether `word` before a day means a month.
inline bool isMonthBeforeDay(std::string_view word) {
    const auto firstMonth = calendarNames.begin() + 7;
    return word == "march" || word == "may" ||
           std::find(firstMonth, calendarNames.end(), word) != calendarNames.end();
}

}  // namespace tarvik::service
