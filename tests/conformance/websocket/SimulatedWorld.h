// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "tests/conformance/websocket/WebSocketWorld.h"

namespace tarvik::tests {

std::unique_ptr<WebSocketWorld> makeSimulatedWebSocketWorld();

}  // namespace tarvik::tests
