#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/UserDefaults.h"

namespace tarvik {

/// The host, with an optional ":port", to stream to: the one that the user has stored under
/// "deepgramHost", as it is, or the built-in one.
std::string streamingHost(const platform::UserDefaults& defaults);

/// The address of a stream of mono 16-bit audio at `sampleRate` hertz. Nothing when `host` cannot
/// be the host and port of an address.
std::optional<std::string> listenUrl(const std::string& host, std::int64_t sampleRate);

}  // namespace tarvik
