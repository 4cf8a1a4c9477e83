// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarvik::linuxdesktop {

/// The authority of a URL (RFC 3986, 3.2): user information, host and port.
struct Authority {
    /// Percent-encoded, as in the URL; empty when the URL has none.
    std::string userInfo;
    /// A name or an address; an IPv6 address has no brackets.
    std::string host;
    std::optional<std::uint16_t> port;

    /// Parses "[user@]host[:port]". Empty when `text` is malformed.
    static std::optional<Authority> parse(std::string_view text);
};

/// "host:port"; an IPv6 address gets brackets.
std::string hostWithPort(std::string_view host, std::uint16_t port);
/// `host` as in a URL or a Host header; an IPv6 address gets brackets.
std::string bracketed(std::string_view host);

}  // namespace tarvik::linuxdesktop
