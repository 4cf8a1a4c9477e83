// SPDX-License-Identifier: MIT

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <chrono>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/linux/x11/X11SessionTest.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::HotKeyNumber;

// What happens right before the library sends what is ready.
std::function<void()> beforeFlush;

TEST_F(X11SessionTest, EndsAHoldWhosePressWasUnheardWhenTypingTookTheKeyboard) {
    for (const auto first : {X11User::spaceKey, X11User::altKey}) {
        events.clear();
        lifted = 0;
        ASSERT_EQ(session.hotKeys().add(1, platform::spaceKeyCode, platform::optionKeyMask),
                  platform::noErr);
        hear();
        user.press(X11User::altKey);
        user.press(X11User::spaceKey);
        EXPECT_FALSE(user.isDown(X11User::spaceKey));
        session.typist().type({std::nullopt, U"x"}, XCB_NONE, [] {});
        EXPECT_EQ(lifted, platform::optionKeyMask);
        EXPECT_FALSE(user.isDown(X11User::altKey));
        hear();
        EXPECT_EQ(events, "P");
        user.release(first);
        user.isDown(first);
        hear();
        EXPECT_EQ(events, "PR");
        user.release(X11User::spaceKey);
        user.release(X11User::altKey);
        user.isDown(first);
        hear();
        EXPECT_EQ(events, "PR");
        session.hotKeys().remove(1);
    }
}

// While the library sends, it also takes in what has come, and the descriptor tells nothing of it.
TEST_F(X11SessionTest, HandlesWhatComesWhileItSends) {
    ASSERT_EQ(session.hotKeys().add(1, platform::spaceKeyCode, platform::optionKeyMask),
              platform::noErr);
    hear();
    onEvent = [this] {
        beforeFlush = [this] {
            user.release(X11User::spaceKey);
            EXPECT_FALSE(user.isDown(X11User::spaceKey));
        };
    };
    user.press(X11User::altKey);
    user.press(X11User::spaceKey);
    EXPECT_FALSE(user.isDown(X11User::spaceKey));
    hear();
    pollfd socket{connection->descriptor(), POLLIN, 0};
    while (poll(&socket, 1, 0) > 0) {
        session.drain();
    }
    EXPECT_EQ(events, "PR");
}

TEST_F(X11SessionTest, TellsHowMuchIsLostWhereAnotherProgramKeepsTheKeyboard) {
    const auto other = linuxdesktop::XcbConnection::open().value();
    linuxdesktop::X11Session refused(*other, loop, log,
                                     {[](HotKeyNumber) {}, [](HotKeyNumber) {}, {}}, {}, front,
                                     std::chrono::milliseconds(200));
    X11User locker;
    locker.grabWholeKeyboard();
    refused.typist().type({std::nullopt, U"lost"}, XCB_NONE, [this] { loop.quit(); });
    loop.run([&] { refused.drain(); });
    EXPECT_TRUE(
        log.hasLineWith("TarvikDictate: typed text not delivered: another program has "
                        "taken the keyboard (4 characters)"));
    EXPECT_EQ(locker.grabbedPresses(), 0);
}

// Each of them could have been typed when the keyboard was free again.
TEST_F(X11SessionTest, WaitsWithEveryTextAtOnceForTheKeyboard) {
    using namespace std::chrono_literals;
    const auto other = linuxdesktop::XcbConnection::open().value();
    linuxdesktop::X11Session refused(*other, loop, log,
                                     {[](HotKeyNumber) {}, [](HotKeyNumber) {}, {}}, {}, front, 1s);
    X11User locker;
    locker.grabWholeKeyboard();
    const auto start = std::chrono::steady_clock::now();
    // Texts for one window would be joined.
    for (const xcb_window_t window : {1U, 2U, 3U, 4U}) {
        refused.typist().type({std::nullopt, U"lost"}, window, [] {});
    }
    refused.typist().whenIdle([this] { loop.quit(); });
    loop.run([&] { refused.drain(); });
    EXPECT_EQ(log.linesWith("has taken the keyboard (4 characters)").size(), 4U);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 3s);
}

// Its event comes after the requests about it.
TEST_F(X11SessionTest, SaysNothingOfAKeyboardThatIsUnpluggedMeanwhile) {
    const std::size_t keyboards = connection->keyboards().size();
    user.addSecondKeyboard();
    hear();
    EXPECT_GT(connection->keyboards().size(), keyboards);
    user.removeSecondKeyboard();
    session.typist().type({std::nullopt, U"x"}, XCB_NONE, [] {});
    hear();
    EXPECT_EQ(connection->keyboards().size(), keyboards);
    EXPECT_EQ(log.lines(), std::vector<std::string>());
}

// One key without a symbol is left, and its two characters at a time.
TEST_F(X11SessionTest, TypesWithASingleSpareKey) {
    user.fillKeysWithoutSymbol(1, XKB_KEY_F35);
    hear();
    session.typist().type({std::nullopt, U"жду поезд"}, XCB_NONE, [] {});
    session.typist().whenIdle([this] { loop.quit(); });
    loop.run([this] { session.drain(); });
    EXPECT_EQ(log.lines(), std::vector<std::string>());
}

// No window reads the keys, so that nothing but time tells when they can be used again.
TEST_F(X11SessionTest, TypesMoreThanThereAreSpareKeysWhereNoWindowIsInFront) {
    std::u32string text;
    for (char32_t character = U'\u4E00'; character < U'\u4F00'; ++character) {
        text += character;
    }
    session.typist().type({std::nullopt, text}, XCB_NONE, [] {});
    session.typist().whenIdle([this] { loop.quit(); });
    loop.run([this] { session.drain(); });
    EXPECT_EQ(log.lines(), std::vector<std::string>());
}

TEST_F(X11SessionTest, TellsAtItsEndThatTypingIsOver) {
    bool isOver = false;
    bool isTyped = false;
    const auto other = linuxdesktop::XcbConnection::open().value();
    {
        linuxdesktop::X11Session ending(*other, loop, log,
                                        {[](HotKeyNumber) {}, [](HotKeyNumber) {}, {}}, {}, front);
        ending.typist().type({std::nullopt, U"ж"}, XCB_NONE, [&] { isTyped = true; });
        ending.typist().whenIdle([&] { isOver = true; });
        EXPECT_FALSE(isOver);
    }
    EXPECT_TRUE(isOver);
    EXPECT_TRUE(isTyped);
}

// Each key of the user would wake the application.
TEST_F(X11SessionTest, HearsOfOtherKeysOnlyDuringAHold) {
    ASSERT_EQ(session.hotKeys().add(1, platform::spaceKeyCode, platform::optionKeyMask),
              platform::noErr);
    hear();
    EXPECT_FALSE(hearsOfEveryKey());
    user.press(X11User::altKey);
    user.press(X11User::spaceKey);
    user.isDown(X11User::spaceKey);
    hear();
    EXPECT_TRUE(hearsOfEveryKey());
    user.release(X11User::spaceKey);
    user.release(X11User::altKey);
    user.isDown(X11User::spaceKey);
    hear();
    EXPECT_EQ(events, "PR");
    EXPECT_FALSE(hearsOfEveryKey());
}

// What the server has done by the time that the press is handled.
TEST_F(X11SessionTest, LeavesNoKeyDownThatWentUpBeforeThePressWasHandled) {
    ASSERT_EQ(session.hotKeys().add(1, platform::spaceKeyCode, platform::optionKeyMask),
              platform::noErr);
    hear();
    for (const bool isAltFirst : {false, true}) {
        events.clear();
        user.press(X11User::altKey);
        user.press(X11User::spaceKey);
        user.release(isAltFirst ? X11User::altKey : X11User::spaceKey);
        user.release(isAltFirst ? X11User::spaceKey : X11User::altKey);
        user.isDown(X11User::altKey);
        hear();
        EXPECT_EQ(events, "PR");
        EXPECT_FALSE(user.isDown(X11User::altKey));
        EXPECT_FALSE(user.isDown(X11User::spaceKey));
    }
}

// Keys that are pressed while the press of the hotkey waits to be handled.
TEST_F(X11SessionTest, PassesOnWhatOtherProgramsAreToGet) {
    ASSERT_EQ(session.hotKeys().add(1, platform::spaceKeyCode, platform::optionKeyMask),
              platform::noErr);
    hear();
    user.press(X11User::altKey);
    user.press(X11User::spaceKey);
    user.press(X11User::qKey);
    user.release(X11User::altKey);
    EXPECT_FALSE(user.isDown(X11User::qKey));
    hear();
    EXPECT_TRUE(user.isDown(X11User::qKey));
    EXPECT_FALSE(user.isDown(X11User::altKey));
    user.release(X11User::qKey);
    user.release(X11User::spaceKey);
    EXPECT_FALSE(user.isDown(X11User::qKey));
    hear();
    EXPECT_EQ(events, "PR");
}

TEST_F(X11SessionTest, DoesNotBlameAnotherProgramForTheEndOfTheServer) {
    using namespace std::chrono_literals;
    ASSERT_EQ(session.hotKeys().add(1, platform::spaceKeyCode, platform::optionKeyMask),
              platform::noErr);
    connection->shutDown();
    linuxdesktop::Deadline end(loop);
    end.set(100ms, [this] { loop.quit(); });
    loop.run();
    EXPECT_EQ(events, "");
}

}  // namespace

}  // namespace tarvik::tests

// In the place of the library's own, which it calls.
int xcb_flush(xcb_connection_t* connection) {
    if (auto& action = tarvik::tests::beforeFlush) {
        std::exchange(action, nullptr)();
    }
    static const auto original =
        reinterpret_cast<decltype(&xcb_flush)>(dlsym(RTLD_NEXT, "xcb_flush"));
    return original(connection);
}
