// SPDX-License-Identifier: MIT

#include "tests/linux/websocket/DescriptorShortage.h"

#include <gtest/gtest.h>

namespace tarvik::tests {

DescriptorShortage::DescriptorShortage() {
    EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &before_), 0);
    const rlimit none{0, before_.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
}

DescriptorShortage::~DescriptorShortage() {
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &before_), 0);
}

}  // namespace tarvik::tests
