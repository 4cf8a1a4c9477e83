// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/UserDefaults.h"

namespace tarvik {

/// The host to stream to, with an optional ":port": the unchanged value of the user default
/// "deepgramHost", or the built-in host when there is none.
std::string streamingHost(const platform::UserDefaults& defaults);

/// The URL of a stream of mono 16-bit audio at `sampleRate` hertz. Nothing when `host` is not a
/// valid host with an optional port.
std::optional<std::string> listenUrl(const std::string& host, std::int64_t sampleRate);

}  // namespace tarvik
