// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/conformance/input/InputWorld.h"

namespace tarvik::tests {

struct NamedInputWorld {
    std::string name;
    InputWorldMaker make;
};

inline auto everyInputWorld() {
    return testing::Values(NamedInputWorld{"Simulated", makeSimulatedInputWorld},
                           NamedInputWorld{"X11", makeX11InputWorld});
}

inline std::string inputWorldName(const testing::TestParamInfo<NamedInputWorld>& info) {
    return info.param.name;
}

}  // namespace tarvik::tests
