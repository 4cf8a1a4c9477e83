// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarvik::linuxdesktop {

/// The parts of an absolute wss URL.
struct WebSocketUrl {
    /// A name or an address; an IPv6 address has no brackets.
    std::string host;
    std::uint16_t port = 443;
    /// Path and query exactly as in the URL; "/" when the URL has no path.
    std::string target;

    /// Empty when `text` is not an absolute wss URL. A URL with user information, a fragment or an
    /// invalid character is refused too.
    static std::optional<WebSocketUrl> parse(std::string_view text);

    /// The value of the Host header.
    std::string hostHeader() const;
};

}  // namespace tarvik::linuxdesktop
