// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace tarvik::platform {

/// The system log.
class Log {
  public:
    virtual ~Log() = default;

    /// Writes one line (UTF-8, without a line break). Any thread. Lines of one thread keep their
    /// order.
    virtual void write(std::string_view line) = 0;
};

}  // namespace tarvik::platform
