#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"

namespace tarvik::linuxdesktop {

/// An HTTP proxy that tunnels.
struct Proxy {
    std::string host;
    std::uint16_t port = 80;
    /// The value of the Proxy-Authorization header; empty when it asks for none.
    std::string authorization;
};

/// Which connections go through which proxy.
class ProxySettings {
  public:
    /// `proxy` is a URL or "host:port"; an empty one means none. `exceptions` is a list, separated
    /// by commas or blanks, of hosts that are reached directly: names (with all names below them),
    /// addresses, networks ("10.0.0.0/8"), each with an optional port, or "*".
    ProxySettings(std::string proxy, std::string_view exceptions);

    /// As https_proxy and no_proxy say, or HTTPS_PROXY and NO_PROXY where those are not set.
    static ProxySettings fromEnvironment();

    /// The proxy for a connection, or nothing where it is direct; an error when the proxy is one
    /// that cannot be used.
    Result<std::optional<Proxy>> proxyFor(std::string_view host, std::uint16_t port) const;

  private:
    bool isException(std::string_view host, std::uint16_t port) const;

    std::string proxy_;
    std::vector<std::string> exceptions_;
};

}  // namespace tarvik::linuxdesktop
