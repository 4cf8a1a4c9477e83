// SPDX-License-Identifier: MIT

#include <QLabel>
#include <QPushButton>
#include <QTranslator>
#include <map>

#include "platform/linux/windows/QtWindow.h"
#include "tests/linux/windows/SampleWindow.h"
#include "tests/linux/windows/UserInterfaceTest.h"

namespace tarvik::tests {

namespace {

using LayoutTest = UserInterfaceTest;

TEST_F(LayoutTest, RowsEndFlushAtTheRightAndTheNamesLineUp) {
    SampleWindow sample(userInterface);
    const QList<QWidget*> ends = {sample.find<QPushButton>("Save"),
                                  sample.find<QPushButton>("Grant"), sample.separator()};
    for (const QWidget* end : ends) {
        EXPECT_EQ(sample.rectOf(*end).right(), sample.content().width() - 28 - 1);
    }
    const int field = sample.rectOf(*sample.field()).left();
    EXPECT_EQ(field, 28 + 160 + 12);
    EXPECT_EQ(sample.rectOf(*sample.find<QLabel>("✗ Not set")).left(), field);
    EXPECT_EQ(sample.rectOf(*sample.find<QLabel>("✗ Not granted")).left(), field);
    EXPECT_EQ(sample.rectOf(*sample.find<QPushButton>("Restart Tarvik Dictate")).left(), 28);
    EXPECT_LT(sample.find<QPushButton>("Restart Tarvik Dictate")->width(), 300);
    EXPECT_GE(sample.find<QPushButton>("Grant")->width(), 110);
}

TEST_F(LayoutTest, NothingOverlapsAndNoTextIsCutOffAtAnySize) {
    SampleWindow sample(userInterface);
    for (const QSize size : {QSize(990, 635), QSize(830, 555), QSize(1200, 900), QSize(10, 10)}) {
        sample.widget().resize(size);
        QApplication::processEvents();
        const QList<QWidget*> leaves = sample.leaves();
        ASSERT_GT(leaves.size(), 10);
        for (QWidget* leaf : leaves) {
            EXPECT_TRUE(sample.content().rect().contains(sample.rectOf(*leaf)));
            EXPECT_GE(leaf->width(), leaf->minimumSizeHint().width());
            if (const auto* text = qobject_cast<QLabel*>(leaf)) {
                EXPECT_GE(text->height(), text->heightForWidth(text->width()))
                    << text->text().toStdString();
            }
            for (QWidget* other : leaves) {
                EXPECT_TRUE(other == leaf ||
                            !sample.rectOf(*leaf).intersects(sample.rectOf(*other)));
            }
        }
    }
}

TEST_F(LayoutTest, AWindowGrowsWithItsContentUnlessTheUserHasResizedIt) {
    for (const bool isResized : {false, true}) {
        const auto text = userInterface.makeLabel({.text = "one line"});
        const auto window = userInterface.makeWindow(
            {.contentSize = {300, 40},
             .styleMask = platform::titledWindow | platform::resizableWindow});
        window->setContent(text, std::nullopt);
        window->show();
        QWidget& widget = dynamic_cast<linuxdesktop::QtWindow&>(*window).widget();
        if (isResized) {
            widget.resize(250, 50);
        }
        const int before = widget.height();
        text->setText("1\n2\n3\n4\n5\n6\n7\n8");
        if (isResized) {
            QApplication::processEvents();
            EXPECT_EQ(widget.height(), before);
        } else {
            EXPECT_TRUE(runUntil([&] { return widget.height() > before; }));
        }
    }
}

/// Qt's own translation into a language that is written from right to left.
class RightToLeftTranslation final : public QTranslator {
  public:
    QString translate(const char* /*context*/, const char* text, const char* /*hint*/,
                      int /*number*/) const override {
        return qstrcmp(text, "QT_LAYOUT_DIRECTION") == 0 ? QStringLiteral("RTL") : QString();
    }
    bool isEmpty() const override { return false; }
};

TEST_F(LayoutTest, EnglishIsWrittenFromLeftToRightOnEveryDesktop) {
    RightToLeftTranslation translation;
    ASSERT_TRUE(QCoreApplication::installTranslator(&translation));
    QApplication::processEvents();
    SampleWindow sample(userInterface);
    EXPECT_EQ(sample.widget().layoutDirection(), Qt::LeftToRight);
    EXPECT_LT(sample.rectOf(*sample.field()).left(),
              sample.rectOf(*sample.find<QPushButton>("Save")).left());
}

TEST_F(LayoutTest, ALongKeyLeavesTheLayoutAsItWas) {
    SampleWindow sample(userInterface);
    std::map<QWidget*, QRect> before;
    for (QWidget* leaf : sample.leaves()) {
        before[leaf] = sample.rectOf(*leaf);
    }
    sample.field()->insert(QString(10000, u'W'));
    QApplication::processEvents();
    for (QWidget* leaf : sample.leaves()) {
        EXPECT_EQ(sample.rectOf(*leaf), before[leaf]);
    }
}

}  // namespace

}  // namespace tarvik::tests
