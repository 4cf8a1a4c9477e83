// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/conformance/system/LoopWorld.h"

namespace tarvik::tests {

struct NamedLoopWorld {
    std::string name;
    LoopWorldMaker make;
};

/// A test that runs on every main loop.
class LoopConformance : public testing::TestWithParam<NamedLoopWorld> {
  protected:
    std::unique_ptr<LoopWorld> world = GetParam().make();
};

inline auto everyLoopWorld() {
    return testing::Values(NamedLoopWorld{"Simulated", makeSimulatedLoopWorld},
                           NamedLoopWorld{"Real", makeRealLoopWorld});
}

inline std::string loopWorldName(const testing::TestParamInfo<NamedLoopWorld>& info) {
    return info.param.name;
}

}  // namespace tarvik::tests
