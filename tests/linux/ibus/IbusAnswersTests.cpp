// SPDX-License-Identifier: MIT

#include "platform/linux/ibus/IbusAnswers.h"
#include "tests/linux/ibus/IbusFixture.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::IbusAnswers;

constexpr std::uint32_t keyOfA = 30;

class IbusAnswersTest : public IbusFixture {
  protected:
    bool becomesReady() {
        int readyCount = 0;
        return answers.listen([&] { ++readyCount; }) &&
               runUntil([&] { return answers.isReady(); }) && readyCount == 1;
    }
    /// Waits until whenAnswered() has called back.
    bool areAnswered() {
        bool hasAnswered = false;
        answers.whenAnswered([&] { hasAnswered = true; });
        return runUntil([&] { return hasAnswered; });
    }

    IbusAnswers answers{loop};
};

TEST_F(IbusAnswersTest, AreAwaitedForEveryQuestionOfAnotherProgram) {
    choose(layout);
    program->focusIn();
    ASSERT_TRUE(becomesReady());
    EXPECT_TRUE(areAnswered());
    EXPECT_EQ(answers.questionCount(), 0U);
    constexpr int keys = 20;
    for (int i = 0; i < keys; ++i) {
        program->key(keyOfA, 0);
    }
    EXPECT_TRUE(runUntil([&] { return answers.questionCount() == keys; }));
    EXPECT_TRUE(areAnswered());
    EXPECT_GT(answers.lastAnswer(), linuxdesktop::SteadyTime());
    // The program gets the engine's answers, and none from those who listen.
    EXPECT_TRUE(runUntil([&] { return program->answeredKeys == keys; }));
}

TEST_F(IbusAnswersTest, AreNotAwaitedWhenIbusHasEnded) {
    ASSERT_TRUE(becomesReady());
    bool hasAnswered = false;
    answers.whenAnswered([&] { hasAnswered = true; });
    ibus.reset();
    EXPECT_TRUE(runUntil([&] { return hasAnswered && !answers.isReady(); }));
    EXPECT_TRUE(areAnswered());
    startIbus();
    EXPECT_TRUE(becomesReady());
}

TEST_F(IbusAnswersTest, CannotBeHeardWithoutIbus) {
    ibus.reset();
    std::filesystem::remove(folder.path() / "address");
    EXPECT_FALSE(answers.listen([] { ADD_FAILURE() << "Nobody is there"; }));
    EXPECT_FALSE(answers.isReady());
}

TEST_F(IbusAnswersTest, AreHeardForAShortTimeMoreAfterTheEnd) {
    ASSERT_TRUE(becomesReady());
    answers.stop();
    EXPECT_TRUE(answers.isReady());
    EXPECT_TRUE(answers.listen([] { ADD_FAILURE() << "It has listened all along"; }));
    answers.stop();
    EXPECT_TRUE(runUntil([&] { return !answers.isReady(); }));
}

}  // namespace

}  // namespace tarvik::tests
