// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace tarvik::tests {

/// Keys as the kernel numbers them.
struct KernelKeys {
    static constexpr std::uint32_t escapeKey = 1;
    static constexpr std::uint32_t backspaceKey = 14;
    static constexpr std::uint32_t controlKey = 29;
    static constexpr std::uint32_t aKey = 30;
    static constexpr std::uint32_t shiftKey = 42;
    static constexpr std::uint32_t altKey = 56;
    static constexpr std::uint32_t spaceKey = 57;
};

}  // namespace tarvik::tests
