// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/conformance/system/SystemWorld.h"

namespace tarvik::tests {

struct NamedSystemWorld {
    std::string name;
    SystemWorldMaker make;
};

/// A test that runs in every world.
class SystemConformance : public testing::TestWithParam<NamedSystemWorld> {
  protected:
    SystemConformance() : world(GetParam().make()) {}

    std::unique_ptr<SystemWorld> world;
};

inline auto everySystemWorld() {
    return testing::Values(NamedSystemWorld{"Simulated", makeSimulatedSystemWorld},
                           NamedSystemWorld{"Real", makeRealSystemWorld});
}

inline std::string systemWorldName(const testing::TestParamInfo<NamedSystemWorld>& info) {
    return info.param.name;
}

}  // namespace tarvik::tests
