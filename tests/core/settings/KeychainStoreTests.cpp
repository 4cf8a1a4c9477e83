// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "settings/KeychainStore.h"
#include "tests/support/JoiningThread.h"
#include "tests/support/SimulatedPlatform.h"

namespace tarvik {
namespace {

constexpr auto storedUnder = "deepgramApiKey";

TEST(KeychainStore, HasNoKeyWhenNothingIsStored) {
    simulated::SimulatedPlatform platform;
    EXPECT_EQ(KeychainStore::shared().apiKey(), std::nullopt);
}

TEST(KeychainStore, KeepsTheKeyAsPlainTextInTheUserDefaults) {
    simulated::SimulatedPlatform platform;
    KeychainStore::shared().setApiKey("secret");
    EXPECT_EQ(platform.userDefaults().stringForKey(storedUnder), "secret");
    EXPECT_EQ(KeychainStore::shared().apiKey(), "secret");
}

TEST(KeychainStore, WritingAnEmptyKeyRemovesTheEntry) {
    simulated::SimulatedPlatform platform;
    KeychainStore::shared().setApiKey("secret");
    KeychainStore::shared().setApiKey("");
    EXPECT_FALSE(platform.userDefaults().has(storedUnder));
    EXPECT_EQ(KeychainStore::shared().apiKey(), std::nullopt);
}

TEST(KeychainStore, WritingAnAbsentKeyRemovesTheEntry) {
    simulated::SimulatedPlatform platform;
    KeychainStore::shared().setApiKey("secret");
    KeychainStore::shared().setApiKey(std::nullopt);
    EXPECT_FALSE(platform.userDefaults().has(storedUnder));
}

TEST(KeychainStore, ANewKeyReplacesTheOldOne) {
    simulated::SimulatedPlatform platform;
    KeychainStore::shared().setApiKey("first");
    KeychainStore::shared().setApiKey("second");
    EXPECT_EQ(KeychainStore::shared().apiKey(), "second");
}

TEST(KeychainStore, KeepsSurroundingSpaces) {
    simulated::SimulatedPlatform platform;
    KeychainStore::shared().setApiKey("  secret ");
    EXPECT_EQ(KeychainStore::shared().apiKey(), "  secret ");
}

TEST(KeychainStore, AKeyOfSpacesOnlyIsAKey) {
    simulated::SimulatedPlatform platform;
    KeychainStore::shared().setApiKey("   ");
    EXPECT_EQ(KeychainStore::shared().apiKey(), "   ");
}

TEST(KeychainStore, AnEmptyStoredTextReadsAsAbsent) {
    simulated::SimulatedPlatform platform({{storedUnder, std::string()}});
    EXPECT_EQ(KeychainStore::shared().apiKey(), std::nullopt);
}

TEST(KeychainStore, AStoredValueOfAnotherTypeReadsAsAbsent) {
    simulated::SimulatedPlatform platform({{storedUnder, simulated::UserDefaultsList{"secret"}}});
    EXPECT_EQ(KeychainStore::shared().apiKey(), std::nullopt);
}

TEST(KeychainStore, CachesNothing) {
    simulated::SimulatedPlatform platform;
    KeychainStore::shared().setApiKey("secret");
    platform.userDefaults().setString("changed elsewhere", storedUnder);
    EXPECT_EQ(KeychainStore::shared().apiKey(), "changed elsewhere");
}

TEST(KeychainStore, AKeyWrittenInOneRunIsReadInTheNext) {
    simulated::UserDefaultsContents leftBehind;
    {
        simulated::SimulatedPlatform firstRun;
        KeychainStore::shared().setApiKey("secret");
        leftBehind = firstRun.userDefaults().contents();
    }
    simulated::SimulatedPlatform secondRun(leftBehind);
    EXPECT_EQ(KeychainStore::shared().apiKey(), "secret");
}

TEST(KeychainStore, SharedInstanceIsTheSameForSimultaneousFirstCalls) {
    simulated::SimulatedPlatform platform;
    std::vector<KeychainStore*> seen(8);
    {
        std::vector<simulated::JoiningThread> threads;
        for (KeychainStore*& store : seen) {
            threads.emplace_back([&store] { store = &KeychainStore::shared(); });
        }
    }
    EXPECT_EQ(std::count(seen.begin(), seen.end(), &KeychainStore::shared()), 8);
}

TEST(KeychainStore, LogsNothing) {
    simulated::SimulatedPlatform platform;
    KeychainStore::shared().setApiKey("secret");
    KeychainStore::shared().setApiKey(std::nullopt);
    EXPECT_TRUE(platform.log().lines().empty());
}

}  // namespace
}  // namespace tarvik
