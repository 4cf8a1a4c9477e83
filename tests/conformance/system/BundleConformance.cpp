// SPDX-License-Identifier: MIT

#include <optional>

#include "tests/conformance/system/SystemConformance.h"

namespace tarvik::tests {

namespace {

using BundleConformance = SystemConformance;

TEST_P(BundleConformance, TheVersionIsTextAndWhatIsMissingIsNothing) {
    const platform::Bundle& bundle = world->bundle();
    EXPECT_FALSE(
        bundle.objectForInfoDictionaryKey("CFBundleShortVersionString").value_or("").empty());
    EXPECT_EQ(bundle.objectForInfoDictionaryKey("TarvikUnknown"), std::nullopt);
    EXPECT_EQ(bundle.objectForInfoDictionaryKey(""), std::nullopt);
}

TEST_P(BundleConformance, WhatIsStartedIsAnAbsolutePathBehindACommand) {
    const platform::Bundle& bundle = world->bundle();
    EXPECT_TRUE(bundle.bundlePath().starts_with('/'));
    ASSERT_FALSE(bundle.openCommand().empty());
    EXPECT_NE(bundle.openCommand().back(), ' ');
}

INSTANTIATE_TEST_SUITE_P(Worlds, BundleConformance, everySystemWorld(), systemWorldName);

}  // namespace

}  // namespace tarvik::tests
