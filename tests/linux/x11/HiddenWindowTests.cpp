// SPDX-License-Identifier: MIT

#include <functional>
#include <memory>
#include <utility>

#include "tests/linux/x11/InputFixture.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;

/// Text for a window that has to be brought to the front.
class HiddenWindowTest : public InputFixture, public testing::Test {
  protected:
    explicit HiddenWindowTest(std::function<void()> hideFrontWindow)
        : hide_(std::move(hideFrontWindow)) {}

    void SetUp() override {
        target = std::make_unique<X11Target>(X11Target::Kind::gtk3Text, mainQueue);
        ASSERT_TRUE(comesToFront(*target));
        hide_();
        front = std::make_unique<X11Target>(X11Target::Kind::gtk3Text, mainQueue);
        ASSERT_TRUE(comesToFront(*front));
    }

    std::unique_ptr<X11Target> target;
    std::unique_ptr<X11Target> front;

  private:
    const std::function<void()> hide_;
};

/// The window is on another workspace.
class X11HiddenWindow : public HiddenWindowTest {
  protected:
    X11HiddenWindow() : HiddenWindowTest(moveFrontWindowAway) {}
};

/// The window is on the same workspace, where the other window can be seen all the time.
class X11MinimisedWindow : public HiddenWindowTest {
  protected:
    X11MinimisedWindow() : HiddenWindowTest(minimiseFrontWindow) {}
};

TEST_F(X11HiddenWindow, ReachesAWindowOnAnotherWorkspaceAndComesBack) {
    type("far away", target->process());
    EXPECT_TRUE(becomes(*target, "far away"));
    EXPECT_TRUE(comesToFront(*front));
}

// A text for another process does not wait for it.
TEST_F(X11HiddenWindow, WaitsForAWindowThatIsSlowToComeToTheFront) {
    {
        const StoppedWindowManager busy;
        type("late", target->process());
        type("at once", front->process());
        EXPECT_TRUE(becomes(*front, "at once"));
        type(", and more", target->process());
        mainQueue.runFor(700ms);
    }
    EXPECT_TRUE(becomes(*target, "late, and more"));
    EXPECT_TRUE(comesToFront(*front));
    EXPECT_FALSE(log.hasLineWith("not delivered"));
}

// The window manager sets the focus by the time of the request, and the server ignores that time
// once somebody has set the focus later.
TEST_F(X11HiddenWindow, TypesNothingElseWhileTheFocusIsOnItsWayBack) {
    target->hang();
    type("later", target->process());
    ASSERT_TRUE(comesToFront(*target));
    {
        const StoppedWindowManager busy;
        type("when it is back", front->process());
        // A program that reads nothing has the focus for 0.3 s.
        mainQueue.runFor(3s);
        EXPECT_EQ(front->text(), "");
    }
    EXPECT_TRUE(becomes(*front, "when it is back"));
    // A focus that was borrowed for the text would be given back by now.
    mainQueue.runFor(800ms);
    EXPECT_EQ(input->chooseTarget(), front->process());
    user->tap(X11User::qKey);
    EXPECT_TRUE(becomes(*front, "when it is backq"));
    target->goOn();
    EXPECT_TRUE(becomes(*target, "later"));
    EXPECT_TRUE(comesToFront(*front));
}

// The user types on in the window that is still to be seen.
TEST_F(X11MinimisedWindow, GivesTheFocusBackWithoutTheWindowManager) {
    target->hang();
    type("later", target->process());
    ASSERT_TRUE(comesToFront(*target));
    {
        const StoppedWindowManager busy;
        mainQueue.runFor(800ms);
        user->tap(X11User::qKey);
        EXPECT_TRUE(becomes(*front, "q"));
        type("!", front->process());
    }
    EXPECT_TRUE(becomes(*front, "q!"));
    EXPECT_TRUE(comesToFront(*front));
    user->tap(X11User::qKey);
    EXPECT_TRUE(becomes(*front, "q!q"));
    target->goOn();
    EXPECT_TRUE(becomes(*target, "later"));
    EXPECT_TRUE(comesToFront(*front));
}

TEST_F(X11HiddenWindow, SaysSoWhenAWindowDoesNotComeToTheFrontInTime) {
    const auto start = std::chrono::steady_clock::now();
    {
        const StoppedWindowManager busy;
        type("never", target->process());
        EXPECT_TRUE(mainQueue.runUntil(
            [&] {
                return log.hasLineWith("TarvikDictate: typed text not delivered: process " +
                                       std::to_string(target->process()) +
                                       " did not come to the front (5 characters)");
            },
            45s));
    }
    EXPECT_GE(std::chrono::steady_clock::now() - start, 30s);
    type("x", front->process());
    EXPECT_TRUE(becomes(*front, "x"));
}

}  // namespace

}  // namespace tarvik::tests
