// SPDX-License-Identifier: MIT

#include <QBackingStore>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/windows/UserAction.h"
#include "tests/linux/windows/ManagedWindowTest.h"
#include "tests/linux/windows/SampleWindow.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

namespace {

/// Windows on a display with a window manager, which puts its frame around a window only after the
/// window has appeared.
class X11WindowTest : public ManagedWindowTest {
  protected:
    platform::Rect screen() { return userInterface.mainScreenVisibleFrame().value(); }

    bool isSettled(SampleWindow& sample) {
        return runUntil([&] {
            return program.activeWindow() == sample.widget().winId() &&
                   sample.widget().isActiveWindow() &&
                   !program.property(frameWindow(sample), "_NET_FRAME_EXTENTS").empty();
        });
    }
    /// Brings a window to the front as the user's choice in the menu does.
    static void bringForward(SampleWindow& sample) {
        const linuxdesktop::UserAction choice;
        sample.window().orderFrontRegardless();
    }
    bool isAbove(SampleWindow& sample) {
        const auto states = program.property(frameWindow(sample), "_NET_WM_STATE");
        return std::count(states.begin(), states.end(), program.atom("_NET_WM_STATE_ABOVE")) == 1;
    }
    static xcb_window_t frameWindow(SampleWindow& sample) {
        return static_cast<xcb_window_t>(sample.widget().winId());
    }
    static double distanceToRight(const platform::Rect& frame, const platform::Rect& area) {
        return area.origin.x + area.size.width - frame.origin.x - frame.size.width;
    }
    static double distanceToTop(const platform::Rect& frame, const platform::Rect& area) {
        return area.origin.y + area.size.height - frame.origin.y - frame.size.height;
    }
    void putTopRight(SampleWindow& sample) {
        const platform::Size size = sample.window().frame().size;
        sample.window().setFrameOrigin(
            {screen().origin.x + screen().size.width - size.width - 20,
             screen().origin.y + screen().size.height - size.height - 20});
    }
};

TEST_F(X11WindowTest, AWindowStandsWhereItWasPutOnceTheFrameIsKnown) {
    SampleWindow sample(userInterface);
    sample.window().close();
    // The position must not depend on whether the frame is known by now.
    putTopRight(sample);
    sample.window().show();
    bringForward(sample);
    ASSERT_TRUE(isSettled(sample));
    EXPECT_GT(sample.window().frame().size.height, sample.widget().height());
    EXPECT_TRUE(runUntil([&] {
        const platform::Rect frame = sample.window().frame();
        return distanceToRight(frame, screen()) == 20 && distanceToTop(frame, screen()) == 20;
    }));
}

TEST_F(X11WindowTest, TheFirstPlaceIsRightAlthoughNothingIsKnownOfTheFrame) {
    const auto window = userInterface.makeWindow(
        {.contentSize = {500, 300}, .styleMask = platform::titledWindow, .title = "First"});
    const platform::Size size = window->frame().size;
    window->setFrameOrigin({screen().size.width - size.width - 20, 20});
    window->show();
    window->orderFrontRegardless();
    EXPECT_TRUE(runUntil([&] { return window->frame().size.height > 300; }));
    EXPECT_TRUE(runUntil([&] {
        const platform::Rect frame = window->frame();
        return distanceToRight(frame, screen()) == 20 && frame.origin.y == 20;
    })) << window->frame().origin.x
        << " " << window->frame().origin.y;
}

TEST_F(X11WindowTest, AWindowThatIsCentredWhileItAppearsIsInTheMiddleWithItsFrame) {
    const auto window = userInterface.makeWindow(
        {.contentSize = {520, 360}, .styleMask = platform::titledWindow, .title = "Centred"});
    window->setFrameOrigin({10, 10});
    window->show();
    window->center();
    window->orderFrontRegardless();
    const auto isCentred = [&] {
        const platform::Rect frame = window->frame();
        return frame.size.height > 360 &&
               std::abs(distanceToTop(frame, screen()) - frame.origin.y) <= 1 &&
               std::abs(distanceToRight(frame, screen()) - frame.origin.x) <= 1;
    };
    EXPECT_TRUE(runUntil(isCentred)) << window->frame().origin.x << " " << window->frame().origin.y;
}

TEST_F(X11WindowTest, AUserCanMoveTheWindowAndItStaysThere) {
    SampleWindow sample(userInterface);
    bringForward(sample);
    ASSERT_TRUE(isSettled(sample));
    const TestProcess moving(
        {"xdotool", "windowmove", std::to_string(sample.widget().winId()), "33", "44"});
    EXPECT_TRUE(runUntil([&] { return sample.widget().geometry().topLeft() == QPoint(33, 44); }));
    SampleWindow other(userInterface);
    bringForward(other);
    ASSERT_TRUE(isSettled(other));
    bringForward(sample);
    ASSERT_TRUE(isSettled(sample));
    EXPECT_EQ(sample.widget().geometry().topLeft(), QPoint(33, 44));
}

TEST_F(X11WindowTest, ItCanBeMadeAsSmallAsWasAskedForAndNoSmaller) {
    SampleWindow sample(userInterface);
    bringForward(sample);
    ASSERT_TRUE(isSettled(sample));
    const TestProcess resizing(
        {"xdotool", "windowsize", std::to_string(sample.widget().winId()), "10", "10"});
    EXPECT_TRUE(runUntil([&] { return sample.widget().size() == QSize(830, 555); }));
    EXPECT_GT(sample.widget().findChild<QScrollArea*>()->verticalScrollBar()->maximum(), 0);
}

TEST_F(X11WindowTest, AFloatingWindowIsAboveAndOnEveryDesktopEachTimeItIsShown) {
    SampleWindow sample(userInterface);
    for (int times = 0; times < 2; ++times) {
        sample.window().show();
        EXPECT_TRUE(runUntil([&] {
            return program.property(frameWindow(sample), "_NET_WM_DESKTOP") ==
                   std::vector<std::uint32_t>{0xFFFFFFFF};
        }));
        EXPECT_TRUE(runUntil([&] { return isAbove(sample); }));
        sample.window().close();
        EXPECT_TRUE(runUntil(
            [&] { return program.property(frameWindow(sample), "_NET_WM_DESKTOP").empty(); }));
    }
}

TEST_F(X11WindowTest, AWindowThatCannotBeResizedSaysSo) {
    const auto window = userInterface.makeWindow({.contentSize = {520, 360}, .styleMask = 7});
    auto& widget = dynamic_cast<linuxdesktop::QtWindow&>(*window).widget();
    window->show();
    const auto allowed = [&] {
        return program.property(static_cast<xcb_window_t>(widget.winId()),
                                "_NET_WM_ALLOWED_ACTIONS");
    };
    const auto has = [&](const char* action) {
        const auto actions = allowed();
        return std::count(actions.begin(), actions.end(), program.atom(action)) == 1;
    };
    EXPECT_TRUE(runUntil([&] { return !allowed().empty(); }));
    EXPECT_TRUE(has("_NET_WM_ACTION_CLOSE"));
    EXPECT_TRUE(has("_NET_WM_ACTION_MINIMIZE"));
    EXPECT_FALSE(has("_NET_WM_ACTION_RESIZE"));
    EXPECT_FALSE(has("_NET_WM_ACTION_MAXIMIZE_HORZ"));
    EXPECT_EQ(widget.size(), QSize(520, 360));
}

TEST_F(X11WindowTest, ADarkWindowAsksForADarkTitleBar) {
    for (const platform::RgbColor& background : {platform::black, platform::white}) {
        const auto window = userInterface.makeWindow({.contentSize = {520, 360},
                                                      .styleMask = platform::titledWindow,
                                                      .titlebarAppearsTransparent = true,
                                                      .isTitleHidden = true,
                                                      .backgroundColor = background});
        auto& widget = dynamic_cast<linuxdesktop::QtWindow&>(*window).widget();
        window->show();
        const bool isBlack = background == platform::black;
        EXPECT_TRUE(runUntil([&] {
            return program.text(static_cast<xcb_window_t>(widget.winId()), "_GTK_THEME_VARIANT") ==
                   (isBlack ? "dark" : "");
        }));
        EXPECT_EQ(widget.palette().color(QPalette::Window),
                  QColor(isBlack ? Qt::black : Qt::white));
    }
}

TEST_F(X11WindowTest, AWindowIsNeverLargerThanTheScreenAndScrolls) {
    const auto window = userInterface.makeWindow({.contentSize = {990, 635}, .styleMask = 15});
    std::string text;
    for (int line = 0; line < 200; ++line) {
        text += "line\n";
    }
    window->setContent(
        userInterface.makeLabel({.text = text, .wrapping = platform::LabelWrapping::always}),
        std::nullopt);
    // The position of a smaller window; this one reaches beyond the screen.
    window->setFrameOrigin({20, -20});
    window->show();
    window->orderFrontRegardless();
    auto& widget = dynamic_cast<linuxdesktop::QtWindow&>(*window).widget();
    EXPECT_TRUE(runUntil([&] { return window->frame().size.height > widget.height(); }));
    EXPECT_TRUE(runUntil([&] {
        const platform::Rect frame = window->frame();
        return frame.size.height <= screen().size.height && distanceToTop(frame, screen()) >= 0 &&
               frame.origin.y >= 0;
    }));
    EXPECT_GT(widget.findChild<QScrollArea*>()->verticalScrollBar()->maximum(), 0);
}

TEST_F(X11WindowTest, ControlWAndEscapeClose) {
    for (const char* closing : {"ctrl+w", "Escape"}) {
        SampleWindow sample(userInterface);
        bringForward(sample);
        ASSERT_TRUE(isSettled(sample));
        TestProcess keys({"xdotool", "key", "Tab", "x", closing});
        EXPECT_TRUE(runUntil([&] { return sample.closings == 1; })) << closing;
        keys.waitForEnd();
        EXPECT_FALSE(sample.window().isVisible());
        EXPECT_EQ(sample.field()->text(), "x");
    }
}

TEST_F(X11WindowTest, AClosedWindowKeepsNoPixelsAndIsDrawnAnew) {
    SampleWindow sample(userInterface);
    const auto pixels = [&] { return sample.widget().backingStore()->size(); };
    for (int times = 0; times < 2; ++times) {
        bringForward(sample);
        ASSERT_TRUE(isSettled(sample));
        EXPECT_TRUE(runUntil([&] { return pixels() == sample.widget().size(); }));
        sample.window().close();
        EXPECT_TRUE(runUntil([&] { return pixels().width() <= 1; }));
    }
}

TEST_F(X11WindowTest, AltAndALetterPressTheControlWhateverHasTheFocus) {
    SampleWindow sample(userInterface);
    bringForward(sample);
    ASSERT_TRUE(isSettled(sample));
    const TestProcess withoutFocus({"xdotool", "key", "alt+s"});
    EXPECT_TRUE(runUntil([&] { return sample.saves == 1; }));
    const TestProcess inTheField({"xdotool", "key", "Tab", "x", "alt+s"});
    EXPECT_TRUE(runUntil([&] { return sample.saves == 2; }));
    EXPECT_EQ(sample.field()->text(), "x");
}

/// Another program, in which the user types.
class X11TypingTest : public X11WindowTest {
  protected:
    X11TypingTest() {
        program.movePointerAway();
        terminal.emplace(std::vector<std::string>{"xterm", "-geometry", "80x10+100+100", "-title",
                                                  folder.path(), "-e", "sh", "-c",
                                                  "stty raw -echo; exec cat > '" + typed() + "'"});
        EXPECT_TRUE(runUntil([&] { return hasKeyboard() && std::filesystem::exists(typed()); }));
    }

    bool hasKeyboard() { return program.activeTitle() == folder.path(); }
    std::string typed() { return folder / "typed"; }
    /// Whether `window` is above the windows of all programs.
    bool isInFront(SampleWindow& sample) {
        const auto stacked = program.property(program.root(), "_NET_CLIENT_LIST_STACKING");
        return !stacked.empty() && stacked.back() == frameWindow(sample);
    }
    /// Types `text` and checks that the other program gets it.
    void checkTyping(const std::string& text) {
        expected_ += text;
        // A program that is killed in the middle of a stroke leaves a key down.
        EXPECT_EQ(TestProcess::run({"xdotool", "type", text}).status, 0);
        EXPECT_TRUE(runUntil([&] { return contentOf(typed()) == expected_; })) << text;
        EXPECT_TRUE(hasKeyboard());
    }

    std::optional<TestProcess> terminal;

  private:
    std::string expected_;
};

TEST_F(X11TypingTest, AWindowForWhichTheUserHasAskedComesToTheFrontWithTheKeyboard) {
    SampleWindow sample(userInterface);
    bringForward(sample);
    EXPECT_TRUE(isSettled(sample));
    EXPECT_TRUE(isInFront(sample));
}

TEST_F(X11TypingTest, AnotherWindowComesToTheFrontWithoutTheKeyboard) {
    SampleWindow sample(userInterface);
    sample.window().orderFrontRegardless();
    application.activateIgnoringOtherApps();
    EXPECT_TRUE(runUntil([&] { return isInFront(sample); }));
    checkTyping("first ");

    // Closed and shown again.
    sample.window().close();
    sample.window().show();
    sample.window().orderFrontRegardless();
    EXPECT_TRUE(runUntil([&] { return isInFront(sample); }));
    checkTyping("again ");
}

TEST_F(X11TypingTest, AFloatingWindowIsAboveUntilTheUserTurnsToAnotherWindow) {
    const std::string terminalWindow = std::to_string(program.activeWindow());
    SampleWindow sample(userInterface);
    for (const bool isShownAnew : {false, true}) {
        sample.window().show();
        EXPECT_TRUE(runUntil([&] { return isAbove(sample); })) << isShownAnew;
        // The user has not turned to another window yet.
        checkTyping("typed on ");
        EXPECT_TRUE(isAbove(sample)) << isShownAnew;
        bringForward(sample);
        ASSERT_TRUE(isSettled(sample));
        EXPECT_TRUE(isAbove(sample)) << isShownAnew;
        const TestProcess turning({"xdotool", "windowactivate", terminalWindow});
        EXPECT_TRUE(runUntil([&] { return hasKeyboard() && !isAbove(sample); })) << isShownAnew;
        EXPECT_TRUE(runUntil([&] { return !isInFront(sample); })) << isShownAnew;
    }
}

TEST_F(X11TypingTest, AFloatingWindowIsNoLongerAboveAfterAVisitThatItNoticesOnlyAtTheEnd) {
    const std::string terminalWindow = std::to_string(program.activeWindow());
    SampleWindow sample(userInterface);
    sample.window().show();
    ASSERT_TRUE(runUntil([&] { return isAbove(sample); }));
    // The application does nothing in the meantime.
    const auto turning = TestProcess::run({"xdotool", "windowactivate", "--sync",
                                           std::to_string(frameWindow(sample)), "windowactivate",
                                           "--sync", terminalWindow});
    ASSERT_EQ(turning.status, 0);
    EXPECT_TRUE(runUntil([&] { return hasKeyboard() && !isAbove(sample); }));
}

TEST_F(X11TypingTest, AMinimisedWindowComesBackWithoutTheKeyboard) {
    SampleWindow sample(userInterface);
    bringForward(sample);
    ASSERT_TRUE(isSettled(sample));
    const TestProcess minimising(
        {"xdotool", "windowminimize", std::to_string(sample.widget().winId())});
    ASSERT_TRUE(runUntil([&] { return sample.widget().isMinimized() && hasKeyboard(); }));
    sample.window().show();
    sample.window().orderFrontRegardless();
    EXPECT_TRUE(runUntil([&] { return isInFront(sample) && !sample.widget().isMinimized(); }));
    checkTyping("typed on");
    EXPECT_EQ(sample.closings, 0);
}

}  // namespace

}  // namespace tarvik::tests
