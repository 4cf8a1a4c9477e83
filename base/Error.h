// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace tarvik {

/// A failure reported by a platform service.
struct Error {
    /// The platform's number for the failure (an errno value, a close code, an HTTP status); 0 when
    /// there is none.
    int code = 0;
    /// One line for the log. Texts of our own backends end without a full stop.
    std::string localizedDescription;
};

}  // namespace tarvik
