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

// What lies between the values of the system and those of the contracts. Any thread.
namespace tarvik::macdesktop {

/// A delay in the nanoseconds of Dispatch. One that is no number or has passed is 0; one that is
/// longer than can be counted is the longest there is.
std::int64_t nanoseconds(Seconds delay);

/// The kinds of messages as NSURLSession counts them.
inline constexpr std::int64_t dataMessageType = 0;
inline constexpr std::int64_t stringMessageType = 1;

platform::WebSocketMessage::Kind messageKind(std::int64_t messageType);

/// Whether every value can stand in a header of a request: it has no control character beside tab.
bool canStandInHeader(const std::vector<std::pair<std::string, std::string>>& headerFields);

/// A failure in the words of the system, which may be several lines, as the one line of a log.
Error errorInOneLine(std::int64_t code, std::string_view localizedDescription);

/// What a modal alert with `buttons` buttons answers for `response`: the button's code, or 0 when
/// it was closed otherwise.
int alertCode(std::int64_t response, std::size_t buttons);

/// Whether a view with this layout takes the width that is left over in its row.
bool takesSpareWidth(const platform::ViewLayout& layout);

}  // namespace tarvik::macdesktop
