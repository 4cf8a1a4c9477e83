#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/conformance/X11World.h"

namespace tarvik::conformance {

struct NamedX11World {
    std::string name;
    X11WorldMaker make;
};

inline auto everyX11World() {
    return testing::Values(NamedX11World{"Simulated", makeSimulatedX11World},
                           NamedX11World{"X11", makeRealX11World});
}

inline std::string x11WorldName(const testing::TestParamInfo<NamedX11World>& info) {
    return info.param.name;
}

}  // namespace tarvik::conformance
