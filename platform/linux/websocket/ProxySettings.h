// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"

namespace tarvik::linuxdesktop {

/// An HTTP proxy that supports CONNECT.
struct Proxy {
    std::string host;
    std::uint16_t port = 80;
    /// The value of the Proxy-Authorization header; empty when the proxy needs no credentials.
    std::string authorization;
};

/// Selects the proxy of each connection.
class ProxySettings {
  public:
    /// `proxy` is a URL or "host:port"; empty means no proxy. `exceptions` lists the hosts for
    /// direct connections, separated by commas or blanks. An entry is a name (which includes its
    /// subdomains), an address or a network ("10.0.0.0/8"), with an optional port. "*" is every
    /// host.
    ProxySettings(std::string proxy, std::string_view exceptions);

    /// The settings in https_proxy and no_proxy, or in HTTPS_PROXY and NO_PROXY when those are not
    /// set.
    static ProxySettings fromEnvironment();

    /// The proxy for a connection to `host` and `port`. Empty for a direct connection. An error
    /// when the proxy's URL is malformed or its scheme is not supported.
    Result<std::optional<Proxy>> proxyFor(std::string_view host, std::uint16_t port) const;

  private:
    bool isException(std::string_view host, std::uint16_t port) const;

    std::string proxy_;
    std::vector<std::string> exceptions_;
};

}  // namespace tarvik::linuxdesktop
