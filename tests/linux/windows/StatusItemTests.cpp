// SPDX-License-Identifier: MIT

#include <QIcon>
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cstdlib>

#include "platform/linux/windows/QtStatusItem.h"
#include "tests/linux/windows/Contrast.h"
#include "tests/linux/windows/UserInterfaceTest.h"

namespace tarvik::tests {

namespace {

using StatusItemTest = UserInterfaceTest;

/// The visible part of an icon on a panel.
struct Impression {
    /// The smallest rectangle around all pixels that stand out from the panel.
    QRect extent;
    int pixels = 0;
};

QImage drawn(const QIcon& icon, int side, const QColor& panel) {
    QImage image(side, side, QImage::Format_ARGB32);
    image.fill(panel);
    QPainter painter(&image);
    painter.drawPixmap(0, 0, icon.pixmap(side, side));
    return image;
}

Impression impressionOf(const QImage& image, const QColor& panel) {
    Impression seen;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (contrast(image.pixelColor(x, y), panel) >= 3) {
                seen.extent |= QRect(x, y, 1, 1);
                ++seen.pixels;
            }
        }
    }
    return seen;
}

int solidPixels(const QImage& image, const QColor& color) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            count += image.pixelColor(x, y) == color ? 1 : 0;
        }
    }
    return count;
}

const QColor recordingRed(255, 59, 48);
const QColor darkPanel(0x35, 0x35, 0x35);

TEST_F(StatusItemTest, TheIdleIconIsAnOutlineThatIsReadableOnEveryPanel) {
    linuxdesktop::QtStatusItem item(clock, log);
    item.setImage(userInterface.systemSymbol("mic", "Tarvik Dictate"));
    EXPECT_EQ(item.description(), "Tarvik Dictate");
    for (const QColor& panel :
         {QColor(Qt::white), QColor(0xef, 0xef, 0xef), darkPanel, QColor(Qt::black)}) {
        for (const int side : {16, 22, 32}) {
            const QImage image = drawn(item.icon(), side, panel);
            const auto [extent, pixels] = impressionOf(image, panel);
            const std::string which = panel.name().toStdString() + " " + std::to_string(side);
            EXPECT_GE(extent.height(), side * 8 / 10) << which;
            EXPECT_GE(extent.width(), side / 2) << which;
            EXPECT_GE(pixels, extent.width() * extent.height() / 5) << which;
            // The microphone is an outline, so its middle is empty.
            EXPECT_LT(contrast(image.pixelColor(side / 2, side / 3), panel), 2) << which;
            // The icon does not depend on the colours of windows.
            QApplication::setPalette(QPalette(Qt::black, Qt::black));
            EXPECT_EQ(drawn(item.icon(), side, panel), image) << which;
            QApplication::setPalette(QPalette());
        }
    }
}

TEST_F(StatusItemTest, WhileRecordingTheIconIsFilledInRed) {
    linuxdesktop::QtStatusItem item(clock, log);
    item.setImage(userInterface.systemSymbol("mic.fill", "Tarvik Dictate"));
    item.setContentTintColor(platform::SystemColor::red);
    EXPECT_EQ(item.description(), "Tarvik Dictate – recording");
    for (const QColor& panel : {QColor(Qt::white), darkPanel}) {
        for (const int side : {16, 22, 32}) {
            const QImage image = drawn(item.icon(), side, panel);
            const auto [extent, pixels] = impressionOf(image, panel);
            EXPECT_GE(extent.height(), side * 8 / 10) << side;
            EXPECT_GE(solidPixels(image, recordingRed), extent.width() * extent.height() / 4)
                << side;
            EXPECT_EQ(image.pixelColor(side / 2, side / 3), recordingRed) << side;
        }
    }
}

TEST_F(StatusItemTest, TheIdleIconIsAsLargeAsTheRedOneAndHasAStemOnEveryPanel) {
    linuxdesktop::QtStatusItem item(clock, log);
    for (const QColor& panel :
         {QColor(Qt::white), QColor(0xef, 0xef, 0xef), darkPanel, QColor(Qt::black)}) {
        for (const int side : {16, 22, 24, 32, 48}) {
            item.setImage(userInterface.systemSymbol("mic", "Tarvik Dictate"));
            item.setContentTintColor(std::nullopt);
            const QImage idle = drawn(item.icon(), side, panel);
            item.setImage(userInterface.systemSymbol("mic.fill", "Tarvik Dictate"));
            item.setContentTintColor(platform::SystemColor::red);
            const QRect red = impressionOf(drawn(item.icon(), side, panel), panel).extent;
            const QRect extent = impressionOf(idle, panel).extent;
            const std::string which = panel.name().toStdString() + " " + std::to_string(side);
            EXPECT_LE(std::abs(extent.width() - red.width()), 1 + side / 12) << which;
            EXPECT_LE(std::abs(extent.height() - red.height()), 1 + side / 12) << which;
            // Between the holder and the foot.
            double stem = 0;
            for (int x = side / 3; x <= side * 2 / 3; ++x) {
                stem = std::max(stem, contrast(idle.pixelColor(x, side * 5 / 6), panel));
            }
            EXPECT_GE(stem, 3) << which;
        }
    }
}

TEST_F(StatusItemTest, ARefusedKeyIsToldInWordsAndNotInTheIcon) {
    const auto item =
        std::dynamic_pointer_cast<linuxdesktop::QtStatusItem>(userInterface.makeStatusItem());
    item->setImage(userInterface.systemSymbol("mic", "Tarvik Dictate"));
    const QImage before = drawn(item->icon(), 22, darkPanel);
    userInterface.showKeyAnswer(false);
    EXPECT_EQ(item->description(), "Tarvik Dictate – the speech service refuses the API key");
    EXPECT_EQ(drawn(item->icon(), 22, darkPanel), before);
    item->setContentTintColor(platform::SystemColor::red);
    EXPECT_EQ(item->description(),
              "Tarvik Dictate – recording – the speech service refuses the API key");
    item->setContentTintColor(std::nullopt);
    userInterface.showKeyAnswer(true);
    EXPECT_EQ(item->description(), "Tarvik Dictate");
}

TEST_F(StatusItemTest, ATitleStandsInForAMissingPicture) {
    linuxdesktop::QtStatusItem item(clock, log);
    for (const QColor& panel : {QColor(Qt::white), darkPanel}) {
        item.setContentTintColor(std::nullopt);
        item.setTitle("○");
        EXPECT_GT(impressionOf(drawn(item.icon(), 32, panel), panel).pixels, 20);
        item.setContentTintColor(platform::SystemColor::red);
        item.setTitle("●");
        EXPECT_GT(solidPixels(drawn(item.icon(), 32, panel), recordingRed), 20);
    }
}

}  // namespace

}  // namespace tarvik::tests
