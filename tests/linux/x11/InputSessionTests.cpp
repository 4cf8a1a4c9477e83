#include <dlfcn.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/linux/x11/InputSession.h"
#include "tests/linux/x11/X11Server.h"
#include "tests/linux/x11/X11User.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::HotKeyNumber;

// What happens right before the library sends what is ready.
std::function<void()> beforeFlush;

// The session without its thread, so that a test says when it hears of what has happened.
class X11InputSession : public testing::Test {
  protected:
    RealTimeQueue mainQueue;
    X11Server server{mainQueue};
    RecordingLog log;
    X11User user;
    std::unique_ptr<linuxdesktop::XcbConnection> connection =
        linuxdesktop::XcbConnection::open().value();
    linuxdesktop::PollLoop loop;
    std::atomic<platform::ProcessIdentifier> frontProcess = 0;
    std::string events;
    // Called at the next event.
    std::function<void()> onEvent;
    linuxdesktop::InputSession session{
        *connection, loop, log,
        [this](HotKeyNumber, std::uint32_t kind) {
            events += kind == platform::eventHotKeyPressed ? "P" : "R";
            if (const auto action = std::exchange(onEvent, nullptr)) {
                action();
            }
        },
        frontProcess};

    // Everything that the server has sent by now has arrived after the answer.
    void hear() {
        connection->synchronise();
        session.drain();
    }
};

TEST_F(X11InputSession, EndsAHoldWhosePressWasUnheardWhenTypingTookTheKeyboard) {
    for (const auto first : {X11User::spaceKey, X11User::altKey}) {
        events.clear();
        ASSERT_EQ(session.hotKeys().add(1, platform::spaceKeyCode, platform::optionKeyMask),
                  platform::noErr);
        hear();
        user.press(X11User::altKey);
        user.press(X11User::spaceKey);
        EXPECT_TRUE(user.isDown(X11User::spaceKey));
        session.typist().type({std::nullopt, U"x"});
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
TEST_F(X11InputSession, HandlesWhatComesWhileItSends) {
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
    EXPECT_TRUE(user.isDown(X11User::spaceKey));
    hear();
    pollfd socket{connection->descriptor(), POLLIN, 0};
    while (poll(&socket, 1, 0) > 0) {
        session.drain();
    }
    EXPECT_EQ(events, "PR");
}

// Nothing is left to wait for after it.
TEST_F(X11InputSession, TellsAtItsEndThatTypingIsOver) {
    bool isOver = false;
    const auto other = linuxdesktop::XcbConnection::open().value();
    {
        linuxdesktop::InputSession ending(
            *other, loop, log, [](HotKeyNumber, std::uint32_t) {}, frontProcess);
        ending.typist().type({std::nullopt, U"ж"});
        ending.typist().whenIdle([&] { isOver = true; });
        EXPECT_FALSE(isOver);
    }
    EXPECT_TRUE(isOver);
}

TEST_F(X11InputSession, DoesNotBlameAnotherProgramForTheEndOfTheServer) {
    using namespace std::chrono_literals;
    ASSERT_EQ(session.hotKeys().add(1, platform::spaceKeyCode, platform::optionKeyMask),
              platform::noErr);
    connection->shutDown();
    linuxdesktop::Deadline end(loop);
    end.set(100ms, [this] { loop.quit(); });
    loop.run([] { return -1; });
    EXPECT_FALSE(log.hasLineWith("a hotkey is lost"));
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
