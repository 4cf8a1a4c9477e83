// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/input/InputThread.h"
#include "tests/linux/input/FakeSession.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::EventLoop;
using linuxdesktop::HotKeyNumber;
using linuxdesktop::InputSession;
using linuxdesktop::InputThread;
using linuxdesktop::SessionHotKeys;
using linuxdesktop::SessionTypist;
using linuxdesktop::TypedText;
using platform::eventHotKeyExistsErr;
using platform::eventInternalErr;
using platform::noErr;
using std::chrono::steady_clock;

constexpr std::uint32_t key = platform::spaceKeyCode;
constexpr std::uint32_t hold = platform::optionKeyMask;

/// Hears hotkeys on the main thread.
class Listener final : public linuxdesktop::HotKeyListener {
  public:
    void onPressed(HotKeyNumber number) override { events += "P" + std::to_string(number); }
    void onReleased(HotKeyNumber number) override { events += "R" + std::to_string(number); }
    void onLost(HotKeyNumber number, const std::string& reason) override {
        events += "L" + std::to_string(number) + " " + reason;
    }
    void onRegistered(HotKeyNumber number) override { events += "N" + std::to_string(number); }

    std::string events;
};

class InputThreadTest : public testing::Test {
  protected:
    void begin() {
        thread.emplace(
            mainQueue, log, listener,
            InputThread::Desktop{"no thread", "the desktop does not answer", "the desktop is back",
                                 "no desktop", folder.path() / "socket", 1s,
                                 [this](EventLoop& loop, const InputSession::Events& events)
                                     -> Result<std::unique_ptr<InputSession>> {
                                     if (!listens) {
                                         return Error{0, "nobody listens"};
                                     }
                                     script.set(&SessionScript::sessions,
                                                script.get(&SessionScript::sessions) + 1);
                                     return std::unique_ptr<InputSession>(
                                         std::make_unique<FakeSession>(loop, script, events));
                                 }});
    }
    void inSession(std::function<void(FakeSession&)> action) {
        thread->post([action = std::move(action)](InputSession& session) {
            action(static_cast<FakeSession&>(session));
        });
    }
    // The desktop goes away, and stays away.
    void lose() {
        listens = false;
        inSession([](FakeSession& session) { session.lose(); });
        ASSERT_TRUE(mainQueue.runUntil([&] { return !thread->isConnected(); }));
    }
    bool returns() {
        listens = true;
        return mainQueue.runUntil([&] { return thread->isConnected(); });
    }
    bool hasSteps(const std::string& steps) {
        const bool holds =
            mainQueue.runUntil([&] { return script.get(&SessionScript::steps) == steps; });
        EXPECT_EQ(script.get(&SessionScript::steps), steps);
        return holds;
    }
    bool hears(const std::string& events) {
        const bool holds = mainQueue.runUntil([&] { return listener->events == events; });
        EXPECT_EQ(listener->events, events);
        return holds;
    }

    TemporaryFolder folder;
    RealTimeQueue mainQueue;
    RecordingLog log;
    std::shared_ptr<Listener> listener = std::make_shared<Listener>();
    std::atomic<bool> listens = true;
    SessionScript script;
    std::optional<InputThread> thread;
};

TEST_F(InputThreadTest, CarriesHotkeysAndTextsToTheSession) {
    begin();
    EXPECT_TRUE(thread->isConnected());
    EXPECT_EQ(thread->registerHotKey(1, key, hold), noErr);
    bool isTyped = false;
    thread->type({std::nullopt, U"text"}, 7, [&] { isTyped = true; });
    EXPECT_TRUE(mainQueue.runUntil([&] { return isTyped; }));
    inSession([](FakeSession& session) { session.press(1); });
    EXPECT_TRUE(hears("P1"));
    thread->unregisterHotKey(1);
    EXPECT_TRUE(hasSteps("add 1; type text into 7; remove 1; "));
    thread.reset();
    EXPECT_TRUE(hasSteps("add 1; type text into 7; remove 1; give back; session ends; "));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(InputThreadTest, ADesktopThatIsNotThereIsARefusal) {
    listens = false;
    begin();
    EXPECT_EQ(thread->refusal(), "nobody listens");
    EXPECT_EQ(thread->registerHotKey(1, key, hold), eventInternalErr);
}

TEST_F(InputThreadTest, ADesktopThatRefusesIsNotLookedForAgain) {
    script.manner = SessionScript::Manner::refusing;
    begin();
    EXPECT_EQ(thread->refusal(), "not here");
    EXPECT_TRUE(hasSteps("session ends; "));
    mainQueue.runFor(300ms);
    EXPECT_EQ(script.get(&SessionScript::sessions), 1);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(InputThreadTest, ADesktopThatAnswersLaterIsUsedFromThenOn) {
    script.manner = SessionScript::Manner::silent;
    const auto start = steady_clock::now();
    begin();
    EXPECT_LT(steady_clock::now() - start, 1500ms);
    EXPECT_EQ(log.lines(), std::vector<std::string>{"TarvikDictate: the desktop does not answer"});
    EXPECT_EQ(thread->refusal(), std::nullopt);
    EXPECT_FALSE(thread->isConnected());
    // Both registrations come before the answer.
    EXPECT_EQ(thread->registerHotKey(1, key, hold), eventInternalErr);
    EXPECT_EQ(thread->registerHotKey(2, key, hold), eventInternalErr);
    thread->unregisterHotKey(1);
    inSession([](FakeSession& session) {
        session.free();
        session.answer();
    });
    EXPECT_TRUE(hears("N2"));
    EXPECT_TRUE(hasSteps("remove 1; add 2; "));
}

TEST_F(InputThreadTest, ADesktopThatAnswersLaterSaysWhyItRefuses) {
    script.manner = SessionScript::Manner::silent;
    script.status = eventHotKeyExistsErr;
    script.reason = "a program has it";
    begin();
    EXPECT_EQ(thread->registerHotKey(1, key, hold), eventInternalErr);
    inSession([](FakeSession& session) {
        session.answer();
        session.free();
    });
    EXPECT_TRUE(hasSteps("add 1; add 1; "));
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"TarvikDictate: the desktop does not answer",
                                                     "TarvikDictate: a program has it"}));
    EXPECT_TRUE(hears(""));
}

TEST_F(InputThreadTest, ARefusedHotkeyIsRegisteredOnceItsCombinationIsFree) {
    begin();
    script.set(&SessionScript::status, std::optional(eventHotKeyExistsErr));
    script.set(&SessionScript::reason, std::string("a program has it"));
    EXPECT_EQ(thread->registerHotKey(1, key, hold), eventHotKeyExistsErr);
    // Nobody has given it up.
    inSession([](FakeSession& session) { session.free(); });
    EXPECT_TRUE(hasSteps("add 1; add 1; "));
    script.set(&SessionScript::status, std::optional(noErr));
    script.set(&SessionScript::reason, std::string());
    inSession([](FakeSession& session) { session.free(); });
    EXPECT_TRUE(hears("N1"));
    inSession([](FakeSession& session) { session.free(); });
    EXPECT_EQ(thread->registerHotKey(2, key, hold), noErr);
    EXPECT_TRUE(hasSteps("add 1; add 1; add 1; add 2; "));
    EXPECT_EQ(log.lines(), std::vector<std::string>{"TarvikDictate: a program has it"});
}

TEST_F(InputThreadTest, ARefusedHotkeyThatWasUnregisteredIsNotWanted) {
    begin();
    script.set(&SessionScript::status, std::optional(eventHotKeyExistsErr));
    EXPECT_EQ(thread->registerHotKey(1, key, hold), eventHotKeyExistsErr);
    EXPECT_EQ(thread->registerHotKey(2, key, hold), eventHotKeyExistsErr);
    thread->unregisterHotKey(1);
    script.set(&SessionScript::status, std::optional(noErr));
    inSession([](FakeSession& session) { session.free(); });
    EXPECT_TRUE(hears("N2"));
    EXPECT_TRUE(hasSteps("add 1; add 2; remove 1; add 2; "));
}

// The session must not have it for ever.
TEST_F(InputThreadTest, AHotkeyThatIsRegisteredAfterItWasUnregisteredIsGivenBack) {
    begin();
    script.set(&SessionScript::status, std::optional<platform::OSStatus>());
    EXPECT_EQ(thread->registerHotKey(1, key, hold), noErr);
    thread->unregisterHotKey(1);
    inSession([](FakeSession& session) { session.decide(noErr); });
    EXPECT_TRUE(hasSteps("add 1; remove 1; remove 1; "));
}

TEST_F(InputThreadTest, ACombinationThatIsFreedWhileTheDesktopDecidesIsAskedForOnce) {
    begin();
    script.set(&SessionScript::status, std::optional(eventHotKeyExistsErr));
    EXPECT_EQ(thread->registerHotKey(1, key, hold), eventHotKeyExistsErr);
    script.set(&SessionScript::status, std::optional<platform::OSStatus>());
    inSession([](FakeSession& session) {
        session.free();
        session.free();
        session.decide(noErr);
    });
    EXPECT_TRUE(hears("N1"));
    EXPECT_TRUE(hasSteps("add 1; add 1; "));
}

TEST_F(InputThreadTest, ADesktopCannotHaveEveryHotkey) {
    begin();
    script.set(&SessionScript::status, std::optional(platform::eventHotKeyInvalidErr));
    EXPECT_EQ(thread->registerHotKey(1, key, hold), platform::eventHotKeyInvalidErr);
    lose();
    ASSERT_TRUE(returns());
    EXPECT_TRUE(hasSteps("add 1; session ends; "));
}

TEST_F(InputThreadTest, ALossIsOneLineAndTheReturnAnother) {
    begin();
    ASSERT_EQ(thread->registerHotKey(1, key, hold), noErr);
    lose();
    EXPECT_EQ(thread->registerHotKey(2, key, hold), eventInternalErr);
    EXPECT_EQ(thread->registerHotKey(3, key, hold), eventInternalErr);
    thread->unregisterHotKey(3);
    // Some tries fail.
    mainQueue.runFor(400ms);
    script.set(&SessionScript::manner, SessionScript::Manner::gone);
    listens = true;
    ASSERT_TRUE(mainQueue.runUntil([&] { return script.get(&SessionScript::sessions) >= 3; }));
    script.set(&SessionScript::manner, SessionScript::Manner::readyAtOnce);
    ASSERT_TRUE(returns());
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"TarvikDictate: the desktop is gone",
                                                     "TarvikDictate: the desktop is back"}));
    EXPECT_TRUE(mainQueue.runUntil([&] {
        return script.get(&SessionScript::steps).ends_with("session ends; add 1; add 2; ");
    }));
    EXPECT_TRUE(hears("N2"));
}

TEST_F(InputThreadTest, AHotkeyThatTheNextDesktopRefusesIsLostUntilItIsFree) {
    begin();
    ASSERT_EQ(thread->registerHotKey(1, key, hold), noErr);
    lose();
    script.set(&SessionScript::status, std::optional(eventHotKeyExistsErr));
    script.set(&SessionScript::reason, std::string("a program has it"));
    ASSERT_TRUE(returns());
    EXPECT_TRUE(hears("L1 a program has it"));
    script.set(&SessionScript::status, std::optional(noErr));
    script.set(&SessionScript::reason, std::string());
    inSession([](FakeSession& session) { session.free(); });
    EXPECT_TRUE(hears("L1 a program has itN1"));
    EXPECT_FALSE(log.hasLineWith("a program has it"));
}

TEST_F(InputThreadTest, AHotkeyThatWasUnregisteredMeanwhileIsNotResumed) {
    begin();
    ASSERT_EQ(thread->registerHotKey(1, key, hold), noErr);
    ASSERT_EQ(thread->registerHotKey(2, key, hold), noErr);
    lose();
    thread->unregisterHotKey(1);
    ASSERT_TRUE(returns());
    EXPECT_TRUE(hasSteps("add 1; add 2; session ends; add 2; "));
}

TEST_F(InputThreadTest, ATextWithoutASessionIsReportedLost) {
    begin();
    lose();
    EXPECT_TRUE(hasSteps("session ends; "));
    bool isDone = false;
    thread->type({std::nullopt, U"lost"}, 0, [&] { isDone = true; });
    EXPECT_TRUE(mainQueue.runUntil([&] { return isDone; }));
    EXPECT_EQ(log.linesWith("typed text not delivered: no desktop (4 characters)").size(), 1U);
}

TEST_F(InputThreadTest, ABusyDesktopDecidesLater) {
    begin();
    script.set(&SessionScript::status, std::optional<platform::OSStatus>());
    const auto start = steady_clock::now();
    EXPECT_EQ(thread->registerHotKey(1, key, hold), noErr);
    EXPECT_LT(steady_clock::now() - start, 1500ms);
    inSession([](FakeSession& session) { session.decide(noErr); });
    lose();
    ASSERT_TRUE(returns());
    EXPECT_TRUE(hasSteps("add 1; session ends; add 1; "));
    EXPECT_EQ(listener->events, "");
}

TEST_F(InputThreadTest, ALateRefusalIsTheLossOfTheHotkey) {
    begin();
    script.set(&SessionScript::status, std::optional<platform::OSStatus>());
    EXPECT_EQ(thread->registerHotKey(1, key, hold), noErr);
    inSession([](FakeSession& session) { session.decide(eventHotKeyExistsErr); });
    EXPECT_TRUE(hears("L1 another program has the combination"));
    EXPECT_EQ(thread->registerHotKey(2, key, hold), noErr);
    inSession([](FakeSession& session) { session.decide(eventInternalErr); });
    EXPECT_TRUE(hears("L1 another program has the combinationL2 the desktop does not answer"));
}

TEST_F(InputThreadTest, WhatABusyDesktopHasNotDecidedTheNextOneDecides) {
    begin();
    script.set(&SessionScript::status, std::optional<platform::OSStatus>());
    EXPECT_EQ(thread->registerHotKey(1, key, hold), noErr);
    lose();
    script.set(&SessionScript::status, std::optional<platform::OSStatus>(eventHotKeyExistsErr));
    ASSERT_TRUE(returns());
    EXPECT_TRUE(hears("L1 another program has the combination"));
    EXPECT_TRUE(hasSteps("add 1; session ends; add 1; "));
}

TEST_F(InputThreadTest, ARegistrationDuringWhichTheDesktopIsLostIsRefused) {
    begin();
    script.set(&SessionScript::status, std::optional<platform::OSStatus>());
    listens = false;
    std::thread loser([this] {
        while (script.get(&SessionScript::steps).empty()) {
            std::this_thread::yield();
        }
        inSession([](FakeSession& session) { session.lose(); });
    });
    const auto start = steady_clock::now();
    EXPECT_EQ(thread->registerHotKey(1, key, hold), eventInternalErr);
    EXPECT_LT(steady_clock::now() - start, 900ms);
    loser.join();
    script.set(&SessionScript::status, std::optional(noErr));
    ASSERT_TRUE(returns());
    EXPECT_TRUE(hasSteps("add 1; session ends; add 1; "));
    EXPECT_TRUE(hears("N1"));
}

TEST_F(InputThreadTest, TheShutdownIsBounded) {
    for (const bool finishesTexts : {false, true}) {
        script.finishesTexts = finishesTexts;
        script.finishesEnd = false;
        begin();
        const auto start = steady_clock::now();
        thread.reset();
        EXPECT_LT(steady_clock::now() - start, 1500ms);
        EXPECT_EQ(std::exchange(script.steps, ""), "give back; session ends; ");
    }
}

}  // namespace

}  // namespace tarvik::tests
