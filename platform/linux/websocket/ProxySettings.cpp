// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/ProxySettings.h"

#include <openssl/evp.h>

#include <algorithm>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/network_v4.hpp>
#include <boost/asio/ip/network_v6.hpp>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <utility>

#include "platform/linux/websocket/Authority.h"

namespace tarvik::linuxdesktop {

namespace {

namespace ip = boost::asio::ip;

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char character) {
        return static_cast<char>(std::tolower(character));
    });
    return lower;
}

std::string percentDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t index = 0; index < text.size(); ++index) {
        unsigned value = 0;
        const char* digits = text.data() + index + 1;
        if (text[index] == '%' && index + 2 < text.size() &&
            std::from_chars(digits, digits + 2, value, 16).ptr == digits + 2) {
            decoded.push_back(static_cast<char>(value));
            index += 2;
        } else {
            decoded.push_back(text[index]);
        }
    }
    return decoded;
}

std::string basicAuthorization(std::string_view userInfo) {
    const auto colon = std::min(userInfo.find(':'), userInfo.size());
    const auto encodedPassword = userInfo.substr(std::min(colon + 1, userInfo.size()));
    const std::string credentials =
        percentDecoded(userInfo.substr(0, colon)) + ":" + percentDecoded(encodedPassword);
    std::vector<unsigned char> bytes(credentials.begin(), credentials.end());
    std::vector<unsigned char> encoded(4 * (bytes.size() / 3 + 1) + 1);
    const int length =
        EVP_EncodeBlock(encoded.data(), bytes.data(), static_cast<int>(bytes.size()));
    return "Basic " + std::string(encoded.begin(), encoded.begin() + length);
}

std::string environment(const char* lowerName, const char* upperName) {
    const char* value = std::getenv(lowerName);
    if (value == nullptr) {
        value = std::getenv(upperName);
    }
    return value == nullptr ? std::string() : std::string(value);
}

bool isInNetwork(const ip::address& address, const std::string& network) {
    boost::system::error_code error;
    if (address.is_v4()) {
        const auto parsed = ip::make_network_v4(network, error);
        return !error && ip::network_v4(address.to_v4(), parsed.prefix_length()).canonical() ==
                             parsed.canonical();
    }
    const auto parsed = ip::make_network_v6(network, error);
    return !error && ip::network_v6(address.to_v6(), parsed.prefix_length()).canonical() ==
                         parsed.canonical();
}

bool isNameWithin(std::string_view name, std::string_view domain) {
    return name == domain || (name.size() > domain.size() && name.ends_with(domain) &&
                              name[name.size() - domain.size() - 1] == '.');
}

/// Whether `entry`, an exception without a port, includes `host`. Both are in lower case.
bool covers(std::string entry, std::string_view host) {
    boost::system::error_code parseError;
    const auto address = ip::make_address(host, parseError);
    if (parseError) {
        entry.erase(0, entry.find_first_not_of('.'));
        return !entry.empty() && isNameWithin(host, entry);
    }
    if (entry.find('/') != std::string::npos) {
        return isInNetwork(address, entry);
    }
    boost::system::error_code error;
    return ip::make_address(entry, error) == address && !error;
}

}  // namespace

ProxySettings::ProxySettings(std::string proxy, std::string_view exceptions)
    : proxy_(std::move(proxy)) {
    while (!exceptions.empty()) {
        const auto end = std::min(exceptions.find_first_of(", \t"), exceptions.size());
        if (end > 0) {
            exceptions_.push_back(lowerCase(exceptions.substr(0, end)));
        }
        exceptions.remove_prefix(std::min(end + 1, exceptions.size()));
    }
}

ProxySettings ProxySettings::fromEnvironment() {
    return {environment("https_proxy", "HTTPS_PROXY"), environment("no_proxy", "NO_PROXY")};
}

bool ProxySettings::isException(std::string_view host, std::uint16_t port) const {
    const std::string name = lowerCase(host);
    return std::any_of(exceptions_.begin(), exceptions_.end(), [&](const std::string& entry) {
        if (entry == "*" || covers(entry, name)) {
            return true;
        }
        const auto authority = Authority::parse(entry);
        return authority && authority->port.value_or(port) == port && covers(authority->host, name);
    });
}

Result<std::optional<Proxy>> ProxySettings::proxyFor(std::string_view host,
                                                     std::uint16_t port) const {
    if (proxy_.empty() || isException(host, port)) {
        return std::optional<Proxy>();
    }
    std::string_view rest = proxy_;
    if (const auto schemeEnd = rest.find("://"); schemeEnd != std::string_view::npos) {
        const std::string scheme = lowerCase(rest.substr(0, schemeEnd));
        if (scheme != "http") {
            return Error{0, "Proxies of the kind " + scheme + " are not supported"};
        }
        rest.remove_prefix(schemeEnd + 3);
    }
    const auto authority = Authority::parse(rest.substr(0, rest.find('/')));
    if (!authority) {
        // The message leaves the text out: the text may hold a password.
        return Error{0, "The address of the proxy in https_proxy is malformed"};
    }
    Proxy proxy;
    proxy.host = authority->host;
    proxy.port = authority->port.value_or(proxy.port);
    if (!authority->userInfo.empty()) {
        proxy.authorization = basicAuthorization(authority->userInfo);
    }
    return std::optional(std::move(proxy));
}

}  // namespace tarvik::linuxdesktop
