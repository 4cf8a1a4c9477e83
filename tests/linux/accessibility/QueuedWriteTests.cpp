// SPDX-License-Identifier: MIT

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "insertion/InsertionStep.h"
#include "platform/linux/input/LinuxKeyboardEvents.h"
#include "tests/linux/accessibility/FakeProgramFixture.h"

namespace tarvik::tests {

namespace {

/// Records what is typed.
class RecordedTyping final : public linuxdesktop::TypingMeans {
  public:
    explicit RecordedTyping(platform::MainQueue& mainQueue) : mainQueue_(mainQueue) {}

    bool isAvailable() const override { return true; }
    void type(linuxdesktop::TypedText text, std::function<void()> onDone) override {
        typed += text.characters;
        if (onDone) {
            mainQueue_.async(std::move(onDone));
        }
    }

    std::u32string typed;

  private:
    platform::MainQueue& mainQueue_;
};

/// Texts that follow one whose program does not reply in time.
class AtspiQueuedWrite : public FakeProgramFixture {
  protected:
    void SetUp() override {
        service = std::make_unique<linuxdesktop::AtspiAccessibility>(
            std::make_shared<linuxdesktop::AccessibilityWorker>(log), mainQueue,
            linuxdesktop::AtspiAccessibility::Input{
                [this] { return processInFront; },
                [] { return true; },
                [this](platform::ProcessIdentifier process) {
                    return keyboard->isTypingInto(process);
                },
                {[this](platform::ProcessIdentifier process) { return keyboard->hold(process); },
                 [this](platform::ProcessIdentifier process, std::size_t units) {
                     keyboard->release(process, units);
                 }}});
    }

    // The service uses the keyboard.
    void TearDown() override { service.reset(); }

    /// Inserts as the core does; what that blocks for.
    Seconds insert(const std::string& text, const platform::AXUIElementRef& into) {
        const auto start = std::chrono::steady_clock::now();
        insertPiece(text, {into, target->identifier()}, *service, *keyboard);
        return std::chrono::steady_clock::now() - start;
    }
    Seconds insert(const std::string& text) { return insert(text, element); }

    /// Ends the silence of the program; false while text still waits after that.
    bool settlesAfterWaking() {
        EXPECT_EQ(target->command("wake"), "done");
        return mainQueue.runUntil([this] { return !keyboard->isTypingInto(*processInFront); });
    }

    RecordedTyping typing{mainQueue};
    std::shared_ptr<linuxdesktop::LinuxKeyboardEvents> keyboard =
        std::make_shared<linuxdesktop::LinuxKeyboardEvents>(&typing, mainQueue, log);
};

TEST_F(AtspiQueuedWrite, FollowsThePendingOneAtTheCaret) {
    open("silent-on-query", "begin end", {"--select", "6:6"});
    EXPECT_LT(insert("one "), half);
    EXPECT_LT(insert("😀 two "), atOnce);
    EXPECT_LT(insert("three "), atOnce);
    EXPECT_TRUE(settlesAfterWaking());
    // Texts that wait together are one write.
    EXPECT_EQ(insertions(), "2");
    insert("four ");
    EXPECT_EQ(target->text(), "begin one 😀 two three four end");
    EXPECT_EQ(typing.typed, U"");
    EXPECT_TRUE(log.lines().empty());
}

// LibreOffice does that at its first emoji.
TEST_F(AtspiQueuedWrite, FollowsInAProgramThatFallsSilentOverEveryText) {
    open("silent-on-insertion", "begin ");
    insert("one ");
    EXPECT_LT(insert("two "), atOnce);
    EXPECT_EQ(target->command("wake"), "done");
    EXPECT_TRUE(mainQueue.runUntil([this] { return insertions() == "2"; }));
    EXPECT_LT(insert("three"), atOnce);
    EXPECT_EQ(target->command("behave honest"), "done");
    EXPECT_TRUE(settlesAfterWaking());
    EXPECT_EQ(target->text(), "begin one two three");
    EXPECT_EQ(typing.typed, U"");
}

// A busy machine may stop a program for a third of a second again and again.
TEST_F(AtspiQueuedWrite, WaitsForAProgramThatFallsSilentMoreThanOnce) {
    open("silent-again", "begin ");
    insert("one ");
    insert("two ");
    for (const bool isLast : {false, false, true}) {
        // The queries have failed by then.
        EXPECT_TRUE(mainQueue.runUntil([this] { return target->command("asked") == "1"; }));
        EXPECT_EQ(target->command(isLast ? "behave honest" : "wake"), "done");
    }
    EXPECT_TRUE(settlesAfterWaking());
    EXPECT_EQ(target->text(), "begin one two ");
    EXPECT_EQ(typing.typed, U"");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(AtspiQueuedWrite, IsTypedBehindThePendingOneThatIsRefused) {
    open("silent-and-refusing", "as it was");
    insert("one ");
    insert("😀 two ");
    insert("three");
    EXPECT_TRUE(settlesAfterWaking());
    EXPECT_EQ(typing.typed, U"one 😀 two three");
    EXPECT_EQ(target->text(), "as it was");
    EXPECT_EQ(insertions(), "1");
    // The accessibility thread writes the line when the main thread has the outcome.
    EXPECT_TRUE(becomesTrue(
        [this] { return log.hasLineWith("does not take the text; its text will be typed"); },
        timeout));
}

TEST_F(AtspiQueuedWrite, IsTypedBehindThePendingOneWhoseProgramEnds) {
    open("silent-on-insertion", "as it was");
    insert("one ");
    insert("two");
    target->command("quit");
    EXPECT_TRUE(mainQueue.runUntil([this] { return typing.typed == U"one two"; }));
}

TEST_F(AtspiQueuedWrite, IsTypedBehindTextThatIsTyped) {
    open("silent-on-query", "begin ");
    insert("one ");
    insert("two ", nullptr);
    insert("three");
    EXPECT_TRUE(settlesAfterWaking());
    EXPECT_EQ(typing.typed, U"two three");
    EXPECT_EQ(target->text(), "begin one ");
}

TEST_F(AtspiQueuedWrite, GoesIntoItsOwnField) {
    open("silent-on-query", "first: ");
    const platform::AXUIElementRef second = focusSecondField();
    insert("one");
    insert("two", second);
    EXPECT_EQ(target->command("read"), "");
    EXPECT_TRUE(settlesAfterWaking());
    EXPECT_EQ(target->text(), "first: one");
    EXPECT_EQ(target->command("read"), "two");
    EXPECT_EQ(typing.typed, U"");
}

// Each text takes the program 0.3 s, which is in time.
TEST_F(AtspiQueuedWrite, IsJoinedWithOthersForAProgramThatTakesLongForEach) {
    open("slow-writing", "Begin");
    EXPECT_GT(insert(" one"), Seconds(0.1));
    std::string expected = "Begin one";
    Seconds blocked{0};
    for (int number = 0; number < 50; ++number) {
        const std::string piece = " word" + std::to_string(number);
        blocked += insert(piece);
        expected += piece;
    }
    EXPECT_LT(blocked, half);
    EXPECT_TRUE(mainQueue.runUntil([this] { return !keyboard->isTypingInto(*processInFront); }));
    EXPECT_EQ(target->text(), expected);
    EXPECT_EQ(typing.typed, U"");
    EXPECT_LT(std::stoi(insertions()), 10);
    EXPECT_TRUE(log.lines().empty());
    // Nothing waits any more, so the status is awaited again.
    EXPECT_GT(insert(" end"), Seconds(0.1));
    EXPECT_EQ(target->text(), expected + " end");
}

}  // namespace

}  // namespace tarvik::tests
