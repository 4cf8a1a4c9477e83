// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/WebSocketUrl.h"

#include <algorithm>
#include <cctype>

#include "platform/linux/websocket/Authority.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr std::string_view scheme = "wss://";
constexpr std::uint16_t schemePort = 443;

bool startsWithScheme(std::string_view text) {
    return text.size() > scheme.size() &&
           std::equal(scheme.begin(), scheme.end(), text.begin(), [](char expected, char found) {
               return expected == std::tolower(static_cast<unsigned char>(found));
           });
}

bool canStandInUrl(char character) {
    return character > 0x20 && character < 0x7F;
}

}  // namespace

std::optional<WebSocketUrl> WebSocketUrl::parse(std::string_view text) {
    if (!startsWithScheme(text) || !std::all_of(text.begin(), text.end(), canStandInUrl) ||
        text.find('#') != std::string_view::npos) {
        return std::nullopt;
    }
    text.remove_prefix(scheme.size());
    const auto targetStart = std::min(text.find_first_of("/?"), text.size());
    const auto authority = Authority::parse(text.substr(0, targetStart));
    if (!authority || !authority->userInfo.empty()) {
        return std::nullopt;
    }
    WebSocketUrl url;
    url.host = authority->host;
    url.port = authority->port.value_or(schemePort);
    url.target = text.substr(targetStart);
    if (!url.target.starts_with('/')) {
        url.target.insert(0, "/");
    }
    return url;
}

std::string WebSocketUrl::hostHeader() const {
    return port == schemePort ? bracketed(host) : hostWithPort(host, port);
}

}  // namespace tarvik::linuxdesktop
