// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/conformance/input/InputWorld.h"

namespace tarvik::tests {

struct NamedInputWorld {
    std::string name;
    InputWorldMaker make;
};

/// The worlds of the backend for which the program is built.
std::vector<NamedInputWorld> realInputWorlds();

inline auto everyInputWorld() {
    std::vector<NamedInputWorld> worlds = realInputWorlds();
    worlds.push_back({"Simulated", makeSimulatedInputWorld});
    return testing::ValuesIn(worlds);
}

inline std::string inputWorldName(const testing::TestParamInfo<NamedInputWorld>& info) {
    return info.param.name;
}

}  // namespace tarvik::tests
