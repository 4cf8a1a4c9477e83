#pragma once

#include <cstdlib>

namespace tarvik {

/// What a pointer refers to; an empty one is a programming error and stops the process.
template <typename Pointer>
auto& required(const Pointer& pointer) {
    if (!pointer) {
        std::abort();
    }
    return *pointer;
}

}  // namespace tarvik
