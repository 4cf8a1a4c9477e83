// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>

#include "platform/Log.h"
#include "platform/linux/websocket/KnownAddresses.h"
#include "platform/linux/websocket/ProxySettings.h"
#include "platform/linux/websocket/TrustStore.h"

namespace tarvik::linuxdesktop {

/// The settings and services that all sessions of a service share.
struct SessionContext {
    /// For session threads only: they end before the service, and the log outlives the service.
    platform::Log& log;
    /// The maximum duration of a close handshake. The connection is aborted after it.
    std::chrono::milliseconds closeTimeout;
    /// How long a session holds its delegate after the end of the connection.
    std::chrono::milliseconds delegateHoldTime;
    ProxySettings proxies;
    TrustStore trustStore;
    KnownAddresses knownAddresses;
};

}  // namespace tarvik::linuxdesktop
