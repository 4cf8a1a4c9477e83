// SPDX-License-Identifier: MIT

#include <optional>

#include "tests/conformance/system/SystemConformance.h"

namespace tarvik::tests {

namespace {

using LoginItemConformance = SystemConformance;

TEST_P(LoginItemConformance, RegisteringAndUnregisteringShowInTheStatus) {
    platform::LoginItemService& item = world->loginItem();
    EXPECT_EQ(item.status(), platform::LoginItemStatus::notRegistered);
    EXPECT_FALSE(item.registerItem());
    EXPECT_EQ(item.status(), platform::LoginItemStatus::enabled);
    EXPECT_FALSE(item.registerItem());
    EXPECT_EQ(item.status(), platform::LoginItemStatus::enabled);
    EXPECT_FALSE(item.unregisterItem());
    EXPECT_EQ(item.status(), platform::LoginItemStatus::notRegistered);
}

TEST_P(LoginItemConformance, AnErrorSaysWhyAndLeavesTheStatus) {
    world->refuseLoginItem();
    for (const std::optional<Error>& failure :
         {world->loginItem().registerItem(), world->loginItem().unregisterItem()}) {
        ASSERT_TRUE(failure);
        EXPECT_FALSE(failure->localizedDescription.empty());
        EXPECT_EQ(failure->localizedDescription.find('\n'), std::string::npos);
    }
    EXPECT_EQ(world->loginItem().status(), platform::LoginItemStatus::notRegistered);
}

INSTANTIATE_TEST_SUITE_P(Worlds, LoginItemConformance, everySystemWorld(), systemWorldName);

}  // namespace

}  // namespace tarvik::tests
