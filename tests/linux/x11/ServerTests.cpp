// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/linux/DesktopInput.h"
#include "platform/linux/accessibility/AccessibilityState.h"
#include "tests/conformance/input/HotKeyRecorder.h"
#include "tests/linux/loop/ThreadShortage.h"
#include "tests/linux/x11/InputFixture.h"
#include "tests/linux/x11/X11Server.h"
#include "tests/linux/x11/X11User.h"
#include "tests/support/Attempts.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::DesktopInput;
using Clock = std::chrono::steady_clock;

constexpr auto hold = HotKeyRecorder::hold;
constexpr auto toggle = HotKeyRecorder::toggle;
// The main thread waits one second at the most for the server.
constexpr auto maxDuration = 1500ms;

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

class UnresponsiveX11Server : public testing::Test {
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

TEST_F(UnresponsiveX11Server, OneThatNeverAnswersCostsASecondAtTheStartAndOneAtTheEnd) {
    const SilentServer server;
    std::optional<DesktopInput> input;
    EXPECT_TRUE(isWithin(maxDuration, [&] {
        input.reset();
        return durationOf([&] { input.emplace(mainQueue, log); });
    }));
    EXPECT_TRUE(log.hasLineWith("TarvikDictate: the X server does not answer"));
    EXPECT_FALSE(input->canType());
    {
        HotKeyRecorder recorder(input->eventManager());
        EXPECT_TRUE(isWithin(100ms, [&] {
            return durationOf(
                [&] { EXPECT_EQ(recorder.add(hold, 1), platform::eventInternalErr); });
        }));
    }
    EXPECT_TRUE(isWithin(maxDuration, [&] {
        if (!input) {
            input.emplace(mainQueue, log);
        }
        return durationOf([&] { input.reset(); });
    }));
}

TEST_F(UnresponsiveX11Server, OneThatHangsCostsASecondPerHotKeyAndOneAtTheEnd) {
    EXPECT_TRUE(isWithin(maxDuration, [this] {
        X11Server server(mainQueue);
        std::optional<DesktopInput> input(std::in_place, mainQueue, log);
        EXPECT_TRUE(input->canType());
        std::vector<Clock::duration> durations;
        {
            HotKeyRecorder recorder(input->eventManager());
            server.hang();
            for (const auto modifiers : {hold, toggle}) {
                durations.push_back(durationOf(
                    [&] { EXPECT_EQ(recorder.add(modifiers, 1), platform::eventInternalErr); }));
            }
        }
        durations.push_back(durationOf([&] { input.reset(); }));
        return *std::ranges::max_element(durations);
    }));
}

TEST_F(UnresponsiveX11Server, AHotKeyThatWasRefusedBecauseTheServerHungIsFreeAfterwards) {
    X11Server server(mainQueue);
    std::optional<DesktopInput> input(std::in_place, mainQueue, log);
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

TEST_F(UnresponsiveX11Server, OneThatAnswersLaterServesTheHotKeysThatWereRegisteredBefore) {
    X11Server server(mainQueue);
    server.hang();
    DesktopInput input(mainQueue, log);
    HotKeyRecorder recorder(input.eventManager());
    EXPECT_EQ(recorder.add(hold, 1), platform::eventInternalErr);
    server.goOn();
    EXPECT_TRUE(mainQueue.runUntil(
        [&] { return log.hasLineWith("TarvikDictate: a hotkey is registered now: Alt+Space"); }));
    X11User user;
    user.press(X11User::altKey);
    user.press(X11User::spaceKey);
    EXPECT_TRUE(mainQueue.runUntil([&] { return recorder.events == "P1"; })) << recorder.events;
}

TEST_F(UnresponsiveX11Server, OneThatCannotTellWhoseAWindowIsServesHotKeysAndTyping) {
    const X11Server server(mainQueue, {"-extension", "X-Resource"});
    std::optional<DesktopInput> input(std::in_place, mainQueue, log);
    EXPECT_TRUE(input->canType());
    HotKeyRecorder recorder(input->eventManager());
    EXPECT_EQ(recorder.add(hold, 1), platform::noErr);
    const std::vector<std::string> chosen{
        "TarvikDictate: hotkeys by XInput 2: the X server offers it",
        "TarvikDictate: typing by XTEST: the X server offers it",
        "TarvikDictate: the front window by the X server: the X server offers it"};
    EXPECT_EQ(linesWithoutWayland(log), chosen);
}

// There is no window at all.
TEST_F(UnresponsiveX11Server, OneThatNamesNoProcessLeavesThatToTheProgramsThatReport) {
    const X11Server server(mainQueue);
    const auto state = std::make_shared<linuxdesktop::AccessibilityState>();
    const DesktopInput input(mainQueue, log, state);
    EXPECT_EQ(input.frontmostProcess(), std::nullopt);
    linuxdesktop::FocusSnapshot reported;
    reported.activeProcess = 4711;
    state->focus.store(std::make_shared<const linuxdesktop::FocusSnapshot>(reported));
    state->isConnected = true;
    EXPECT_EQ(input.frontmostProcess(), 4711);
}

// The first thread speaks to the server, the second one connects.
class X11WithoutThreads : public UnresponsiveX11Server, public testing::WithParamInterface<int> {};

TEST_P(X11WithoutThreads, IsNotServedAndSaysSo) {
    std::optional<DesktopInput> input;
    {
        const ThreadShortage shortage(GetParam());
        input.emplace(mainQueue, log);
    }
    const std::string reason = GetParam() == 0 ? "speak" : "connect";
    EXPECT_TRUE(log.hasLineWith("TarvikDictate: hotkeys not by XInput 2: no thread can " + reason +
                                " to the X server: "));
    EXPECT_FALSE(input->canType());
    EXPECT_EQ(input->frontmostProcess(), std::nullopt);
    HotKeyRecorder recorder(input->eventManager());
    EXPECT_NE(recorder.add(hold, 1), platform::noErr);
}

INSTANTIATE_TEST_SUITE_P(, X11WithoutThreads, testing::Values(0, 1));

}  // namespace

}  // namespace tarvik::tests
