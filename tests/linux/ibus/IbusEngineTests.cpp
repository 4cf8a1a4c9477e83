// SPDX-License-Identifier: MIT

#include <csignal>
#include <vector>

#include "platform/linux/ibus/IbusEngine.h"
#include "tests/linux/ibus/IbusFixture.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::IbusEngine;

constexpr std::uint32_t altCode = 56;
constexpr std::uint32_t spaceCode = 57;
constexpr std::uint32_t altState = 1U << 3;
constexpr std::uint32_t upState = 1U << 30;

class IbusEngineTest : public IbusFixture {
  protected:
    IbusEngineTest() { start(); }

    void start() {
        engine.reset();
        engine = std::make_unique<IbusEngine>(
            loop, [this] { return configured; },
            IbusEngine::Handlers{
                [this](const IbusEngine::Key& key) { keys.push_back(key); }, [] {},
                [this](const std::string& reason) { refusals.push_back(reason); },
                [this](bool isThere) { presence += isThere ? "back " : "gone "; }});
    }
    void acquire() {
        engine->acquire();
        ASSERT_TRUE(runUntil([this] { return engine->hasField(); }));
    }
    void release() {
        engine->release();
        waitUntilIdle();
    }
    void waitUntilIdle() {
        bool isIdle = false;
        engine->whenIdle([&] { isIdle = true; });
        EXPECT_TRUE(runUntil([&] { return isIdle; }));
    }
    std::filesystem::path note() const { return folder.path() / "tarvik-dictate-previous-engine"; }

    std::string configured = layout;
    std::vector<IbusEngine::Key> keys;
    std::vector<std::string> refusals;
    std::string presence;
    std::unique_ptr<IbusEngine> engine;
};

TEST_F(IbusEngineTest, CommitsIntoTheFieldAndPutsTheUsersEngineBack) {
    choose(layout);
    program->focusIn();
    acquire();
    EXPECT_EQ(engineInUse(), own);
    engine->commit("Zażółć – 日本語 😀 👨‍👩‍👧");
    EXPECT_TRUE(runUntil([this] {
        return program->text == "Zażółć – 日本語 😀 👨‍👩‍👧";
    })) << program->text;
    release();
    EXPECT_EQ(engineInUse(), layout);
    EXPECT_TRUE(refusals.empty());
}

// IBus drops the engine in use with the engine of a program that leaves.
TEST_F(IbusEngineTest, LeavesTheUsersEngineInPlaceAtItsEnd) {
    for (const bool isUsed : {false, true}) {
        choose("xkb:us:dvorak:eng");
        program->focusIn();
        EXPECT_EQ(engine->connect(), std::nullopt);
        if (isUsed) {
            acquire();
            engine->release();
        }
        bool isDone = false;
        engine->end([&] { isDone = true; });
        ASSERT_TRUE(runUntil([&] { return isDone; }));
        start();
        runFor(200ms);
        EXPECT_EQ(engineInUse(), "xkb:us:dvorak:eng") << isUsed;
        EXPECT_FALSE(std::filesystem::exists(note()));
    }
}

TEST_F(IbusEngineTest, AnIdleProcessThatIsKilledLeavesTheEngineForTheNextStart) {
    choose("xkb:us:dvorak:eng");
    EXPECT_EQ(engine->connect(), std::nullopt);
    waitUntilIdle();
    start();
    ASSERT_TRUE(runUntil([this] { return engineInUse() == "none"; }));
    EXPECT_EQ(engine->connect(), std::nullopt);
    EXPECT_TRUE(runUntil([this] { return engineInUse() == "xkb:us:dvorak:eng"; }));
}

TEST_F(IbusEngineTest, StaysUntilItsLastUserIsGone) {
    choose(layout);
    program->focusIn();
    acquire();
    engine->acquire();
    engine->release();
    runFor(100ms);
    EXPECT_EQ(engineInUse(), own);
    release();
    EXPECT_EQ(engineInUse(), layout);
}

TEST_F(IbusEngineTest, AQuickChangeOfMindLeavesTheUsersEngine) {
    choose(layout);
    program->focusIn();
    for (int i = 0; i < 20; ++i) {
        engine->acquire();
        engine->release();
    }
    waitUntilIdle();
    EXPECT_EQ(engineInUse(), layout);
}

// IBus gives an engine without a field the field of nobody, whose texts go nowhere.
TEST_F(IbusEngineTest, HasNoFieldWhileNoProgramHasOne) {
    choose(layout);
    engine->acquire();
    ASSERT_TRUE(runUntil([this] { return engineInUse() == own; }));
    runFor(100ms);
    EXPECT_FALSE(engine->hasField());
    program->focusIn();
    EXPECT_TRUE(runUntil([this] { return engine->hasField(); }));
    const auto count = engine->fieldCount();
    program->focusOut();
    EXPECT_TRUE(runUntil([this] { return !engine->hasField(); }));
    EXPECT_GT(engine->fieldCount(), count);
    release();
}

TEST_F(IbusEngineTest, SeesKeysGoUpAndLetsThemPass) {
    choose(layout);
    program->focusIn();
    acquire();
    program->key(spaceCode, altState | upState);
    program->key(altCode, altState | upState);
    ASSERT_TRUE(runUntil([this] { return keys.size() == 2 && program->answeredKeys == 2; }));
    EXPECT_EQ(keys[0].code, spaceCode);
    EXPECT_TRUE(keys[0].isUp);
    EXPECT_TRUE(keys[0].hasAlt);
    EXPECT_EQ(keys[1].code, altCode);
    release();
}

TEST_F(IbusEngineTest, SendsATapOfControlToTheProgram) {
    choose(layout);
    program->focusIn();
    acquire();
    engine->tapControl();
    EXPECT_TRUE(runUntil([this] { return program->forwarded == "29 29u "; })) << program->forwarded;
    release();
}

TEST_F(IbusEngineTest, LeavesAnEngineThatComposesAlone) {
    program->registerComposer();
    ASSERT_TRUE(runUntil([this] { return program->isComposerRegistered; }));
    choose("composer");
    ASSERT_EQ(engineInUse(), "composer");
    engine->acquire();
    ASSERT_TRUE(runUntil([this] { return !refusals.empty(); }));
    EXPECT_EQ(refusals.front(), "the input method composer composes text");
    EXPECT_EQ(engineInUse(), "composer");
    release();
    EXPECT_EQ(engineInUse(), "composer");
    // The user goes back to a keyboard layout.
    choose(layout);
    program->focusIn();
    acquire();
    release();
}

TEST_F(IbusEngineTest, WithoutAnEngineOfIbusTheConfiguredOneCounts) {
    ASSERT_EQ(engineInUse(), "none");
    program->focusIn();
    acquire();
    release();
    EXPECT_EQ(engineInUse(), layout);
}

TEST_F(IbusEngineTest, WithoutAnEngineOfIbusAConfiguredComposerIsLeftAlone) {
    configured = "libpinyin";
    engine->acquire();
    ASSERT_TRUE(runUntil([this] { return !refusals.empty(); }));
    EXPECT_EQ(refusals.front(), "the input method libpinyin composes text");
    EXPECT_EQ(engineInUse(), "none");
}

TEST_F(IbusEngineTest, AnEngineThatTheUserChoosesMeanwhileStays) {
    choose(layout);
    program->focusIn();
    acquire();
    constexpr const char* other = "xkb:us:dvorak:eng";
    choose(other);
    // The use goes on, in the place of the new engine.
    ASSERT_TRUE(runUntil([this] { return engine->hasField() && engineInUse() == own; }));
    release();
    EXPECT_EQ(engineInUse(), other);
}

TEST_F(IbusEngineTest, AKilledProcessLeavesAnEngineThatTheNextStartPutsBack) {
    choose("xkb:us:dvorak:eng");
    program->focusIn();
    acquire();
    // Nothing is given back, as after a kill.
    start();
    ASSERT_TRUE(std::filesystem::exists(note()));
    EXPECT_EQ(engine->connect(), std::nullopt);
    EXPECT_TRUE(runUntil([this] { return engineInUse() == "xkb:us:dvorak:eng"; })) << engineInUse();
}

TEST_F(IbusEngineTest, AnEngineThatTheUserChoseAfterAKillStays) {
    choose(layout);
    program->focusIn();
    acquire();
    engine.reset();
    choose("xkb:us:dvorak:eng");
    start();
    engine->connect();
    waitUntilIdle();
    EXPECT_EQ(engineInUse(), "xkb:us:dvorak:eng");
}

// The end of the one may overlap with the start of the other.
TEST_F(IbusEngineTest, ASecondEngineLeavesIbusAlive) {
    choose(layout);
    program->focusIn();
    acquire();
    release();
    auto first = std::move(engine);
    start();
    acquire();
    first.reset();
    runFor(100ms);
    engine->commit("second");
    EXPECT_TRUE(runUntil([this] { return program->text == "second"; }));
    release();
    acquire();
    engine->commit(" again");
    EXPECT_TRUE(runUntil([this] { return program->text == "second again"; }));
    release();
    EXPECT_EQ(engineInUse(), layout);
    EXPECT_TRUE(refusals.empty());
}

TEST_F(IbusEngineTest, AnIbusThatEndsIsFoundAgain) {
    choose(layout);
    program->focusIn();
    acquire();
    ibus->kill();
    ASSERT_TRUE(runUntil([this] { return !refusals.empty(); }));
    EXPECT_EQ(refusals, std::vector<std::string>{"IBus is gone"});
    EXPECT_FALSE(engine->hasField());
    engine->release();
    startIbus();
    choose(layout);
    program->focusIn();
    acquire();
    release();
    EXPECT_EQ(engineInUse(), layout);
}

TEST_F(IbusEngineTest, IsInItsPlaceAgainWhenIbusIsBackDuringAUse) {
    choose(layout);
    program->focusIn();
    acquire();
    ibus->kill();
    ASSERT_TRUE(runUntil([this] { return presence == "gone "; }));
    startIbus();
    ASSERT_TRUE(runUntil([this] { return presence == "gone back "; }));
    program->focusIn();
    EXPECT_TRUE(runUntil([this] { return engine->hasField(); }));
    engine->commit("again");
    EXPECT_TRUE(runUntil([this] { return program->text == "again"; })) << program->text;
    release();
    EXPECT_EQ(engineInUse(), layout);
    EXPECT_EQ(refusals, std::vector<std::string>{"IBus is gone"});
}

TEST_F(IbusEngineTest, AnIbusThatDoesNotAnswerCostsOneRefusal) {
    choose(layout);
    ASSERT_EQ(engine->connect(), std::nullopt);
    waitUntilIdle();
    ibus->send(SIGSTOP);
    engine->acquire();
    ASSERT_TRUE(runUntil([this] { return !refusals.empty(); }));
    EXPECT_EQ(refusals, std::vector<std::string>{"IBus does not answer"});
    engine->release();
    ibus->send(SIGCONT);
    program->focusIn();
    acquire();
    release();
    EXPECT_EQ(engineInUse(), layout);
}

TEST_F(IbusEngineTest, ASessionWithoutIbusIsARefusal) {
    ibus->kill();
    std::filesystem::remove(folder.path() / "address");
    engine->acquire();
    EXPECT_EQ(refusals, std::vector<std::string>{"IBus does not run in this session"});
    release();
}

}  // namespace

}  // namespace tarvik::tests
