// SPDX-License-Identifier: MIT

#include <filesystem>
#include <set>
#include <string>

#include "tests/linux/kwin/GlobalAccelFixture.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

namespace {

using platform::eventHotKeyExistsErr;
using platform::noErr;

/// KRunner has Alt+Space and Alt+F2.
class ForeignShortcutTest : public GlobalAccelFixture {
  protected:
    using Keys = std::set<std::int32_t>;

    ForeignShortcutTest() {
        fake.reset();
        fake.emplace(true, FakeGlobalAccel::altSpace);
    }

    void takeOver() {
        ASSERT_EQ(recorder->add(hold, 1), eventHotKeyExistsErr);
        ASSERT_TRUE(input->canTakeOver());
        input->takeOver();
        ASSERT_TRUE(mainQueue.runUntil([&] { return !input->canTakeOver(); }));
    }
    bool logsOnce(const std::string& line) {
        return mainQueue.runUntil([&] { return log.linesWith(line).size() == 1; });
    }

    const Keys all{FakeGlobalAccel::altSpace, FakeGlobalAccel::altF2};
    const Keys withoutAltSpace{FakeGlobalAccel::altF2};
};

TEST_F(ForeignShortcutTest, NothingIsTakenUnasked) {
    open();
    EXPECT_FALSE(input->canTakeOver());
    EXPECT_EQ(recorder->add(toggle, 2), noErr);
    EXPECT_FALSE(input->canTakeOver());
    EXPECT_EQ(recorder->add(hold, 1), eventHotKeyExistsErr);
    EXPECT_TRUE(input->canTakeOver());
    close();
    EXPECT_EQ(fake->keysOfKRunner(), all);
    EXPECT_FALSE(std::filesystem::exists(settings / "Tarvik"));
}

TEST_F(ForeignShortcutTest, GivesItsKeyUpWhenTheUserAsksAndGetsItBackAtTheEnd) {
    open();
    takeOver();
    EXPECT_EQ(fake->keysOfKRunner(), withoutAltSpace);
    EXPECT_EQ(
        log.linesWith("KRunner, Run Command has given Alt+Space up, and gets it back when the "
                      "application ends")
            .size(),
        1U);
    // Without another registration.
    EXPECT_TRUE(hasActions({{"alt-space", FakeGlobalAccel::altSpace}}));
    EXPECT_TRUE(logsOnce("TarvikDictate: a hotkey is registered now: Alt+Space"));
    EXPECT_EQ(log.linesWith("KDE has given Alt+Space to").size(), 1U);
    fake->press("alt-space");
    EXPECT_TRUE(becomes("P1"));
    close();
    EXPECT_EQ(fake->keysOfKRunner(), all);
    EXPECT_TRUE(fake->actions().empty());
}

TEST_F(ForeignShortcutTest, AnApplicationThatRegistersAgainAfterwardsHasTheHotkeyOnce) {
    open();
    takeOver();
    EXPECT_EQ(recorder->add(hold, 1), noErr);
    EXPECT_TRUE(hasActions({{"alt-space", FakeGlobalAccel::altSpace}}));
    fake->press("alt-space");
    EXPECT_TRUE(becomes("P1"));
}

TEST_F(ForeignShortcutTest, AHotkeyThatNobodyHearsAnyMoreIsNotRegistered) {
    open();
    ASSERT_EQ(recorder->add(hold, 1), eventHotKeyExistsErr);
    recorder->removeHandler();
    input->takeOver();
    ASSERT_TRUE(logsOnce("KRunner, Run Command has given Alt+Space up"));
    // KDE answers in the order of the questions.
    EXPECT_EQ(recorder->add(toggle, 2), noErr);
    EXPECT_TRUE(hasActions({{"alt-shift-space", FakeGlobalAccel::altShiftSpace}}));
}

TEST_F(ForeignShortcutTest, OneProgramGivesBothCombinationsUpAndGetsBothBack) {
    const Keys both{FakeGlobalAccel::altSpace, FakeGlobalAccel::altShiftSpace};
    fake->giveToKRunner(both);
    open();
    EXPECT_EQ(recorder->add(toggle, 2), eventHotKeyExistsErr);
    takeOver();
    EXPECT_TRUE(fake->keysOfKRunner().empty());
    EXPECT_TRUE(hasActions({{"alt-space", FakeGlobalAccel::altSpace},
                            {"alt-shift-space", FakeGlobalAccel::altShiftSpace}}));
    EXPECT_TRUE(logsOnce("a hotkey is registered now: Alt+Space"));
    EXPECT_TRUE(logsOnce("a hotkey is registered now: Alt+Shift+Space"));
    close();
    EXPECT_EQ(fake->keysOfKRunner(), both);
    open();
    EXPECT_EQ(recorder->add(hold, 1), noErr);
    EXPECT_EQ(recorder->add(toggle, 2), noErr);
    close();
    EXPECT_EQ(fake->keysOfKRunner(), both);
}

TEST_F(ForeignShortcutTest, GivesItsKeyUpAgainAtTheNextStart) {
    open();
    takeOver();
    close();
    ASSERT_EQ(fake->keysOfKRunner(), all);
    open();
    EXPECT_EQ(recorder->add(hold, 1), noErr);
    EXPECT_EQ(fake->keysOfKRunner(), withoutAltSpace);
    EXPECT_FALSE(input->canTakeOver());
    close();
    EXPECT_EQ(fake->keysOfKRunner(), all);
}

TEST_F(ForeignShortcutTest, GetsItsKeyBackFromTheRunAfterAKilledOne) {
    // As the killed run has left both.
    open();
    takeOver();
    const std::string note = contentOf(settings / "Tarvik/kde-shortcuts");
    close();
    putFile(settings / "Tarvik/kde-shortcuts", note);
    fake->giveToKRunner(withoutAltSpace);
    fake->leave("alt-space", FakeGlobalAccel::altSpace);
    open();
    EXPECT_EQ(recorder->add(hold, 1), noErr);
    close();
    EXPECT_EQ(fake->keysOfKRunner(), all);
}

TEST_F(ForeignShortcutTest, IsAskedForAgainWhenTheUserHasGivenItTheKey) {
    open();
    takeOver();
    fake->giveToKRunner(all);
    EXPECT_EQ(recorder->add(hold, 1), eventHotKeyExistsErr);
    EXPECT_TRUE(input->canTakeOver());
    close();
    EXPECT_EQ(fake->keysOfKRunner(), all);
    open();
    EXPECT_EQ(recorder->add(hold, 1), eventHotKeyExistsErr);
    EXPECT_EQ(fake->keysOfKRunner(), all);
}

TEST_F(ForeignShortcutTest, KeepsWhatTheUserHasChangedMeanwhile) {
    open();
    takeOver();
    fake->giveToKRunner({'x'});
    close();
    EXPECT_EQ(fake->keysOfKRunner(), (Keys{'x', FakeGlobalAccel::altSpace}));
    // The user takes the key away while the application does not run.
    fake->giveToKRunner({'x'});
    open();
    EXPECT_EQ(recorder->add(hold, 1), noErr);
    close();
    EXPECT_EQ(fake->keysOfKRunner(), Keys{'x'});
}

TEST_F(ForeignShortcutTest, KeepsItsKeyWhereNoNoteCanBeWritten) {
    putFile(settings / "Tarvik", "a file in the place of the folder");
    open();
    ASSERT_EQ(recorder->add(hold, 1), eventHotKeyExistsErr);
    input->takeOver();
    EXPECT_TRUE(mainQueue.runUntil(
        [&] { return log.hasLineWith("KRunner, Run Command keeps Alt+Space"); }));
    EXPECT_TRUE(input->canTakeOver());
    EXPECT_EQ(fake->keysOfKRunner(), all);
}

TEST_F(ForeignShortcutTest, KeepsItsKeyWhereKDEAnswersWithErrors) {
    open();
    ASSERT_EQ(recorder->add(hold, 1), eventHotKeyExistsErr);
    fake->setManner(FakeGlobalAccel::Manner::byErrors);
    input->takeOver();
    EXPECT_TRUE(mainQueue.runUntil(
        [&] { return log.hasLineWith("KRunner, Run Command keeps Alt+Space"); }));
    EXPECT_EQ(fake->keysOfKRunner(), all);
}

TEST_F(ForeignShortcutTest, ANoteThatNobodyUnderstandsTakesNothing) {
    for (const std::string note :
         {"taken", "taken\t134217760", "agreed\tx\torg.kde.krunner.desktop\t_launch\t1 0 0 0",
          "taken\t134217760\torg.kde.krunner.desktop\t_launch\t1 2 3", "\t\t\t\t\n\n"}) {
        putFile(settings / "Tarvik/kde-shortcuts", note);
        open();
        EXPECT_EQ(recorder->add(hold, 1), eventHotKeyExistsErr) << note;
        close();
        EXPECT_EQ(fake->keysOfKRunner(), all) << note;
    }
}

TEST_F(ForeignShortcutTest, TheEndDoesNotWaitForAKWinThatHangs) {
    open();
    takeOver();
    // Unregistering waits for KWin by itself.
    recorder.reset();
    fake->setManner(FakeGlobalAccel::Manner::later);
    EXPECT_LT(timeOf([&] { close(); }), second);
    fake->setManner(FakeGlobalAccel::Manner::properly);
    EXPECT_EQ(fake->keysOfKRunner(), withoutAltSpace);
    // The next run gives the key back.
    open();
    close();
    EXPECT_EQ(fake->keysOfKRunner(), all);
}

/// Runs of processes one after the other.
class KilledForeignShortcutTest : public ForeignShortcutTest {
  protected:
    int run(const std::string& consent, int step) const {
        return TestProcess::run({TARVIK_KWIN_CONSENT, consent, std::to_string(step)}).status;
    }
    /// Kills a run before each of its steps, and has the next one begin and end.
    template <typename Prepare>
    void killEverywhere(const std::string& consent, Prepare prepare) {
        int step = 0;
        int status = -1;
        while (status != 0) {
            std::filesystem::remove_all(settings / "Tarvik");
            fake->giveToKRunner(all);
            prepare();
            ASSERT_EQ(fake->keysOfKRunner(), all);
            status = run(consent, ++step);
            ASSERT_LE(status, 0);
            EXPECT_EQ(run("do-not-ask", 0), 0);
            ASSERT_EQ(fake->keysOfKRunner(), all) << "after a kill before step " << step;
            ASSERT_TRUE(fake->actions().empty()) << "after a kill before step " << step;
        }
        // The run asks, takes, registers, and gives back.
        EXPECT_GT(step, 10);
    }
};

TEST_F(KilledForeignShortcutTest, KeysAreAsBeforeAfterTheNextRun) {
    killEverywhere("ask", [] {});
}

TEST_F(KilledForeignShortcutTest, KeysOfAnEarlierAgreementAreAsBeforeAfterTheNextRun) {
    killEverywhere("do-not-ask", [this] { EXPECT_EQ(run("ask", 0), 0); });
}

}  // namespace

}  // namespace tarvik::tests
