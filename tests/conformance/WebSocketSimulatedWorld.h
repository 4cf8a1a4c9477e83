#pragma once

#include <memory>

#include "tests/conformance/WebSocketWorld.h"

namespace tarvik::conformance {

std::unique_ptr<WebSocketWorld> makeWebSocketSimulatedWorld();

}  // namespace tarvik::conformance
