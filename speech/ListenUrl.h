// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/UserDefaults.h"

namespace tarvik {

/// The host to stream to, with an optional ":port": the unchanged value of the user default
/// "deepgramHost". The built-in host when there is no value or an empty one.
///
/// A value that is no text gives a text that is no host: the user has named a service, so the key
/// is for no other one.
std::string streamingHost(const platform::UserDefaults& defaults);

/// `host` for a log line: at most 100 characters, without user information and without a query.
std::string hostForLog(std::string_view host);

/// The URL of a stream of mono 16-bit audio at `sampleRate` hertz. Nothing when `host` is not a
/// valid host with an optional port.
std::optional<std::string> listenUrl(const std::string& host, std::int64_t sampleRate);

}  // namespace tarvik
