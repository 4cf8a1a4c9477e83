// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/Error.h"
#include "base/Time.h"
#include "platform/Views.h"
#include "platform/WebSocket.h"

// Conversions between the values of the system and those of the contracts. Any thread.
namespace tarvik::macdesktop {

/// `delay` in the nanoseconds of Dispatch: 0 for a negative delay and for NaN, the largest count
/// for a longer delay.
std::int64_t nanoseconds(Seconds delay);

/// NSURLSession's numbers for the kinds of messages.
inline constexpr std::int64_t dataMessageType = 0;
inline constexpr std::int64_t stringMessageType = 1;

platform::WebSocketMessage::Kind messageKind(std::int64_t messageType);

/// Whether every value can stand in a request header: no control characters other than tab.
bool canStandInHeader(const std::vector<std::pair<std::string, std::string>>& headerFields);

/// An error of the system. The lines of its description become the one line of a log.
Error errorInOneLine(std::int64_t code, std::string_view localizedDescription);

/// The answer code of a modal alert with `buttons` buttons: the code of the pressed button, or 0
/// for a `response` that is no button's.
int alertCode(std::int64_t response, std::size_t buttons);

/// Whether a view with this layout takes the spare width of its row.
bool takesSpareWidth(const platform::ViewLayout& layout);

/// How strongly a view with this layout keeps its width. A layout without a priority gets one above
/// that of the views which take the spare width. AppKit itself would give a button the same as
/// those.
platform::LayoutPriority contentHugging(const platform::ViewLayout& layout);

}  // namespace tarvik::macdesktop
