#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarvik::linuxdesktop {

/// The part of a URL that says where: user information, host and port.
struct Authority {
    /// As it stands in the URL, percent-encoded; empty when there is none.
    std::string userInformation;
    /// A name or an address, an IPv6 address without its brackets.
    std::string host;
    std::optional<std::uint16_t> port;

    /// Takes "[user@]host[:port]" apart; nothing when it is malformed.
    static std::optional<Authority> parse(std::string_view text);
};

/// `host` and `port` as one text; an IPv6 address gets brackets.
std::string hostWithPort(std::string_view host, std::uint16_t port);
/// `host` as a URL or a Host header spells it; an IPv6 address gets brackets.
std::string bracketed(std::string_view host);

}  // namespace tarvik::linuxdesktop
