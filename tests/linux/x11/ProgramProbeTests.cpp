// SPDX-License-Identifier: MIT

#include <unistd.h>

#include <atomic>
#include <memory>
#include <set>

#include "platform/linux/input/SocketBacklog.h"
#include "platform/linux/x11/FrontWindow.h"
#include "platform/linux/x11/ProgramProbe.h"
#include "platform/linux/x11/UnreadKeys.h"
#include "tests/linux/x11/InputFixture.h"
#include "tests/linux/x11/KeyReader.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::InputMethod;
using linuxdesktop::ProgramProbe;
using linuxdesktop::UnreadKeys;
using linuxdesktop::XcbConnection;
using Finding = ProgramProbe::Finding;

/// Programs that answer no pings.
class X11ProgramProbe : public InputFixture, public testing::TestWithParam<X11Target::Kind> {
  protected:
    bool finds(Finding finding, std::int32_t process) {
        return mainQueue.runUntil([&] { return probe.look(process).finding == finding; });
    }

    std::unique_ptr<XcbConnection> connection = XcbConnection::open().value();
    ProgramProbe probe{*connection};
};

TEST_P(X11ProgramProbe, FindsAProgramBehindFromAKeyUntilTheProgramHasHandledTheKey) {
    const X11Target target(GetParam(), mainQueue);
    ASSERT_TRUE(comesToFront(target));
    EXPECT_TRUE(finds(Finding::idle, target.process()));
    target.hang();
    user->tap(X11User::qKey);
    EXPECT_TRUE(finds(Finding::behind, target.process()));
    mainQueue.runFor(300ms);
    EXPECT_EQ(probe.look(target.process()).finding, Finding::behind);
    target.goOn();
    EXPECT_TRUE(finds(Finding::idle, target.process()));
    EXPECT_TRUE(becomes(target, "q"));
}

INSTANTIATE_TEST_SUITE_P(, X11ProgramProbe,
                         testing::Values(X11Target::Kind::tkText, X11Target::Kind::terminal),
                         [](const auto& kind) { return nameOf(kind.param); });

using X11MainLoopProbe = X11ProgramProbe;

TEST_P(X11MainLoopProbe, NeverFindsAProgramIdleWhoseMainLoopIsOccupied) {
    X11Target target(GetParam(), mainQueue);
    ASSERT_TRUE(comesToFront(target));
    EXPECT_TRUE(finds(Finding::idle, target.process()));
    target.sleepInMainLoop(500ms);
    EXPECT_EQ(probe.look(target.process()).finding, Finding::busy);
    EXPECT_TRUE(finds(Finding::idle, target.process()));
    target.workInMainLoop(500ms);
    EXPECT_EQ(probe.look(target.process()).finding, Finding::busy);
    EXPECT_TRUE(finds(Finding::idle, target.process()));
}

TEST_P(X11MainLoopProbe, KnowsNothingOfAProgramWithoutAWindow) {
    const TestProcess other({"sleep", "60"});
    EXPECT_EQ(probe.look(other.identifier()).finding, Finding::unknown);
    EXPECT_EQ(probe.look(0).finding, Finding::unknown);
    const auto address = linuxdesktop::addressOfServer(connection->descriptor());
    EXPECT_NE(address, "");
    EXPECT_TRUE(linuxdesktop::backlogOf(getpid(), address));
    EXPECT_FALSE(linuxdesktop::backlogOf(getpid(), address + "x"));
    EXPECT_FALSE(linuxdesktop::backlogOf(getpid(), ""));
}

INSTANTIATE_TEST_SUITE_P(, X11MainLoopProbe, testing::Values(X11Target::Kind::tkText),
                         [](const auto& kind) { return nameOf(kind.param); });

class X11WaitingProgram : public InputFixture, public testing::Test {};

// The server has read the program's requests already, and has not handled them.
TEST_F(X11WaitingProgram, IsNotIdleBeforeTheServerHasAnswered) {
    const auto connection = XcbConnection::open().value();
    ProgramProbe probe(*connection);
    TestProcess program({"/usr/bin/python3", TARVIK_TARGETS "/slow_requests.py"});
    ASSERT_EQ(program.readLine(), "waiting");
    std::string output;
    int looks = 0;
    while (!program.readOutput(output) && output.empty()) {
        const Finding finding = probe.look(program.identifier()).finding;
        program.readOutput(output);
        EXPECT_TRUE(finding != Finding::idle || !output.empty());
        ++looks;
    }
    EXPECT_GT(looks, 3);
    EXPECT_TRUE(mainQueue.runUntil(
        [&] { return probe.look(program.identifier()).finding == Finding::idle; }, 5s));
}

class X11UnreadKeys : public InputFixture, public testing::Test {
  protected:
    /// Runs the loop until `condition` holds; false when it does not within `timeout`.
    bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout) {
        const auto end = std::chrono::steady_clock::now() + timeout;
        while (!condition() && std::chrono::steady_clock::now() < end) {
            linuxdesktop::Deadline turn(loop);
            turn.set(5ms, [this] { loop.quit(); });
            loop.run();
        }
        return condition();
    }
    xcb_window_t frontWindow() {
        std::atomic<linuxdesktop::FrontWindow::Known> known;
        return linuxdesktop::FrontWindow(*connection, known).window();
    }

    std::unique_ptr<XcbConnection> connection = XcbConnection::open().value();
    linuxdesktop::PollLoop loop;
    linuxdesktop::WindowPing ping{*connection};
    linuxdesktop::IbusAnswers answers{loop};
    std::size_t lost = 0;
    std::size_t lostWithWindow = 0;
    const UnreadKeys::Events events{
        [] {}, [this](xcb_window_t /*window*/, std::size_t count) { lost += count; },
        [this](std::size_t count) { lostWithWindow += count; }};
    UnreadKeys unread{*connection, loop, ping, answers, events};
};

// One thread may read the server's messages, and another one has the keys to look up.
TEST_F(X11UnreadKeys, AreNotReadWhileAnotherThreadThanTheReaderWorks) {
    TestProcess program({"/usr/bin/python3", TARVIK_TARGETS "/busy_thread.py"});
    const auto window = static_cast<xcb_window_t>(std::stoul(program.readLine().value()));
    program.write("work\n");
    bool isRead = false;
    unread.add(window, U"ж");
    unread.whenRead(window, [&] { isRead = true; });
    std::string output;
    while (!program.readOutput(output) && output.empty()) {
        runUntil([] { return false; }, 20ms);
        program.readOutput(output);
        EXPECT_TRUE(!isRead || !output.empty());
    }
    EXPECT_TRUE(runUntil([&] { return isRead; }, 10s));
    EXPECT_EQ(lost, 0U);
}

TEST_F(X11UnreadKeys, OfAnUnknownProgramAreNotWaitedForAfterADelayAndKeptWherePossible) {
    bool isRead = false;
    unread.add(XCB_NONE, U"ж");
    unread.whenRead(XCB_NONE, [&] { isRead = true; });
    EXPECT_TRUE(unread.contains(XCB_NONE));
    EXPECT_EQ(unread.characters(), std::set<char32_t>{U'ж'});
    EXPECT_FALSE(isRead);
    EXPECT_TRUE(runUntil([&] { return isRead; }, 3s));
    EXPECT_FALSE(unread.contains(XCB_NONE));
    EXPECT_FALSE(unread.anyWindow());
    EXPECT_TRUE(unread.characters().empty());
    EXPECT_FALSE(unread.isEmpty());
    EXPECT_EQ(lost, 0U);
}

// Nobody reads them, so nothing is to be said, and no text waits for them.
TEST_F(X11UnreadKeys, OfNoWindowAreNeverReportedAsLost) {
    int reports = 0;
    UnreadKeys expiring{
        *connection,
        loop,
        ping,
        answers,
        {[] {}, [&](xcb_window_t, std::size_t) { ++reports; }, [&](std::size_t) { ++reports; }},
        50ms};
    bool isRead = false;
    expiring.add(XCB_NONE, U"ж");
    expiring.whenRead(XCB_NONE, [&] { isRead = true; });
    EXPECT_TRUE(runUntil([&] { return isRead && expiring.isEmpty(); }, 5s));
    EXPECT_EQ(reports, 0);
}

// The program reads the right characters when it goes on after all.
TEST_F(X11UnreadKeys, OfAProgramThatReadsNothingAreReportedOnceAndKeepTheirSymbols) {
    const X11Target terminal(X11Target::Kind::terminal, mainQueue);
    ASSERT_TRUE(comesToFront(terminal));
    const xcb_window_t window = frontWindow();
    UnreadKeys expiring{*connection, loop, ping, answers, events, 300ms};
    int settled = 0;
    terminal.hang();
    user->tap(X11User::qKey);
    expiring.add(window, U"жд");
    expiring.whenRead(window, [&] { ++settled; });
    EXPECT_TRUE(runUntil([&] { return lost == 2; }, 5s));
    EXPECT_EQ(settled, 1);
    EXPECT_FALSE(expiring.contains(window));
    EXPECT_FALSE(expiring.anyWindow());
    EXPECT_TRUE(expiring.characters().empty());
    EXPECT_FALSE(expiring.isEmpty());
    // A recording begins.
    expiring.add(window, U"");
    expiring.add(window, U"п");
    EXPECT_TRUE(runUntil([&] { return lost == 3; }, 5s));
    EXPECT_FALSE(expiring.isEmpty());
    terminal.goOn();
    EXPECT_TRUE(runUntil([&] { return expiring.isEmpty(); }, 5s));
    EXPECT_EQ(lost, 3U);
    EXPECT_EQ(settled, 1);
}

// A program may sleep although it has events, which it handles with the next one.
TEST_F(X11UnreadKeys, ArePingedAgainUntilTheFirstPingIsAnswered) {
    const KeyReader reader;
    const xcb_window_t window = reader.window();
    const auto firstSerial = ping.send(window);
    ASSERT_TRUE(firstSerial);
    xcb_client_message_event_t answer{};
    answer.window = connection->root();
    answer.type = connection->atom("WM_PROTOCOLS");
    answer.data.data32[0] = connection->atom("_NET_WM_PING");
    answer.data.data32[2] = window;
    ASSERT_TRUE(ping.answerIn(answer));
    unread.add(window, U"ж");
    // Nobody hands the answers on.
    EXPECT_TRUE(runUntil([&] { return reader.pings() >= 4; }, 10s));
    EXPECT_TRUE(unread.contains(window));
    unread.handleAnswer({window, *firstSerial + 1});
    EXPECT_TRUE(unread.isEmpty());
    EXPECT_EQ(lost, 0U);
}

// The program needs longer for all keys than the timeout, and answers the earlier pings meanwhile.
TEST_F(X11UnreadKeys, OfASlowProgramAreWaitedForWhileItReadsOn) {
    const X11Target target(X11Target::Kind::gtk3Text, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    const xcb_window_t window = frontWindow();
    UnreadKeys slow{*connection, loop, ping, answers, events, 300ms};
    target.hang();
    slow.add(window, U"ж");
    slow.add(window, U"д");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(runUntil(
                     [&] {
                         // Older than the last ping.
                         slow.handleAnswer({window, 0});
                         return lost != 0 || std::chrono::steady_clock::now() - start > 900ms;
                     },
                     1s) &&
                 lost != 0);
    EXPECT_TRUE(slow.contains(window));
    EXPECT_TRUE(runUntil([&] { return lost == 2; }, 5s));
    target.goOn();
}

// The program sleeps while it waits for its input method, and looks the key up after the answer.
TEST_F(X11UnreadKeys, OfAProgramThatAsksAnInputMethodAreReadOnceTheProgramHasRested) {
    const X11Target terminal(X11Target::Kind::terminal, mainQueue);
    ASSERT_TRUE(comesToFront(terminal));
    const xcb_window_t window = frontWindow();
    constexpr InputMethod method{InputMethod::Kind::unobserved};
    UnreadKeys never{*connection, loop, ping, answers, events, UnreadKeys::maxTimeout, 1h};
    never.add(window, U"ж", method);
    // A recording begins.
    never.add(window, U"");
    unread.add(window, U"ж");
    EXPECT_TRUE(runUntil([&] { return unread.isEmpty(); }, 5s));
    EXPECT_TRUE(never.contains(window));
    const auto start = std::chrono::steady_clock::now();
    unread.add(window, U"ж", method);
    EXPECT_TRUE(runUntil([&] { return unread.isEmpty(); }, 10s));
    EXPECT_GE(std::chrono::steady_clock::now() - start, UnreadKeys::restTime);
    EXPECT_TRUE(never.contains(window));
    EXPECT_EQ(lost, 0U);
}

// A program that never rests, as one that gets answers all the time, may still have most of them to
// read after a burst.
TEST_F(X11UnreadKeys, OfABurstBehindAnInputMethodAreWaitedForWhileTheProgramReadsOn) {
    const TestProcess terminal({"xterm", "-e", "sh", "-c", "while sleep 0.05; do echo; done"});
    ASSERT_TRUE(
        mainQueue.runUntil([&] { return input->frontmostProcess() == terminal.identifier(); }));
    const xcb_window_t window = frontWindow();
    constexpr InputMethod method{InputMethod::Kind::unobserved};
    UnreadKeys expiring{*connection, loop, ping, answers, events, 2s};
    // 150 ms for each.
    const std::u32string burst(30, U'ж');
    expiring.add(window, burst, method);
    unread.add(window, burst, method);
    EXPECT_FALSE(runUntil([&] { return lost != 0 || unread.isEmpty() || expiring.isEmpty(); }, 4s));
}

// The next program often gets the numbers of the last one's windows.
TEST_F(X11UnreadKeys, OfAWindowThatIsGoneAreReportedAndWaitedForNoLonger) {
    const xcb_window_t window = xcb_generate_id(connection->get());
    bool isRead = false;
    unread.add(window, U"ж");
    unread.whenRead(window, [&] { isRead = true; });
    unread.handleDestroyed(window);
    EXPECT_TRUE(isRead);
    EXPECT_FALSE(unread.contains(window));
    EXPECT_TRUE(unread.characters().empty());
    EXPECT_EQ(lost, 0U);
    EXPECT_EQ(lostWithWindow, 1U);
}

// The timeout has reported them already.
TEST_F(X11UnreadKeys, AreReportedOnceWhenTheirWindowGoesAfterTheTimeout) {
    const X11Target terminal(X11Target::Kind::terminal, mainQueue);
    ASSERT_TRUE(comesToFront(terminal));
    const xcb_window_t window = frontWindow();
    UnreadKeys expiring{*connection, loop, ping, answers, events, 50ms};
    terminal.hang();
    user->tap(X11User::qKey);
    expiring.add(window, U"ж");
    EXPECT_TRUE(runUntil([&] { return lost == 1; }, 5s));
    expiring.handleDestroyed(window);
    EXPECT_TRUE(expiring.isEmpty());
    EXPECT_EQ(lostWithWindow, 0U);
}

// Such a terminal draws all the time and reads its keys in between.
TEST_F(X11UnreadKeys, OfATerminalFullOfOutputAreKnownToBeRead) {
    const TestProcess terminal({"xterm", "-e", "yes"});
    ASSERT_TRUE(
        mainQueue.runUntil([&] { return input->frontmostProcess() == terminal.identifier(); }));
    const xcb_window_t window = frontWindow();
    unread.add(window, U"ж");
    EXPECT_TRUE(unread.contains(window));
    EXPECT_TRUE(runUntil([&] { return unread.isEmpty(); }, 10s));
    EXPECT_EQ(lost, 0U);
}

// It reads messages of the server while most keys wait in its own queue for the input method.
TEST_F(X11UnreadKeys, OfABurstBehindAnInputMethodAreNotReadWithTheNextMessages) {
    const TestProcess terminal({"xterm", "-e", "yes"});
    ASSERT_TRUE(
        mainQueue.runUntil([&] { return input->frontmostProcess() == terminal.identifier(); }));
    const xcb_window_t window = frontWindow();
    // 150 ms for each.
    unread.add(window, std::u32string(20, U'ж'), {InputMethod::Kind::unobserved});
    EXPECT_FALSE(runUntil([&] { return unread.isEmpty(); }, 2s));
    EXPECT_TRUE(runUntil([&] { return unread.isEmpty(); }, 20s));
    EXPECT_EQ(lost, 0U);
}

}  // namespace

}  // namespace tarvik::tests
