// SPDX-License-Identifier: MIT

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
using ControlTest = UserInterfaceTest;

TEST_F(ControlTest, TabReachesEveryControlInTheOrderOfTheEyeAndScrollsToIt) {
    SampleWindow sample(userInterface);
    sample.widget().resize(830, 555);
    QApplication::setActiveWindow(&sample.widget());
    EXPECT_TRUE(runUntil([&] { return sample.field()->hasFocus(); }));
    const QList<QWidget*> expected = {sample.field(), sample.find<QPushButton>("Save"),
                                      sample.find<QPushButton>("Grant"),
                                      sample.find<QCheckBox>("Launch at login"),
                                      sample.find<QPushButton>("Restart Tarvik Dictate")};
    for (QWidget* control : expected) {
        EXPECT_EQ(QApplication::focusWidget(), control);
        QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
        QApplication::sendEvent(QApplication::focusWidget(), &tab);
        QWidget* next = QApplication::focusWidget();
        EXPECT_EQ(next->visibleRegion().boundingRect().size(), next->size()) << "not scrolled to";
    }
    EXPECT_EQ(QApplication::focusWidget(), sample.field());
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

TEST_F(ControlTest, ASecureFieldShowsNeitherItsTextNorGivesItAway) {
    SampleWindow sample(userInterface);
    sample.field()->setText("secret");
    EXPECT_NE(sample.field()->displayText(), "secret");
    EXPECT_EQ(sample.field()->echoMode(), QLineEdit::Password);
}

}  // namespace

}  // namespace tarvik::tests
