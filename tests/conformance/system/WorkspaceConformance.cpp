// SPDX-License-Identifier: MIT

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/conformance/system/SystemConformance.h"

namespace tarvik::tests {

namespace {

using WorkspaceConformance = SystemConformance;

TEST_P(WorkspaceConformance, TheFrontmostApplicationFollowsTheWindowInFront) {
    platform::Workspace& workspace = world->workspace();
    EXPECT_EQ(workspace.frontmostApplication(), nullptr);
    world->bringToFront(4711);
    const std::shared_ptr<platform::RunningApplication> first = workspace.frontmostApplication();
    ASSERT_TRUE(first);
    world->bringToFront(815);
    const std::shared_ptr<platform::RunningApplication> second = workspace.frontmostApplication();
    ASSERT_TRUE(second);
    EXPECT_EQ(first->processIdentifier(), 4711);
    EXPECT_EQ(second->processIdentifier(), 815);
    world->bringToFront({});
    EXPECT_EQ(workspace.frontmostApplication(), nullptr);
}

TEST_P(WorkspaceConformance, EveryObserverHearsOfEachWakingOnceOnTheMainThread) {
    world->provideSleep();
    int first = 0;
    int second = 0;
    const std::thread::id mainThread = std::this_thread::get_id();
    world->workspace().observeDidWake([&] {
        ++first;
        EXPECT_EQ(std::this_thread::get_id(), mainThread);
    });
    world->workspace().observeDidWake([&] { ++second; });
    for (int sleeps = 1; sleeps <= 3; ++sleeps) {
        world->sleepAndWake();
        EXPECT_TRUE(world->runUntil([&] { return first >= sleeps && second >= sleeps; }));
        EXPECT_EQ(first, sleeps);
        EXPECT_EQ(second, sleeps);
    }
}

TEST_P(WorkspaceConformance, AnObserverMayAddAnotherOneForTheNextWaking) {
    world->provideSleep();
    int wakings = 0;
    int heardByAdded = 0;
    world->workspace().observeDidWake([&] {
        if (++wakings == 1) {
            world->workspace().observeDidWake([&] { ++heardByAdded; });
        }
    });
    world->sleepAndWake();
    EXPECT_TRUE(world->runUntil([&] { return wakings == 1; }));
    EXPECT_EQ(heardByAdded, 0);
    world->sleepAndWake();
    EXPECT_TRUE(world->runUntil([&] { return wakings == 2 && heardByAdded == 1; }));
}

TEST_P(WorkspaceConformance, ALinkIsOpenedAsItIs) {
    const std::string link = "https://tarvik.example/a%20b?c=d&e=%C5%BC#f";
    EXPECT_TRUE(world->workspace().openUrl(link));
    EXPECT_TRUE(world->runUntil([&] { return !world->openedUrls().empty(); }));
    EXPECT_EQ(world->openedUrls(), std::vector<std::string>{link});
}

TEST_P(WorkspaceConformance, ALinkThatNothingOpensIsAnsweredAtOnce) {
    world->refuseUrls();
    EXPECT_FALSE(world->workspace().openUrl("https://tarvik.example/"));
}

INSTANTIATE_TEST_SUITE_P(Worlds, WorkspaceConformance, everySystemWorld(), systemWorldName);

}  // namespace

}  // namespace tarvik::tests
