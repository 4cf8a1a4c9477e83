// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

#include "platform/Log.h"
#include "platform/linux/websocket/KnownAddresses.h"
#include "platform/linux/websocket/ProxySettings.h"
#include "platform/linux/websocket/TrustStore.h"
#include "platform/linux/websocket/WebSocketOptions.h"

namespace tarvik::linuxdesktop {

/// The settings and services that all sessions of a service share.
struct SessionContext {
    SessionContext(platform::Log& sessionLog, WebSocketOptions sessionOptions)
        : log(sessionLog),
          options(std::move(sessionOptions)),
          proxies(ProxySettings::fromEnvironment()),
          trustStore(options.authority) {}

    /// For session threads only: they end before the service, and the log outlives the service.
    platform::Log& log;
    const WebSocketOptions options;
    ProxySettings proxies;
    TrustStore trustStore;
    KnownAddresses knownAddresses;
};

}  // namespace tarvik::linuxdesktop
