// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/x11/XwaylandInput.h"
#include "tests/linux/x11/X11Server.h"
#include "tests/linux/x11/X11User.h"
#include "tests/support/Attempts.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SimulatedTime.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::FrontMeans;
using linuxdesktop::FrontWindow;
using linuxdesktop::TypedText;
using linuxdesktop::TypingMeans;
using linuxdesktop::XServer;
using linuxdesktop::XwaylandInput;
using Clock = std::chrono::steady_clock;
using Process = std::optional<platform::ProcessIdentifier>;

// Of ASCII.
std::string utf8(const TypedText& text) {
    return {text.characters.begin(), text.characters.end()};
}

/// The means of the Wayland session.
class SessionMeans final : public TypingMeans, public FrontMeans {
  public:
    bool isAvailable() const override { return true; }
    bool servesXPrograms() const override { return servesAll; }
    void type(TypedText text, std::function<void()> /*onDone*/) override {
        texts.emplace_back(text.process, utf8(text));
    }
    Process frontmostProcess() const override { return front; }

    bool servesAll = false;
    Process front;
    std::vector<std::pair<Process, std::string>> texts;
};

/// An X server that answers when the test says so.
class ScriptedServer final : public XServer {
  public:
    std::optional<std::string> refusal() const override { return std::nullopt; }
    bool isGone() const override { return false; }
    FrontWindow::Known front() const override { return noticed; }
    void askFront(std::function<void(FrontWindow::Known)> onAnswer) override {
        questions.push_back(std::move(onAnswer));
    }
    void typeInto(xcb_window_t window, TypedText text, std::function<void()> /*onDone*/) override {
        texts.push_back({window, text.process, utf8(text)});
    }

    void answer(FrontWindow::Known front) {
        noticed = front;
        for (const auto& onAnswer : std::exchange(questions, {})) {
            onAnswer(front);
        }
    }

    struct Text {
        xcb_window_t window;
        Process process;
        std::string characters;
        bool operator==(const Text&) const = default;
    };
    FrontWindow::Known noticed;
    std::vector<std::function<void(FrontWindow::Known)>> questions;
    std::vector<Text> texts;
};

using Text = ScriptedServer::Text;

constexpr platform::ProcessIdentifier xProgram = 11;
constexpr platform::ProcessIdentifier waylandProgram = 22;
constexpr FrontWindow::Known xWindow{1, xProgram};
constexpr FrontWindow::Known noWindow;

class XwaylandInputTest : public testing::Test {
  protected:
    void type(Process process, std::u32string text) { input->type({process, std::move(text)}, {}); }

    simulated::SimulatedTime time;
    std::shared_ptr<ScriptedServer> server = std::make_shared<ScriptedServer>();
    std::shared_ptr<SessionMeans> session = std::make_shared<SessionMeans>();
    std::shared_ptr<XwaylandInput> input =
        std::make_shared<XwaylandInput>(time, session, session, [this] { return server; });
};

TEST_F(XwaylandInputTest, ATextWaitsForTheServersAnswer) {
    server->noticed = xWindow;
    session->front = xProgram;
    EXPECT_EQ(input->chooseTarget(), xProgram);
    type(xProgram, U"a");
    type(xProgram, U"b");
    EXPECT_TRUE(server->texts.empty());
    EXPECT_TRUE(input->isElsewhere(xProgram));
    server->answer(xWindow);
    EXPECT_EQ(server->texts, (std::vector<Text>{{1, xProgram, "a"}, {1, xProgram, "b"}}));
    EXPECT_FALSE(input->isElsewhere(xProgram));
    type(xProgram, U"c");
    EXPECT_EQ(server->texts.back(), (Text{1, xProgram, "c"}));
    EXPECT_TRUE(session->texts.empty());
}

TEST_F(XwaylandInputTest, AWindowThatTheServerNamesLateGetsTheText) {
    for (const Process told : {Process(waylandProgram), Process()}) {
        server->noticed = noWindow;
        session->front = told;
        EXPECT_EQ(input->chooseTarget(), told);
        type(told, U"a");
        server->answer(xWindow);
        EXPECT_EQ(server->texts.back(), (Text{1, xProgram, "a"}));
        EXPECT_EQ(input->isElsewhere(waylandProgram), told.has_value());
        // The next recording is in the session's own program.
        server->noticed = noWindow;
        input->chooseTarget();
        server->answer(noWindow);
        EXPECT_FALSE(input->isElsewhere(waylandProgram));
        type(told, U"b");
        EXPECT_EQ(session->texts.back(), std::pair(told, std::string("b")));
    }
}

TEST_F(XwaylandInputTest, AProgramOfTheSessionGetsTheTextWhereTheServerHasNoneInFrontAnyMore) {
    server->noticed = xWindow;
    session->front = waylandProgram;
    EXPECT_EQ(input->chooseTarget(), xProgram);
    type(xProgram, U"a");
    server->answer(noWindow);
    EXPECT_TRUE(input->isElsewhere(xProgram));
    EXPECT_EQ(session->texts.back(), std::pair(Process(waylandProgram), std::string("a")));
    EXPECT_TRUE(server->texts.empty());
}

TEST_F(XwaylandInputTest, AServerThatDoesNotAnswerHoldsATextUpForASecond) {
    session->front = waylandProgram;
    EXPECT_EQ(input->chooseTarget(), waylandProgram);
    type(waylandProgram, U"a");
    time.advance(Seconds(0.9));
    EXPECT_TRUE(session->texts.empty());
    time.advance(Seconds(0.2));
    EXPECT_EQ(session->texts.size(), 1U);
    // That tells of a later time.
    server->answer(xWindow);
    type(waylandProgram, U"b");
    EXPECT_EQ(session->texts.size(), 2U);
    EXPECT_TRUE(server->texts.empty());
}

// The compositor may tell the server later than a hotkey comes.
TEST_F(XwaylandInputTest, AServerThatContradictsTheSessionIsAskedAgain) {
    for (const FrontWindow::Known second : {noWindow, xWindow}) {
        server->noticed = xWindow;
        session->front = waylandProgram;
        EXPECT_EQ(input->chooseTarget(), xProgram);
        type(xProgram, U"a");
        server->answer(xWindow);
        EXPECT_TRUE(server->texts.empty());
        EXPECT_LE(session->texts.size(), 1U);
        time.advance(Seconds(0.4));
        server->answer(second);
    }
    EXPECT_EQ(session->texts, (std::vector{std::pair(Process(waylandProgram), std::string("a"))}));
    EXPECT_EQ(server->texts, (std::vector{Text{1, xProgram, "a"}}));
}

// Right after the user has turned to another program nobody may have heard of that.
TEST_F(XwaylandInputTest, AProgramThatTheSessionNamesLateGetsTheText) {
    server->noticed = xWindow;
    EXPECT_EQ(input->chooseTarget(), xProgram);
    type(xProgram, U"a");
    server->answer(xWindow);
    EXPECT_TRUE(server->texts.empty());
    session->front = waylandProgram;
    time.advance(Seconds(0.4));
    server->answer(noWindow);
    EXPECT_EQ(session->texts, (std::vector{std::pair(Process(waylandProgram), std::string("a"))}));
}

// The server has not heard that the user has turned to another program.
TEST_F(XwaylandInputTest, AServerThatHangsIsNotBelievedAgainstTheSession) {
    server->noticed = xWindow;
    session->front = waylandProgram;
    EXPECT_EQ(input->chooseTarget(), xProgram);
    type(xProgram, U"a");
    time.advance(Seconds(1.1));
    EXPECT_TRUE(server->texts.empty());
    ASSERT_EQ(session->texts.size(), 1U);
    EXPECT_EQ(session->texts.back(), std::pair(Process(waylandProgram), std::string("a")));
}

TEST_F(XwaylandInputTest, ATextWaitsInAServerThatHangsWhereTheSessionNamesNobodyElse) {
    for (const Process named : {Process(), Process(xProgram)}) {
        server->noticed = xWindow;
        session->front = named;
        EXPECT_EQ(input->chooseTarget(), xProgram);
        type(xProgram, U"a");
        time.advance(Seconds(1.1));
        EXPECT_EQ(server->texts.back(), (Text{1, xProgram, "a"}));
    }
    EXPECT_EQ(server->texts.size(), 2U);
    EXPECT_TRUE(session->texts.empty());
}

TEST_F(XwaylandInputTest, TheNextRecordingAndTheEndLetATextWaitNoLonger) {
    session->front = waylandProgram;
    input->chooseTarget();
    type(waylandProgram, U"a");
    input->chooseTarget();
    EXPECT_EQ(session->texts.size(), 1U);
    type(waylandProgram, U"b");
    input.reset();
    EXPECT_EQ(session->texts.size(), 2U);
}

TEST_F(XwaylandInputTest, AServerIsNotAskedWhereTheSessionServesItsPrograms) {
    session->servesAll = true;
    session->front = waylandProgram;
    input = std::make_shared<XwaylandInput>(time, session, session, [this] { return server; });
    EXPECT_EQ(input->chooseTarget(), waylandProgram);
    EXPECT_TRUE(server->questions.empty());
    EXPECT_FALSE(input->isElsewhere(waylandProgram));
}

TEST(XwaylandInputOfAHungServer, ARecordingDoesNotWait) {
    EXPECT_TRUE(isWithin(50ms, [] {
        RealTimeQueue mainQueue;
        RecordingLog log;
        X11Server server(mainQueue);
        const X11User program;
        server.hang();
        const auto session = std::make_shared<SessionMeans>();
        const auto start = Clock::now();
        const auto input =
            std::make_shared<XwaylandInput>(mainQueue, log, session, session, nullptr, nullptr);
        input->chooseTarget();
        const auto duration = Clock::now() - start;
        server.goOn();
        return duration;
    }));
}

}  // namespace

}  // namespace tarvik::tests
