// SPDX-License-Identifier: MIT
#pragma once

#include <string>
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
          trustStore(options.authority, [this](const std::string& reason) {
              log.write("TarvikDictate: the authority in " + options.authority +
                        " is not trusted: " + reason);
          }) {}

    /// For session threads only: they end before the service, and the log outlives the service.
    platform::Log& log;
    const WebSocketOptions options;
    ProxySettings proxies;
    TrustStore trustStore;
    KnownAddresses knownAddresses;
};

}  // namespace tarvik::linuxdesktop
