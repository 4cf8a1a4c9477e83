#pragma once

#include <string>

namespace tarvik {

/// A failure reported by a platform service.
struct Error {
    /// The platform's own number for it (an errno value, a close code, an HTTP status); 0 when it
    /// has none.
    int code = 0;
    /// One line for a log; without a trailing full stop where the words are the backend's own.
    std::string localizedDescription;
};

}  // namespace tarvik
