// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/Authority.h"

#include <charconv>

namespace tarvik::linuxdesktop {

namespace {

std::optional<std::uint16_t> parsePort(std::string_view text) {
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error != std::errc() || end != text.data() + text.size() || port == 0) {
        return std::nullopt;
    }
    return port;
}

}  // namespace

std::optional<Authority> Authority::parse(std::string_view text) {
    Authority authority;
    if (const auto at = text.rfind('@'); at != std::string_view::npos) {
        authority.userInfo = text.substr(0, at);
        text.remove_prefix(at + 1);
    }
    std::string_view afterHost;
    if (text.starts_with('[')) {
        const auto end = text.find(']');
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        authority.host = text.substr(1, end - 1);
        afterHost = text.substr(end + 1);
    } else {
        const auto end = std::min(text.find(':'), text.size());
        authority.host = text.substr(0, end);
        afterHost = text.substr(end);
    }
    if (authority.host.empty()) {
        return std::nullopt;
    }
    if (!afterHost.empty()) {
        authority.port = afterHost.front() == ':' ? parsePort(afterHost.substr(1)) : std::nullopt;
        if (!authority.port) {
            return std::nullopt;
        }
    }
    return authority;
}

std::string hostWithPort(std::string_view host, std::uint16_t port) {
    return bracketed(host) + ":" + std::to_string(port);
}

std::string bracketed(std::string_view host) {
    std::string text(host);
    return host.find(':') == std::string_view::npos ? text : "[" + text + "]";
}

}  // namespace tarvik::linuxdesktop
