// SPDX-License-Identifier: MIT

#include <QWidget>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/linux/system/ApplicationTest.h"

namespace tarvik::tests {

namespace {

class LaunchRecorder final : public platform::ApplicationDelegate {
  public:
    void applicationDidFinishLaunching(const platform::LaunchNotification&) override {
        events.emplace_back("launch");
        onLaunch();
    }
    bool applicationShouldHandleReopen(bool hasVisibleWindows) override {
        events.emplace_back(hasVisibleWindows ? "reopen, visible" : "reopen");
        return true;
    }
    void applicationShouldPerform(platform::ApplicationAction action) override {
        events.emplace_back(action == platform::ApplicationAction::toggle ? "toggle" : "setup");
    }
    void applicationShouldTerminate(std::function<void()> onReady) override { onReady(); }

    std::vector<std::string> events;
    std::function<void()> onLaunch = [] {};
};

class LaunchTest : public ApplicationTest {
  protected:
    LaunchTest() {
        application.setDelegate(delegate);
        delegate->onLaunch = [this] {
            launchedAfter = clock.now() - start;
            mainQueue.async([this] { application.terminate(); });
        };
    }

    Seconds launch() {
        start = clock.now();
        EXPECT_EQ(application.run(), 0);
        return launchedAfter;
    }

    std::shared_ptr<LaunchRecorder> delegate = std::make_shared<LaunchRecorder>();
    TimePoint start;
    Seconds launchedAfter{-1};
};

using Handler = std::function<void()>;

TEST_F(LaunchTest, TheLaunchWaitsUntilEverythingIsKnown) {
    Handler first;
    Handler second;
    application.holdLaunchUntil({[&](Handler known) { first = std::move(known); },
                                 [&](Handler known) { second = std::move(known); }});
    // Each step queues the next one, so that a launch could come between two steps.
    mainQueue.asyncAfter(Seconds(0.02), [&] {
        first();
        mainQueue.asyncAfter(Seconds(0.02), [&] {
            EXPECT_TRUE(delegate->events.empty());
            second();
        });
    });
    EXPECT_LT(launch().count(), 0.4);
    EXPECT_EQ(delegate->events, std::vector<std::string>{"launch"});
}

TEST_F(LaunchTest, WhatIsKnownAlreadyCostsNothing) {
    application.holdLaunchUntil({[](const Handler& known) { known(); }});
    EXPECT_LT(launch().count(), 0.3);
}

TEST_F(LaunchTest, OtherThreadsMayKnowIt) {
    std::thread thread;
    application.holdLaunchUntil({[&](Handler known) { thread = std::thread(std::move(known)); }});
    EXPECT_LT(launch().count(), 0.3);
    thread.join();
}

TEST_F(LaunchTest, WhatIsNeverKnownIsNotWaitedForLong) {
    Handler late;
    application.holdLaunchUntil({[&](Handler known) { late = std::move(known); }});
    delegate->onLaunch = [this, &late] {
        launchedAfter = clock.now() - start;
        late();
        mainQueue.asyncAfter(Seconds(0.02), [this] { application.terminate(); });
    };
    EXPECT_GE(launch().count(), 0.5);
    EXPECT_LT(launchedAfter.count(), 1.0);
    EXPECT_EQ(delegate->events, std::vector<std::string>{"launch"});
}

TEST_F(LaunchTest, WhatIsAskedBeforeTheLaunchComesAfterIt) {
    application.reopen("");
    application.perform(platform::ApplicationAction::toggle, "");
    delegate->onLaunch = [this] {
        application.perform(platform::ApplicationAction::setup, "");
        mainQueue.asyncAfter(Seconds(0.02), [this] { application.terminate(); });
    };
    launch();
    EXPECT_EQ(delegate->events, (std::vector<std::string>{"launch", "setup", "reopen", "toggle"}));
}

TEST_F(LaunchTest, NothingIsAskedOfAnApplicationThatIsTerminated) {
    bool wasTold = false;
    application.observeTermination([&] { wasTold = true; });
    delegate->onLaunch = [this] {
        application.reopen("");
        application.terminate();
        application.reopen("");
    };
    launch();
    EXPECT_TRUE(wasTold);
    QApplication::processEvents();
    EXPECT_EQ(delegate->events, std::vector<std::string>{"launch"});
}

TEST_F(LaunchTest, AnApplicationThatIsTerminatedWhileItWaitsIsNotLaunched) {
    application.holdLaunchUntil({[](const Handler&) {}});
    mainQueue.async([this] { application.terminate(); });
    launch();
    EXPECT_TRUE(delegate->events.empty());
}

TEST_F(LaunchTest, AReopeningKnowsOfVisibleWindows) {
    QWidget window;
    window.show();
    application.reopen("");
    delegate->onLaunch = [this] {
        mainQueue.asyncAfter(Seconds(0.02), [this] { application.terminate(); });
    };
    launch();
    EXPECT_EQ(delegate->events, (std::vector<std::string>{"launch", "reopen, visible"}));
}

}  // namespace

}  // namespace tarvik::tests
