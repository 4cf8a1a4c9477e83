// SPDX-License-Identifier: MIT

#include <functional>
#include <memory>
#include <utility>

#include "tests/conformance/system/SystemConformance.h"

namespace tarvik::tests {

namespace {

using ApplicationConformance = SystemConformance;

class RecordingDelegate final : public platform::ApplicationDelegate {
  public:
    explicit RecordingDelegate(std::function<void()> onLaunch) : onLaunch_(std::move(onLaunch)) {}

    void applicationDidFinishLaunching(const platform::LaunchNotification&) override {
        ++launches;
        onLaunch_();
    }
    bool applicationShouldHandleReopen(bool) override { return true; }
    void applicationShouldPerform(platform::ApplicationAction) override {}
    void applicationShouldTerminate(std::function<void()> onReady) override { onReady(); }

    int launches = 0;

  private:
    std::function<void()> onLaunch_;
};

TEST_P(ApplicationConformance, TheDelegateHearsOfTheLaunchOnceInsideRun) {
    bool isRunning = false;
    const auto delegate = std::make_shared<RecordingDelegate>([&] {
        EXPECT_TRUE(isRunning);
        world->mainQueue().async([&] { world->application().terminate(); });
    });
    world->application().setDelegate(delegate);
    EXPECT_EQ(delegate->launches, 0);
    isRunning = true;
    EXPECT_EQ(world->application().run(), 0);
    EXPECT_EQ(delegate->launches, 1);
}

TEST_P(ApplicationConformance, TerminateBeforeRunEndsItAtOnce) {
    const auto delegate = std::make_shared<RecordingDelegate>([] {});
    world->application().setDelegate(delegate);
    world->application().terminate();
    EXPECT_EQ(world->application().run(), 0);
    EXPECT_EQ(delegate->launches, 0);
}

TEST_P(ApplicationConformance, TerminateEndsTheLoopAfterThePresentTurn) {
    bool hasFinished = false;
    world->application().setDelegate(std::make_shared<RecordingDelegate>([&] {
        world->application().terminate();
        hasFinished = true;
    }));
    EXPECT_EQ(world->application().run(), 0);
    EXPECT_TRUE(hasFinished);
}

TEST_P(ApplicationConformance, TheApplicationHoldsItsDelegate) {
    std::weak_ptr<RecordingDelegate> watched;
    {
        const auto delegate = std::make_shared<RecordingDelegate>([] {});
        watched = delegate;
        world->application().setDelegate(delegate);
    }
    EXPECT_FALSE(watched.expired());
}

INSTANTIATE_TEST_SUITE_P(Worlds, ApplicationConformance, everySystemWorld(), systemWorldName);

}  // namespace

}  // namespace tarvik::tests
