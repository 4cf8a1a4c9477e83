// SPDX-License-Identifier: MIT

#include "speech/ListenUrl.h"

#include <algorithm>

#include "base/BuildConstants.h"
#include "base/Text.h"

namespace tarvik {

namespace {

constexpr std::string_view hostKey = "deepgramHost";

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool isAlphanumeric(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

constexpr bool isPort(std::string_view text) {
    constexpr int maxPort = 65535;
    int port = 0;
    for (const char c : text) {
        port = isDigit(c) && port <= maxPort ? port * 10 + (c - '0') : maxPort + 1;
    }
    return port > 0 && port <= maxPort;
}

// An IPv6 address is in brackets, because it contains colons.
constexpr bool isBracketedAddress(std::string_view name) {
    return name.size() > 2 && name.front() == '[' && name.back() == ']' &&
           std::all_of(name.begin() + 1, name.end() - 1, [](char c) {
               return std::string_view("0123456789abcdefABCDEF:.").find(c) !=
                      std::string_view::npos;
           });
}

constexpr bool isHostName(std::string_view name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return isAlphanumeric(c) || c == '-' || c == '.' || c == '_';
    });
}

constexpr bool isHostAndPort(std::string_view host) {
    const std::size_t colon = host.rfind(':');
    const bool hasPort = colon != std::string_view::npos && host.find(']', colon) == host.npos;
    const std::string_view name = hasPort ? host.substr(0, colon) : host;
    if (hasPort && !isPort(host.substr(colon + 1))) {
        return false;
    }
    return isHostName(name) || isBracketedAddress(name);
}

static_assert(isHostAndPort(builtInStreamingHost), "TARVIK_STREAMING_HOST is no host");

}  // namespace

std::string streamingHost(const platform::UserDefaults& defaults) {
    const std::optional<std::string> host = defaults.stringForKey(hostKey);
    if (host) {
        return host->empty() ? builtInStreamingHost : *host;
    }
    return defaults.hasObjectForKey(hostKey) ? "(not a text)" : builtInStreamingHost;
}

std::string hostForLog(std::string_view host) {
    constexpr std::size_t maxCharacters = 100;
    std::string text;
    if (const std::size_t at = host.rfind('@'); at != host.npos) {
        text = "…";
        host.remove_prefix(at);
    }
    text += host.substr(0, host.find_first_of("?#"));
    return shortened(text, maxCharacters);
}

std::optional<std::string> listenUrl(const std::string& host, std::int64_t sampleRate) {
    if (!isHostAndPort(host)) {
        return std::nullopt;
    }
    return "wss://" + host +
           "/v1/listen?model=nova-3&smart_format=true&punctuate=true&interim_results=true"
           "&mip_opt_out=true&encoding=linear16&sample_rate=" +
           std::to_string(sampleRate) + "&channels=1";
}

}  // namespace tarvik
