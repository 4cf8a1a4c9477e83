// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>

namespace tarvik {

/// The object that `pointer` refers to. An empty pointer is a programming error and aborts the
/// process.
template <typename Pointer>
auto& required(const Pointer& pointer) {
    if (!pointer) {
        std::abort();
    }
    return *pointer;
}

}  // namespace tarvik
