// SPDX-License-Identifier: MIT

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "tests/linux/windows/ManagedWindowTest.h"
#include "tests/linux/windows/SampleWindow.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

namespace {

class AlertTest : public ManagedWindowTest {
  protected:
    /// Opens the window of another program, and waits until it has the keyboard.
    void openOtherWindow() {
        const std::string title = folder.path();
        program.movePointerAway();
        other.emplace(std::vector<std::string>{"xterm", "-geometry", "80x10+100+100", "-title",
                                               title, "-e", "sleep", "600"});
        EXPECT_TRUE(runUntil([&] { return program.activeTitle() == title; }));
    }

    platform::AlertAnswer ask() {
        platform::Alert alert;
        alert.messageText = "Deepgram API Key";
        alert.fieldText = "stored key";
        alert.fieldWidth = 360;
        alert.fieldHeight = 24;
        alert.buttons = {"Save", "Cancel"};
        // The alert must not stay up for good when keys reach another window.
        mainQueue.asyncAfter(Seconds(10), [] {
            if (QWidget* window = QApplication::activeModalWidget()) {
                window->close();
            }
        });
        const platform::AlertAnswer answer = userInterface.runModal(alert);
        if (keys) {
            // A program that is killed in the middle of a stroke leaves a key down.
            keys->waitForEnd();
        }
        return answer;
    }

    /// Runs `command`, which presses keys, once the alert has the keyboard.
    void pressWhenActive(const std::string& command) {
        mainQueue.asyncAfter(Seconds(0.01), [this, command] {
            const QWidget* alert = QApplication::activeModalWidget();
            if (alert == nullptr || !alert->isActiveWindow() ||
                program.activeWindow() != alert->winId()) {
                pressWhenActive(command);
                return;
            }
            selected = alert->findChild<QLineEdit*>()->selectedText().toStdString();
            keys.emplace(std::vector<std::string>{"sh", "-c", command});
        });
    }

    /// Calls `then` as soon as the field of the alert holds `text`.
    void whenTextIs(const std::string& text, std::function<void(const QWidget& alert)> then) {
        mainQueue.asyncAfter(Seconds(0.01), [this, text, then = std::move(then)]() mutable {
            const QWidget* alert = QApplication::activeModalWidget();
            if (alert != nullptr && alert->findChild<QLineEdit*>()->text().toStdString() == text) {
                then(*alert);
            } else {
                whenTextIs(text, std::move(then));
            }
        });
    }

    std::optional<TestProcess> other;
    std::optional<TestProcess> keys;
    std::string selected;
};

TEST_F(AlertTest, TheAlertTakesTheKeyboardFromAnotherProgramWithItsTextSelected) {
    openOtherWindow();
    pressWhenActive("xdotool type new && xdotool key Return");
    const platform::AlertAnswer answer = ask();
    EXPECT_EQ(selected, "stored key");
    EXPECT_EQ(answer.code, platform::alertFirstButtonReturn);
    EXPECT_EQ(answer.fieldText, "new");
}

TEST_F(AlertTest, TheAlertStaysAboveAFloatingWindowThatIsClicked) {
    SampleWindow sample(userInterface);
    sample.window().center();
    sample.window().orderFrontRegardless();
    // The click is on the window and left of the alert; both are centred.
    pressWhenActive("xdotool mousemove 200 400 click 1 && xdotool type n && xdotool key Return");
    const platform::AlertAnswer answer = ask();
    EXPECT_EQ(answer.code, platform::alertFirstButtonReturn);
    EXPECT_EQ(answer.fieldText, "n");
    EXPECT_TRUE(sample.window().isVisible());
}

TEST_F(AlertTest, EscapeIsCancel) {
    openOtherWindow();
    pressWhenActive("xdotool key Escape");
    EXPECT_EQ(ask().code, platform::alertFirstButtonReturn + 1);
}

TEST_F(AlertTest, TheEditingShortcutsWorkInTheField) {
    openOtherWindow();
    pressWhenActive(
        "xdotool key ctrl+c && xdotool key End && xdotool key ctrl+v && xdotool key ctrl+z && "
        "xdotool key ctrl+shift+z && xdotool key ctrl+v && xdotool key ctrl+a && xdotool key "
        "ctrl+x "
        "&& xdotool key ctrl+v && xdotool key Return");
    EXPECT_EQ(ask().fieldText, "stored keystored keystored key");
}

TEST_F(AlertTest, AVeryLongKeyIsTakenWholeAndLeavesTheAlertAsItWas) {
    const std::string longKey(40000, 'k');
    QApplication::clipboard()->setText(QString::fromStdString(longKey));
    QSize before;
    QSize after;
    mainQueue.async([&] { before = QApplication::activeModalWidget()->size(); });
    whenTextIs(longKey, [&](const QWidget& alert) {
        after = alert.size();
        keys->waitForEnd();
        pressWhenActive("xdotool key Return");
    });
    pressWhenActive("xdotool key ctrl+v");
    // EXPECT_EQ would print the whole text.
    EXPECT_TRUE(ask().fieldText == longKey);
    EXPECT_TRUE(before.isValid());
    EXPECT_EQ(after, before);
}

}  // namespace

}  // namespace tarvik::tests
