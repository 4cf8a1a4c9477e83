#include <string>
#include <vector>

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

using TaskLauncherConformance = SystemConformance;

TEST_P(TaskLauncherConformance, AProgramGetsItsArgumentsAsTheyAre) {
    const std::vector<std::string> arguments = {"-c", "two words", "$HOME \"quoted\"", "日本"};
    EXPECT_FALSE(world->taskLauncher().launch(world->goodProgram(), arguments));
    EXPECT_TRUE(world->runUntil([&] { return world->wasLaunched(arguments); }));
}

TEST_P(TaskLauncherConformance, AProgramThatIsNotThereIsAnErrorWithAReason) {
    world->refuseLaunch();
    const std::optional<Error> failure = world->taskLauncher().launch(world->missingProgram(), {});
    ASSERT_TRUE(failure);
    EXPECT_FALSE(failure->localizedDescription.empty());
}

INSTANTIATE_TEST_SUITE_P(Worlds, TaskLauncherConformance, everySystemWorld(), systemWorldName);

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
