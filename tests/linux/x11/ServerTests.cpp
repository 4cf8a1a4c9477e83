#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>

#include "platform/linux/x11/X11Input.h"
#include "tests/conformance/input/HotKeyRecorder.h"
#include "tests/linux/x11/X11Server.h"
#include "tests/linux/x11/X11User.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::X11Input;
using Clock = std::chrono::steady_clock;

constexpr auto hold = HotKeyRecorder::hold;
constexpr auto toggle = HotKeyRecorder::toggle;
// Whoever waits for the server waits for one second at the most.
constexpr auto longest = 1500ms;

/// Takes every connection and says nothing. As long as it lives, connections are made to it.
class SilentServer {
  public:
    SilentServer() : earlierDisplay_(getenv("DISPLAY")), socket_(socket(AF_UNIX, SOCK_STREAM, 0)) {
        constexpr int firstNumber = 4000;
        constexpr int lastNumber = 4999;
        for (int number = firstNumber; number <= lastNumber; ++number) {
            if (listenAs(std::to_string(number))) {
                setenv("DISPLAY", (":" + std::to_string(number)).c_str(), 1);
                return;
            }
        }
        throw std::runtime_error("no number is free for a silent X server");
    }
    ~SilentServer() {
        setenv("DISPLAY", earlierDisplay_.c_str(), 1);
        close(socket_);
    }
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;

  private:
    // A name that begins with a zero is none of the file system, and ends with the socket.
    bool listenAs(const std::string& number) const {
        const std::string name = "/tmp/.X11-unix/X" + number;
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        name.copy(address.sun_path + 1, sizeof address.sun_path - 1);
        const auto length =
            static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
        return bind(socket_, reinterpret_cast<const sockaddr*>(&address), length) == 0 &&
               listen(socket_, 1) == 0;
    }

    std::string earlierDisplay_;
    int socket_;
};

class X11ServerTrouble : public testing::Test {
  protected:
    RealTimeQueue mainQueue;
    RecordingLog log;

    template <typename Action>
    static Clock::duration durationOf(const Action& action) {
        const auto start = Clock::now();
        action();
        return Clock::now() - start;
    }
};

TEST_F(X11ServerTrouble, OneThatNeverAnswersCostsASecondAtTheStartAndOneAtTheEnd) {
    const SilentServer server;
    std::unique_ptr<X11Input> input;
    EXPECT_LT(durationOf([&] { input = X11Input::open(mainQueue, log); }), longest);
    EXPECT_TRUE(log.hasLineWith("TarvikDictate: the X server does not answer"));
    EXPECT_FALSE(input->canType());
    HotKeyRecorder recorder(input->eventManager());
    EXPECT_LT(durationOf([&] { EXPECT_EQ(recorder.add(hold, 1), platform::eventInternalErr); }),
              100ms);
    EXPECT_LT(durationOf([&] { input.reset(); }), longest);
}

TEST_F(X11ServerTrouble, OneThatHangsCostsASecondPerHotKeyAndOneAtTheEnd) {
    X11Server server(mainQueue);
    auto input = X11Input::open(mainQueue, log);
    ASSERT_TRUE(input->canType());
    {
        HotKeyRecorder recorder(input->eventManager());
        server.hang();
        for (const auto modifiers : {hold, toggle}) {
            EXPECT_LT(durationOf([&] {
                          EXPECT_EQ(recorder.add(modifiers, 1), platform::eventInternalErr);
                      }),
                      longest);
        }
    }
    EXPECT_LT(durationOf([&] { input.reset(); }), longest);
}

TEST_F(X11ServerTrouble, AHotKeyThatWasRefusedBecauseTheServerHungIsFreeAfterwards) {
    X11Server server(mainQueue);
    const auto input = X11Input::open(mainQueue, log);
    {
        HotKeyRecorder recorder(input->eventManager());
        server.hang();
        EXPECT_EQ(recorder.add(hold, 1), platform::eventInternalErr);
    }
    server.goOn();
    X11User other;
    EXPECT_TRUE(
        mainQueue.runUntil([&] { return other.grabHotKey(X11User::spaceKey, XCB_MOD_MASK_1); }));
}

TEST_F(X11ServerTrouble, OneThatCannotTellWhoseAWindowIsServesHotKeysAndTyping) {
    const X11Server server(mainQueue, {"-extension", "X-Resource"});
    const auto input = X11Input::open(mainQueue, log);
    EXPECT_TRUE(input->canType());
    HotKeyRecorder recorder(input->eventManager());
    EXPECT_EQ(recorder.add(hold, 1), platform::noErr);
    for (const std::string& line : log.lines()) {
        ADD_FAILURE() << line;
    }
}

}  // namespace

}  // namespace tarvik::tests
