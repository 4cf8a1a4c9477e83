// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <memory>

namespace tarvik::linuxdesktop {

struct XcbDeleter {
    void operator()(void* answer) const { std::free(answer); }
};

/// An answer or event from the X server; empty when the server refused.
template <typename Answer>
using XcbReply = std::unique_ptr<Answer, XcbDeleter>;

}  // namespace tarvik::linuxdesktop
