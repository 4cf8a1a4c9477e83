// SPDX-License-Identifier: MIT

#include <csignal>

#include "platform/linux/ibus/IbusTypist.h"
#include "tests/linux/ibus/IbusFixture.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::IbusEngine;
using linuxdesktop::IbusTypist;

constexpr platform::ProcessIdentifier process = 7;

class IbusTypistTest : public IbusFixture {
  protected:
    void SetUp() override {
        choose(layout);
        program->focusIn();
    }

    void type(const std::u32string& text) {
        typist->type({process, text}, 0, [this] { ++typedCount; });
    }
    bool areTyped(int count) {
        return runUntil([this, count] { return typedCount == count; });
    }
    bool becomes(const std::string& text) {
        const bool holds = runUntil([&] { return program->text == text; });
        EXPECT_EQ(program->text, text);
        return holds;
    }

    RecordingLog log;
    int typedCount = 0;
    bool isInFront = true;
    // The look at the field after a piece waits for the test.
    bool keepsSync = false;
    std::function<void()> keptSync;
    std::unique_ptr<IbusTypist> typist;
    std::unique_ptr<IbusEngine> engine = std::make_unique<IbusEngine>(
        loop, [] { return layout; },
        IbusEngine::Handlers{[](const IbusEngine::Key&) {},
                             [this] {
                                 if (typist) {
                                     typist->handleField();
                                 }
                             },
                             [this](const std::string& reason) { typist->handleRefusal(reason); }});

    IbusTypistTest() {
        typist = std::make_unique<IbusTypist>(
            *engine, loop, log,
            IbusTypist::Session{[this](platform::ProcessIdentifier) { return isInFront; },
                                [this](std::function<void()> onDone) {
                                    if (keepsSync) {
                                        keptSync = std::move(onDone);
                                    } else {
                                        onDone();
                                    }
                                }});
    }
};

TEST_F(IbusTypistTest, TypesTextsInTheirOrderAndGivesTheEngineBack) {
    type(U"The quick brown fox, ");
    type(U"gęślą jaźń, ");
    type(U"日本語 😀 👨‍👩‍👧.");
    ASSERT_TRUE(areTyped(3));
    becomes("The quick brown fox, gęślą jaźń, 日本語 😀 👨‍👩‍👧.");
    EXPECT_TRUE(runUntil([this] { return engineInUse() == layout; }));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(IbusTypistTest, TypesLongTextsInPieces) {
    std::u32string text;
    std::string expected;
    while (text.size() < 15000) {
        text += U"zażółć 日本 😀 ";
        expected += "zażółć 日本 😀 ";
    }
    type(text);
    ASSERT_TRUE(areTyped(1));
    becomes(expected);
}

// Firefox takes a commit of one character for a key, and a key with Alt for a shortcut.
TEST_F(IbusTypistTest, LeavesNoCharacterAloneAtTheEndOfALongText) {
    const std::u32string text(501, U'a');
    type(text);
    ASSERT_TRUE(areTyped(1));
    becomes(std::string(501, 'a'));
    EXPECT_GT(program->lastCommit.size(), 1U);
}

TEST_F(IbusTypistTest, WaitsForAFieldThatComesSoon) {
    program->focusOut();
    type(U"later");
    runFor(300ms);
    EXPECT_EQ(program->text, "");
    program->focusIn();
    ASSERT_TRUE(areTyped(1));
    becomes("later");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(IbusTypistTest, TellsOfATextWithoutAField) {
    program->focusOut();
    type(U"nowhere");
    ASSERT_TRUE(areTyped(1));
    EXPECT_EQ(log.lines(), std::vector<std::string>{
                               "TarvikDictate: typed text not delivered: no text field has the "
                               "keyboard (7 characters)"});
    program->focusIn();
    type(U"here");
    ASSERT_TRUE(areTyped(2));
    becomes("here");
}

TEST_F(IbusTypistTest, TypesNothingWhileAnotherProcessIsInFront) {
    isInFront = false;
    type(U"elsewhere");
    ASSERT_TRUE(areTyped(1));
    EXPECT_EQ(log.lines(), std::vector<std::string>{
                               "TarvikDictate: typed text not delivered: process 7 does not have "
                               "the keyboard (9 characters)"});
    runFor(50ms);
    EXPECT_EQ(program->text, "");
}

TEST_F(IbusTypistTest, GoesOnWhenTheProcessComesBackToTheFront) {
    isInFront = false;
    type(U"back");
    runFor(200ms);
    isInFront = true;
    ASSERT_TRUE(areTyped(1));
    becomes("back");
}

TEST_F(IbusTypistTest, TellsOfATextDuringWhichTheFieldChanged) {
    keepsSync = true;
    type(U"somewhere");
    ASSERT_TRUE(runUntil([this] { return static_cast<bool>(keptSync); }));
    program->focusOut();
    ASSERT_TRUE(runUntil([this] { return !engine->hasField(); }));
    keptSync();
    ASSERT_TRUE(areTyped(1));
    EXPECT_EQ(log.lines(), std::vector<std::string>{
                               "TarvikDictate: typed text may have gone to another window, since "
                               "the keyboard did (9 characters)"});
}

TEST_F(IbusTypistTest, TellsOfATextThatAnEngineOfTheUsersOwnKeepsOut) {
    program->registerComposer();
    ASSERT_TRUE(runUntil([this] { return program->isComposerRegistered; }));
    choose("composer");
    type(U"first");
    type(U"second");
    ASSERT_TRUE(areTyped(2));
    EXPECT_EQ(log.linesWith("the input method composer composes text").size(), 2U);
    choose(layout);
    type(U"third");
    ASSERT_TRUE(areTyped(3));
    becomes("third");
}

TEST_F(IbusTypistTest, TellsOfATextThatAStoppedIbusKeepsOut) {
    type(U"a");
    ASSERT_TRUE(areTyped(1));
    ASSERT_TRUE(runUntil([this] { return engineInUse() == layout; }));
    ibus->send(SIGSTOP);
    type(U"lost");
    ASSERT_TRUE(areTyped(2));
    EXPECT_EQ(log.linesWith("not delivered: IBus does not answer (4 characters)").size(), 1U);
    ibus->send(SIGCONT);
    type(U"b");
    ASSERT_TRUE(areTyped(3));
    becomes("ab");
}

TEST_F(IbusTypistTest, TellsOfATextThatIsLeftAtItsEnd) {
    program->focusOut();
    type(U"left");
    typist.reset();
    EXPECT_EQ(typedCount, 1);
    EXPECT_EQ(log.linesWith("not delivered: the application ends (4 characters)").size(), 1U);
    engine.reset();
}

TEST_F(IbusTypistTest, IsIdleOnceEverythingIsTyped) {
    type(U"the last words");
    bool isIdle = false;
    typist->whenIdle([&] {
        EXPECT_EQ(typedCount, 1);
        isIdle = true;
    });
    EXPECT_TRUE(runUntil([&] { return isIdle; }));
}

}  // namespace

}  // namespace tarvik::tests
