#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarvik::linuxdesktop {

/// An absolute wss URL in its parts.
struct WebSocketUrl {
    /// A name or an address, an IPv6 address without its brackets.
    std::string host;
    std::uint16_t port = 443;
    /// Path and query exactly as they stand in the URL; at least "/".
    std::string target;

    /// Nothing when `text` is no such URL, or has a user, a fragment or a character that a URL
    /// cannot have.
    static std::optional<WebSocketUrl> parse(std::string_view text);

    /// The value of the Host header.
    std::string hostHeader() const;
};

}  // namespace tarvik::linuxdesktop
