#pragma once

#include "platform/Log.h"
#include "platform/linux/websocket/ProxySettings.h"
#include "platform/linux/websocket/SessionTiming.h"
#include "platform/linux/websocket/TrustStore.h"

namespace tarvik::linuxdesktop {

/// What all sessions of a service share.
struct SessionSurroundings {
    /// Only on session threads, which end before the service.
    platform::Log& log;
    SessionTiming timing;
    ProxySettings proxies;
    TrustStore trustStore;
};

}  // namespace tarvik::linuxdesktop
