// SPDX-License-Identifier: MIT

#include <QCheckBox>
#include <QImage>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <algorithm>
#include <vector>

#include "platform/linux/windows/QtAppearance.h"
#include "platform/linux/windows/QtWindow.h"
#include "tests/linux/windows/Contrast.h"
#include "tests/linux/windows/UserInterfaceTest.h"

namespace tarvik::tests {

namespace {

/// Text and controls under light and dark themes.
using ThemeTest = UserInterfaceTest;

TEST_F(ThemeTest, EverySystemColourIsLegibleOnLightAndDarkWindows) {
    using enum platform::SystemColor;
    for (const QColor& window : {QColor(Qt::white), QColor(0xef, 0xef, 0xef), darkWindow}) {
        for (const platform::SystemColor color :
             {platform::SystemColor::label, secondaryLabel, tertiaryLabel, green, red}) {
            EXPECT_GE(contrast(linuxdesktop::qtColor(color, themed(window)), window), 4.5)
                << window.name().toStdString() << " " << static_cast<int>(color);
        }
    }
}

TEST_F(ThemeTest, TextOnABackgroundOfItsOwnIsLegibleUnderEveryTheme) {
    for (const QColor& window : {QColor(Qt::white), darkWindow}) {
        for (const QColor& background : {QColor(10, 10, 10), QColor(250, 250, 250)}) {
            const QPalette palette = linuxdesktop::paletteOn(background, themed(window));
            EXPECT_EQ(palette.color(QPalette::Window), background);
            EXPECT_GE(contrast(palette.color(QPalette::WindowText), background), 4.5);
            EXPECT_GE(
                contrast(palette.color(QPalette::ButtonText), palette.color(QPalette::Button)),
                4.5);
        }
    }
}

TEST_F(ThemeTest, APlaceholderIsLegibleUnderEveryThemeAndWeakerThanTheText) {
    const auto made = userInterface.makeTextField({.placeholder = "Paste your Deepgram API key"});
    auto& field = dynamic_cast<QLineEdit&>(*made);
    const auto placeholder = [&] {
        return contrast(field.palette().color(QPalette::PlaceholderText),
                        field.palette().color(QPalette::Base));
    };
    for (const QColor& window : {QColor(Qt::white), darkWindow, QColor(0xef, 0xef, 0xef)}) {
        QPalette palette = themed(window);
        // Some desktops describe every colour but this one.
        palette.setColor(QPalette::PlaceholderText, Qt::black);
        QApplication::setPalette(palette);
        EXPECT_TRUE(runUntil([&] { return placeholder() >= 4.5; })) << window.name().toStdString();
        EXPECT_LT(placeholder(), 0.8 * contrast(field.palette().color(QPalette::Text),
                                                field.palette().color(QPalette::Base)));
    }
}

TEST_F(ThemeTest, AnEmptyBoxCanBeSeenUnderEveryTheme) {
    const auto made = userInterface.makeCheckbox({.title = "Launch at login"});
    auto& box = dynamic_cast<QCheckBox&>(*made);
    const int side = box.style()->pixelMetric(QStyle::PM_IndicatorWidth);
    for (const QColor& window : {QColor(Qt::white), QColor(0xef, 0xef, 0xef), darkWindow}) {
        QApplication::setPalette(themed(window));
        const QImage drawn = box.grab().toImage();
        double strongest = 0;
        for (int x = 0; x < side; ++x) {
            strongest =
                std::max(strongest, contrast(drawn.pixelColor(x, drawn.height() / 2), window));
        }
        EXPECT_GE(strongest, 3) << window.name().toStdString();
    }
}

TEST_F(ThemeTest, ButtonsAndFieldsHaveABorderUnderHighContrast) {
    const std::shared_ptr<platform::View> controls[] = {
        userInterface.makeButton({.title = "Grant"}), userInterface.makeTextField({})};
    for (const QColor& window : {QColor(Qt::black), QColor(Qt::white)}) {
        QApplication::setPalette(themed(window));
        for (const auto& control : controls) {
            auto& widget = dynamic_cast<QWidget&>(*control);
            widget.resize(widget.sizeHint());
            const QImage drawn = widget.grab().toImage();
            double left = 0;
            double top = 0;
            for (int distance = 0; distance < 3; ++distance) {
                left = std::max(left,
                                contrast(drawn.pixelColor(distance, drawn.height() / 2), window));
                top =
                    std::max(top, contrast(drawn.pixelColor(drawn.width() / 2, distance), window));
            }
            EXPECT_GE(left, 4.5) << widget.metaObject()->className() << window.name().toStdString();
            EXPECT_GE(top, 4.5) << widget.metaObject()->className() << window.name().toStdString();
        }
    }
}

TEST_F(ThemeTest, AColourFollowsTheThemeWhileItIsShown) {
    QApplication::setPalette(themed(Qt::white));
    const auto status = label({.text = "✓ Granted", .color = platform::SystemColor::green});
    status->show();
    const QColor onLight = status->drawnColor();
    QApplication::setPalette(themed(darkWindow));
    EXPECT_TRUE(runUntil([&] { return status->drawnColor() != onLight; }));
    EXPECT_GE(contrast(status->drawnColor(), darkWindow), 4.5);
    status->setTextColor(platform::SystemColor::red);
    const QColor redOnDark = status->drawnColor();
    QApplication::setPalette(themed(Qt::white));
    EXPECT_TRUE(runUntil([&] { return status->drawnColor() != redOnDark; }));
    EXPECT_GE(contrast(status->drawnColor(), Qt::white), 4.5);
}

TEST_F(ThemeTest, EveryKindOfButtonShowsThatItHasTheFocusOnADarkBackground) {
    platform::ButtonDescription plain{.title = "Maybe later"};
    platform::ButtonDescription link{.title = "Don't show again", .isBordered = false};
    const auto primary = userInterface.makeButton({.title = "Visit"});
    primary->setBezelColor(platform::RgbColor{0.133, 0.827, 0.933});
    const std::vector<std::shared_ptr<platform::View>> buttons = {
        primary, userInterface.makeButton(plain), userInterface.makeButton(link)};
    const auto window = userInterface.makeWindow({.contentSize = {400, 200}});
    window->setContent(userInterface.makeStack({.views = buttons}), platform::black);
    window->show();
    QWidget& shown = dynamic_cast<linuxdesktop::QtWindow&>(*window).widget();
    shown.activateWindow();
    ASSERT_TRUE(runUntil([&] { return shown.isActiveWindow(); }));
    for (const auto& button : buttons) {
        auto& widget = dynamic_cast<QPushButton&>(*button);
        widget.clearFocus();
        const QImage before = widget.grab().toImage();
        widget.setFocus(Qt::TabFocusReason);
        ASSERT_TRUE(runUntil([&] { return widget.hasFocus(); }));
        const QImage after = widget.grab().toImage();
        int clear = 0;
        for (int y = 0; y < after.height(); ++y) {
            for (int x = 0; x < after.width(); ++x) {
                const QColor pixel = after.pixelColor(x, y);
                clear += pixel != before.pixelColor(x, y) && contrast(pixel, Qt::black) >= 4.5;
            }
        }
        EXPECT_GT(clear, widget.width() / 2) << widget.text().toStdString();
    }
}

TEST_F(ThemeTest, ABezelIsExactlyTheColourThatWasAskedFor) {
    const platform::RgbColor cyan{0.133, 0.827, 0.933};
    platform::ButtonDescription description;
    description.title = "Visit";
    description.layout.height = 36;
    const auto button = userInterface.makeButton(description);
    button->setAttributedTitle({"Visit", platform::black, {13, platform::FontWeight::semibold}});
    button->setBezelColor(cyan);
    auto& widget = dynamic_cast<QPushButton&>(*button);
    widget.resize(widget.sizeHint().width(), 36);
    EXPECT_EQ(widget.maximumHeight(), 36);
    const QImage image = widget.grab().toImage();
    EXPECT_EQ(image.pixelColor(image.width() / 2, 4).name(), linuxdesktop::qtColor(cyan).name());
}

}  // namespace

}  // namespace tarvik::tests
