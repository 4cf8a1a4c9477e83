#pragma once

#include <chrono>

namespace tarvik::linuxdesktop {

/// The delays of a session.
struct SessionTiming {
    /// How long a delegate is held after the end of its connection.
    std::chrono::milliseconds delegateLinger{10'000};
    /// How long the farewell of a connection may take before it is cut.
    std::chrono::milliseconds farewell{1'000};
};

}  // namespace tarvik::linuxdesktop
