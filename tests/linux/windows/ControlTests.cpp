// SPDX-License-Identifier: MIT

#include <QAbstractButton>
#include <QAccessible>
#include <QCheckBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "tests/linux/windows/SampleWindow.h"
#include "tests/linux/windows/UserInterfaceTest.h"

namespace tarvik::tests {

namespace {

/// Controls by keyboard and for a screen reader.
class ControlTest : public UserInterfaceTest {
  protected:
    /// Presses a key in the active window.
    static void press(int key, const QString& text = {}) {
        QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text);
        QApplication::sendEvent(QApplication::focusWidget(), &down);
        QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier, text);
        QApplication::sendEvent(QApplication::focusWidget(), &up);
    }
    static void pressTab() { press(Qt::Key_Tab); }
    bool activate(QWidget& window) {
        window.activateWindow();
        return runUntil([&] { return window.isActiveWindow(); });
    }
};

TEST_F(ControlTest, TabReachesEveryControlInTheOrderOfTheEyeAndScrollsToIt) {
    SampleWindow sample(userInterface);
    sample.widget().resize(830, 555);
    ASSERT_TRUE(activate(sample.widget()));
    pressTab();
    const QList<QWidget*> expected = {sample.field(), sample.find<QPushButton>("Save"),
                                      sample.find<QPushButton>("Grant"),
                                      sample.find<QCheckBox>("Launch at login"),
                                      sample.find<QPushButton>("Restart Tarvik Dictate")};
    for (QWidget* control : expected) {
        EXPECT_EQ(QApplication::focusWidget(), control);
        pressTab();
        QWidget* next = QApplication::focusWidget();
        EXPECT_EQ(next->visibleRegion().boundingRect().size(), next->size()) << "not scrolled to";
    }
    EXPECT_EQ(QApplication::focusWidget(), sample.field());
}

TEST_F(ControlTest, TheFirstShiftTabReachesTheLastControlAndScrollsToIt) {
    SampleWindow sample(userInterface);
    sample.widget().resize(830, 555);
    ASSERT_TRUE(activate(sample.widget()));
    press(Qt::Key_Backtab);
    const auto* last = sample.find<QPushButton>("Restart Tarvik Dictate");
    EXPECT_EQ(QApplication::focusWidget(), last);
    EXPECT_EQ(last->visibleRegion().boundingRect().size(), last->size());
}

TEST_F(ControlTest, EveryControlHasALetterOfItsOwn) {
    SampleWindow sample(userInterface);
    QStringList letters;
    for (const QAbstractButton* control : sample.content().findChildren<QAbstractButton*>()) {
        letters += control->shortcut().toString();
        EXPECT_TRUE(letters.back().startsWith("Alt+")) << control->text().toStdString();
    }
    EXPECT_EQ(letters.size(), 4);
    EXPECT_EQ(letters.removeDuplicates(), 0) << letters.join(' ').toStdString();
}

TEST_F(ControlTest, NoControlHasTheFocusWhenAWindowAppearsSoThatKeysDoNothing) {
    SampleWindow sample(userInterface);
    for (int times = 0; times < 2; ++times) {
        ASSERT_TRUE(activate(sample.widget()));
        ASSERT_EQ(QApplication::focusWidget(), sample.widget().findChild<QScrollArea*>());
        press(Qt::Key_K, "k");
        press(Qt::Key_Space, " ");
        press(Qt::Key_Return, "\r");
        EXPECT_EQ(sample.field()->text(), "");
        EXPECT_EQ(sample.saves, 0);
        // The focus of the first time must not stay for the second.
        sample.field()->setFocus();
        sample.window().close();
        sample.window().show();
    }
}

TEST_F(ControlTest, ReplacedContentHasNoFocusEitherAndTheFirstTabReachesItsFirstControl) {
    const auto window = userInterface.makeWindow({.contentSize = {400, 200}});
    auto& widget = dynamic_cast<linuxdesktop::QtWindow&>(*window).widget();
    for (const char* title : {"Visit", "Visit again"}) {
        const auto visit = userInterface.makeButton({.title = title});
        const auto later = userInterface.makeButton({.title = "Maybe later"});
        window->setContent(userInterface.makeStack({.views = {visit, later}}), std::nullopt);
        window->show();
        ASSERT_TRUE(activate(widget));
        ASSERT_EQ(QApplication::focusWidget(), widget.findChild<QScrollArea*>()) << title;
        pressTab();
        EXPECT_EQ(QApplication::focusWidget(), dynamic_cast<QWidget*>(visit.get())) << title;
    }
}

TEST_F(ControlTest, ReturnAndSpacePressTheButtonThatHasTheFocus) {
    SampleWindow sample(userInterface);
    for (const int key : {Qt::Key_Return, Qt::Key_Space}) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
        QApplication::sendEvent(sample.find<QPushButton>("Save"), &press);
        QApplication::sendEvent(sample.find<QPushButton>("Save"), &release);
    }
    EXPECT_EQ(sample.saves, 2);
}

TEST_F(ControlTest, AScreenReaderHasANameForEveryControl) {
    SampleWindow sample(userInterface);
    const auto nameOf = [](QWidget* widget) {
        return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name).toStdString();
    };
    EXPECT_EQ(nameOf(sample.field()), "Deepgram API key");
    EXPECT_TRUE(QAccessible::queryAccessibleInterface(sample.field())->state().passwordEdit);
    EXPECT_EQ(nameOf(sample.find<QPushButton>("Save")), "Save");
    EXPECT_EQ(nameOf(sample.find<QPushButton>("Grant")), "Grant Accessibility");
    EXPECT_EQ(nameOf(sample.find<QCheckBox>("Launch at login")), "Launch at login");
    EXPECT_EQ(nameOf(sample.find<QLabel>("✗ Not set")), "✗ Not set");
}

TEST_F(ControlTest, AScreenReaderHearsTheStateBesideAControlAndItsChange) {
    SampleWindow sample(userInterface);
    const auto descriptionOf = [](QWidget* widget) {
        return QAccessible::queryAccessibleInterface(widget)
            ->text(QAccessible::Description)
            .toStdString();
    };
    QWidget* grant = sample.find<QPushButton>("Grant");
    EXPECT_EQ(descriptionOf(grant), "✗ Not granted");
    dynamic_cast<linuxdesktop::QtLabel&>(*sample.find<QLabel>("✗ Not granted"))
        .setText("✓ Granted");
    EXPECT_EQ(descriptionOf(grant), "✓ Granted");
    // The state of the key has a row of its own.
    auto& keyStatus = dynamic_cast<linuxdesktop::QtLabel&>(*sample.find<QLabel>("✗ Not set"));
    EXPECT_EQ(descriptionOf(sample.field()), "✗ Not set");
    keyStatus.setText("✓ Saved");
    EXPECT_EQ(descriptionOf(sample.field()), "✓ Saved");
    EXPECT_EQ(descriptionOf(sample.find<QPushButton>("Save")), "✓ Saved");
    EXPECT_EQ(descriptionOf(sample.find<QCheckBox>("Launch at login")), "");
}

TEST_F(ControlTest, AScreenReaderKnowsTheLabelOfAFieldAndTheTextOfTheWindow) {
    SampleWindow sample(userInterface);
    const auto relations = QAccessible::queryAccessibleInterface(sample.field())->relations();
    ASSERT_EQ(relations.size(), 1);
    EXPECT_EQ(relations.front().first->object(), sample.find<QLabel>("Deepgram API key"));
    EXPECT_TRUE(sample.widget().accessibleDescription().startsWith("1.  Click Grant"));
    sample.window().setContent(
        userInterface.makeLabel(
            {.text = "Another page", .wrapping = platform::LabelWrapping::always}),
        std::nullopt);
    // The label is the content itself.
    EXPECT_EQ(sample.widget().accessibleDescription(), "Another page");
}

TEST_F(ControlTest, AtTwiceTheTextOnASmallScreenTabReachesTheFieldAndShowsIt) {
    const QFont usual = QApplication::font();
    QFont large = usual;
    large.setPointSizeF(2 * usual.pointSizeF());
    QApplication::setFont(large);
    SampleWindow sample(userInterface);
    sample.widget().resize(1366, 740);
    ASSERT_TRUE(activate(sample.widget()));
    pressTab();
    EXPECT_EQ(QApplication::focusWidget(), sample.field());
    const QRect seen = sample.field()->visibleRegion().boundingRect();
    EXPECT_EQ(seen.height(), sample.field()->height());
    EXPECT_GE(seen.width(), 380);
    QApplication::setFont(usual);
}

TEST_F(ControlTest, ASecureFieldShowsNeitherItsTextNorGivesItAway) {
    SampleWindow sample(userInterface);
    sample.field()->setText("secret");
    EXPECT_NE(sample.field()->displayText(), "secret");
    EXPECT_EQ(sample.field()->echoMode(), QLineEdit::Password);
}

}  // namespace

}  // namespace tarvik::tests
