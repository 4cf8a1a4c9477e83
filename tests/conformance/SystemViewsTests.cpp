#include <QAbstractButton>
#include <QAccessible>
#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <algorithm>
#include <cmath>
#include <map>

#include "platform/linux/system/QtAppearance.h"
#include "platform/linux/system/QtLabel.h"
#include "platform/linux/system/QtUserInterface.h"
#include "platform/linux/system/QtWindow.h"
#include "tests/conformance/SystemLinuxTest.h"
#include "tests/conformance/SystemSampleWindow.h"

namespace tarvik::conformance {

namespace {

using linuxdesktop::QtLabel;

const QColor darkWindow(0x2b, 0x2b, 0x2b);

QPalette themed(const QColor& window) {
    return QPalette(window, window);
}

/// As the eye weighs it, from 0 to 1.
double luminance(const QColor& color) {
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

double contrast(const QColor& text, const QColor& ground) {
    const auto over = [&](float a, float b) { return a * text.alphaF() + b * (1 - text.alphaF()); };
    const QColor seen =
        QColor::fromRgbF(over(text.redF(), ground.redF()), over(text.greenF(), ground.greenF()),
                         over(text.blueF(), ground.blueF()));
    const auto [darker, lighter] = std::minmax({luminance(seen), luminance(ground)});
    return (lighter + 0.05) / (darker + 0.05);
}

class SystemViewsTest : public SystemLinuxTest {
  protected:
    ~SystemViewsTest() override { QApplication::setPalette(QPalette()); }

    std::shared_ptr<QtLabel> label(const platform::LabelDescription& description) {
        return std::dynamic_pointer_cast<QtLabel>(userInterface.makeLabel(description));
    }

    linuxdesktop::QtUserInterface userInterface{clock, log};
};

TEST_F(SystemViewsTest, EverySystemColourIsLegibleOnLightAndDarkWindows) {
    using enum platform::SystemColor;
    for (const QColor& window : {QColor(Qt::white), QColor(0xef, 0xef, 0xef), darkWindow}) {
        for (const platform::SystemColor color :
             {platform::SystemColor::label, secondaryLabel, tertiaryLabel, green, red}) {
            EXPECT_GE(contrast(linuxdesktop::qtColor(color, themed(window)), window), 4.5)
                << window.name().toStdString() << " " << static_cast<int>(color);
        }
    }
}

TEST_F(SystemViewsTest, TextOnABackgroundOfItsOwnIsLegibleUnderEveryTheme) {
    for (const QColor& window : {QColor(Qt::white), darkWindow}) {
        for (const QColor& ground : {QColor(10, 10, 10), QColor(250, 250, 250)}) {
            const QPalette palette = linuxdesktop::paletteOn(ground, themed(window));
            EXPECT_EQ(palette.color(QPalette::Window), ground);
            EXPECT_GE(contrast(palette.color(QPalette::WindowText), ground), 4.5);
            EXPECT_GE(
                contrast(palette.color(QPalette::ButtonText), palette.color(QPalette::Button)),
                4.5);
        }
    }
}

TEST_F(SystemViewsTest, AColourFollowsTheThemeWhileItIsShown) {
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

TEST_F(SystemViewsTest, AWrappedLabelIsAsHighAsItsLinesAndNeverWiderThanAskedFor) {
    const std::string words = "Toggle-mode auto-stops after thirty seconds of silence, whichever ";
    const auto once = label({.text = words,
                             .wrapping = platform::LabelWrapping::always,
                             .preferredMaxLayoutWidth = 300});
    const auto often = label({.text = words + words + words + words,
                              .wrapping = platform::LabelWrapping::always,
                              .preferredMaxLayoutWidth = 300});
    EXPECT_LE(often->sizeHint().width(), 300);
    EXPECT_EQ(often->sizeHint().height(), often->heightForWidth(300));
    EXPECT_EQ(often->heightForWidth(900), often->heightForWidth(300));
    EXPECT_GE(often->heightForWidth(300), 3 * once->heightForWidth(300));
    EXPECT_GT(often->heightForWidth(150), often->heightForWidth(300));
}

TEST_F(SystemViewsTest, AnEmptyLabelKeepsThePlaceOfItsLine) {
    const auto status = label({.text = ""});
    const int empty = status->sizeHint().height();
    status->setText("✓ Saved");
    EXPECT_EQ(status->sizeHint().height(), empty);
}

TEST_F(SystemViewsTest, ALabelThatFitsStaysInOneLine) {
    const auto headline = label({.text = "Enjoying Tarvik Dictate?",
                                 .font = {22, platform::FontWeight::bold},
                                 .wrapping = platform::LabelWrapping::whenNarrow});
    const int oneLine = headline->heightForWidth(headline->sizeHint().width());
    EXPECT_LT(oneLine, 2 * headline->fontMetrics().height());
    EXPECT_GT(headline->heightForWidth(headline->sizeHint().width() / 2), oneLine);
}

TEST_F(SystemViewsTest, RowsEndFlushAtTheRightAndTheNamesLineUp) {
    SampleWindow sample(userInterface);
    const QList<QWidget*> ends = {sample.find<QPushButton>("Save"),
                                  sample.find<QPushButton>("Grant"), sample.separator()};
    for (const QWidget* end : ends) {
        EXPECT_EQ(sample.placeOf(*end).right(), sample.content().width() - 28 - 1);
    }
    const int field = sample.placeOf(*sample.field()).left();
    EXPECT_EQ(field, 28 + 160 + 12);
    EXPECT_EQ(sample.placeOf(*sample.find<QLabel>("✗ Not set")).left(), field);
    EXPECT_EQ(sample.placeOf(*sample.find<QLabel>("✗ Not granted")).left(), field);
    EXPECT_EQ(sample.placeOf(*sample.find<QPushButton>("Restart Tarvik Dictate")).left(), 28);
    EXPECT_LT(sample.find<QPushButton>("Restart Tarvik Dictate")->width(), 300);
    EXPECT_GE(sample.find<QPushButton>("Grant")->width(), 110);
}

TEST_F(SystemViewsTest, NothingOverlapsAndNoTextIsCutOffAtAnySize) {
    SampleWindow sample(userInterface);
    for (const QSize size : {QSize(990, 635), QSize(830, 555), QSize(1200, 900), QSize(10, 10)}) {
        sample.widget().resize(size);
        QApplication::processEvents();
        const QList<QWidget*> leaves = sample.leaves();
        ASSERT_GT(leaves.size(), 10);
        for (QWidget* leaf : leaves) {
            EXPECT_TRUE(sample.content().rect().contains(sample.placeOf(*leaf)));
            EXPECT_GE(leaf->width(), leaf->minimumSizeHint().width());
            if (const auto* text = qobject_cast<QLabel*>(leaf)) {
                EXPECT_GE(text->height(), text->heightForWidth(text->width()))
                    << text->text().toStdString();
            }
            for (QWidget* other : leaves) {
                EXPECT_TRUE(other == leaf ||
                            !sample.placeOf(*leaf).intersects(sample.placeOf(*other)));
            }
        }
    }
}

TEST_F(SystemViewsTest, AWindowGrowsWithItsContentUnlessTheUserHasResizedIt) {
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

TEST_F(SystemViewsTest, TabReachesEveryControlInTheOrderOfTheEyeAndScrollsToIt) {
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

TEST_F(SystemViewsTest, ReturnAndSpacePressTheButtonThatHasTheFocus) {
    SampleWindow sample(userInterface);
    for (const int key : {Qt::Key_Return, Qt::Key_Space}) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
        QApplication::sendEvent(sample.find<QPushButton>("Save"), &press);
        QApplication::sendEvent(sample.find<QPushButton>("Save"), &release);
    }
    EXPECT_EQ(sample.saves, 2);
}

TEST_F(SystemViewsTest, EveryKindOfButtonShowsThatItHasTheFocusOnADarkGround) {
    platform::ButtonDescription plain{.title = "Maybe later"};
    platform::ButtonDescription link{.title = "Don't show again", .isBordered = false};
    const auto primary = userInterface.makeButton({.title = "Visit"});
    primary->setBezelColor(platform::RgbColor{0.133, 0.827, 0.933});
    const std::vector<std::shared_ptr<platform::View>> buttons = {
        primary, userInterface.makeButton(plain), userInterface.makeButton(link)};
    const auto window = userInterface.makeWindow({.contentSize = {400, 200}});
    window->setContent(userInterface.makeStack({.views = buttons}), platform::black);
    window->show();
    QApplication::setActiveWindow(&dynamic_cast<linuxdesktop::QtWindow&>(*window).widget());
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

TEST_F(SystemViewsTest, ALongKeyLeavesTheLayoutAsItWas) {
    SampleWindow sample(userInterface);
    std::map<QWidget*, QRect> before;
    for (QWidget* leaf : sample.leaves()) {
        before[leaf] = sample.placeOf(*leaf);
    }
    sample.field()->insert(QString(10000, u'W'));
    QApplication::processEvents();
    for (QWidget* leaf : sample.leaves()) {
        EXPECT_EQ(sample.placeOf(*leaf), before[leaf]);
    }
}

TEST_F(SystemViewsTest, AScreenReaderHasANameForEveryControl) {
    SampleWindow sample(userInterface);
    const auto nameOf = [](QWidget* widget) {
        return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name).toStdString();
    };
    EXPECT_EQ(nameOf(sample.field()), "Deepgram API key");
    EXPECT_TRUE(QAccessible::queryAccessibleInterface(sample.field())->state().passwordEdit);
    EXPECT_EQ(nameOf(sample.find<QPushButton>("Save")), "Save");
    EXPECT_EQ(nameOf(sample.find<QCheckBox>("Launch at login")), "Launch at login");
    EXPECT_EQ(nameOf(sample.find<QLabel>("✗ Not set")), "✗ Not set");
}

TEST_F(SystemViewsTest, ASecureFieldShowsNeitherItsTextNorGivesItAway) {
    SampleWindow sample(userInterface);
    sample.field()->setText("secret");
    EXPECT_NE(sample.field()->displayText(), "secret");
    EXPECT_EQ(sample.field()->echoMode(), QLineEdit::Password);
}

TEST_F(SystemViewsTest, ABezelIsExactlyTheColourThatWasAskedFor) {
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

}  // namespace tarvik::conformance
