#include <QAbstractButton>
#include <QAccessible>
#include <QCheckBox>
#include <QFontInfo>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <utility>

#include "platform/linux/windows/QtAppearance.h"
#include "platform/linux/windows/QtLabel.h"
#include "platform/linux/windows/QtMenu.h"
#include "platform/linux/windows/QtUserInterface.h"
#include "platform/linux/windows/QtWindow.h"
#include "platform/linux/windows/ScreenGeometry.h"
#include "tests/linux/system/ApplicationTest.h"
#include "tests/linux/windows/Contrast.h"
#include "tests/linux/windows/SampleWindow.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::QtLabel;

const QColor darkWindow(0x2b, 0x2b, 0x2b);

QPalette themed(const QColor& window) {
    return QPalette(window, window);
}

class ViewsTest : public ApplicationTest {
  protected:
    ~ViewsTest() override { QApplication::setPalette(QPalette()); }

    std::shared_ptr<QtLabel> label(const platform::LabelDescription& description) {
        return std::dynamic_pointer_cast<QtLabel>(userInterface.makeLabel(description));
    }

    linuxdesktop::QtUserInterface userInterface{clock, log};
};

TEST_F(ViewsTest, EverySystemColourIsLegibleOnLightAndDarkWindows) {
    using enum platform::SystemColor;
    for (const QColor& window : {QColor(Qt::white), QColor(0xef, 0xef, 0xef), darkWindow}) {
        for (const platform::SystemColor color :
             {platform::SystemColor::label, secondaryLabel, tertiaryLabel, green, red}) {
            EXPECT_GE(contrast(linuxdesktop::qtColor(color, themed(window)), window), 4.5)
                << window.name().toStdString() << " " << static_cast<int>(color);
        }
    }
}

TEST_F(ViewsTest, TextOnABackgroundOfItsOwnIsLegibleUnderEveryTheme) {
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

TEST_F(ViewsTest, DisabledEntriesOfAMenuAreLegibleAndWeakerThanOthersUnderEveryTheme) {
    linuxdesktop::QtMenu menu;
    for (const QColor& window : {QColor(Qt::white), QColor(0xef, 0xef, 0xef), darkWindow}) {
        QApplication::setPalette(themed(window));
        menu.menu().popup(QPoint(10, 10));
        const QPalette palette = menu.menu().palette();
        menu.menu().hide();
        // Styles fill a menu with one or the other.
        for (const auto ground : {QPalette::Base, QPalette::Window}) {
            const QColor filled = palette.color(ground);
            const double disabled =
                contrast(palette.color(QPalette::Disabled, QPalette::Text), filled);
            EXPECT_GE(disabled, 4.5) << filled.name().toStdString();
            EXPECT_LT(disabled, 0.8 * contrast(palette.color(QPalette::Text), filled));
        }
    }
}

TEST_F(ViewsTest, AMenuLiesBesideItsAnchorAndInItsAreaAsAWhole) {
    const QRect area(0, 40, 1000, 700);
    const QSize size(200, 300);
    const auto place = [&](const QRect& anchor) {
        return linuxdesktop::menuPlace(anchor, size, area);
    };
    EXPECT_EQ(place({500, 100, 20, 20}), QPoint(500, 120));
    EXPECT_EQ(place({500, 600, 20, 20}), QPoint(500, 300));
    EXPECT_EQ(place({500, 10, 20, 20}), QPoint(500, 40));
    EXPECT_EQ(place({500, 750, 20, 20}), QPoint(500, 440));
    EXPECT_EQ(place({990, 10, 20, 20}), QPoint(800, 40));
    EXPECT_EQ(place({-30, 100, 20, 20}), QPoint(0, 120));
}

TEST_F(ViewsTest, APlaceholderIsLegibleUnderEveryThemeAndWeakerThanTheText) {
    const auto made = userInterface.makeTextField({.placeholder = "Paste your Deepgram API key"});
    auto& field = dynamic_cast<QLineEdit&>(*made);
    const auto placeholder = [&] {
        return contrast(field.palette().color(QPalette::PlaceholderText),
                        field.palette().color(QPalette::Base));
    };
    for (const QColor& window : {QColor(Qt::white), darkWindow, QColor(0xef, 0xef, 0xef)}) {
        QPalette palette = themed(window);
        // As of a desktop that forgets this one.
        palette.setColor(QPalette::PlaceholderText, Qt::black);
        QApplication::setPalette(palette);
        EXPECT_TRUE(runUntil([&] { return placeholder() >= 4.5; })) << window.name().toStdString();
        EXPECT_LT(placeholder(), 0.8 * contrast(field.palette().color(QPalette::Text),
                                                field.palette().color(QPalette::Base)));
    }
}

TEST_F(ViewsTest, AnEmptyBoxCanBeSeenUnderEveryTheme) {
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

constexpr std::array<double, 5> usedSizes = {11, 12, 13, 22, 24};

TEST_F(ViewsTest, TextHasTheSizeAndWeightAskedForInTheDesktopsOwnFont) {
    const std::pair<platform::FontWeight, QFont::Weight> weights[] = {
        {platform::FontWeight::regular, QFont::Normal},
        {platform::FontWeight::medium, QFont::Medium},
        {platform::FontWeight::semibold, QFont::DemiBold},
        {platform::FontWeight::bold, QFont::Bold}};
    for (const double size : usedSizes) {
        for (const auto& [weight, expected] : weights) {
            const QFont font = label({.text = "x", .font = {size, weight}})->font();
            EXPECT_EQ(QFontInfo(font).pixelSize(), size);
            EXPECT_EQ(font.weight(), expected);
            EXPECT_EQ(font.family(), QApplication::font().family());
        }
    }
}

/// A screen on which the desktop wants twice the usual size, in one of the two ways in which a
/// desktop can say so.
struct FineScreen {
    explicit FineScreen(int usualDotsPerInch) {
        putFile(folder / "screen.json",
                R"({"screens": [{"name": "fine", "x": 0, "y": 0, "width": 2560, "height": 1600, )"
                R"("logicalDpi": 192, "dpr": 1, "logicalBaseDpi": )" +
                    std::to_string(usualDotsPerInch) + "}]}");
        setenv("QT_QPA_PLATFORM",
               ("offscreen:configfile=" + (folder / "screen.json").string()).c_str(), 1);
    }
    ~FineScreen() { setenv("QT_QPA_PLATFORM", platform.c_str(), 1); }

    const std::string platform = std::getenv("QT_QPA_PLATFORM");
    TemporaryFolder folder;
};

/// By its own factor, which Qt applies, or by the size of text alone.
class FineScreenTest : public testing::WithParamInterface<int>,
                       private FineScreen,
                       public ApplicationTest {
  protected:
    FineScreenTest() : FineScreen(GetParam()) {}

    linuxdesktop::QtUserInterface userInterface{clock, log};
};

TEST_P(FineScreenTest, EverythingTakesTwiceThePixels) {
    for (const double size : usedSizes) {
        const auto made = userInterface.makeLabel(
            {.text = "Microphone", .font = {size}, .layout = {.width = 160}});
        const auto& text = dynamic_cast<QLabel&>(*made);
        EXPECT_EQ(text.minimumWidth() * text.devicePixelRatioF(), 320);
        EXPECT_EQ(text.maximumWidth() * text.devicePixelRatioF(), 320);
        EXPECT_EQ(QFontInfo(text.font()).pixelSize() * text.devicePixelRatioF(), 2 * size);
    }
    const auto window = userInterface.makeWindow({.contentSize = {300, 200}, .styleMask = 15});
    const QWidget& widget = dynamic_cast<linuxdesktop::QtWindow&>(*window).widget();
    EXPECT_EQ(widget.size() * widget.devicePixelRatioF(), QSize(600, 400));
}

INSTANTIATE_TEST_SUITE_P(Desktops, FineScreenTest, testing::Values(96, 192));

TEST_F(ViewsTest, AColourFollowsTheThemeWhileItIsShown) {
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

TEST_F(ViewsTest, AWrappedLabelIsAsHighAsItsLinesAndNeverWiderThanAskedFor) {
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

TEST_F(ViewsTest, AnEmptyLabelKeepsThePlaceOfItsLine) {
    const auto status = label({.text = ""});
    const int empty = status->sizeHint().height();
    status->setText("✓ Saved");
    EXPECT_EQ(status->sizeHint().height(), empty);
}

TEST_F(ViewsTest, ALabelThatFitsStaysInOneLine) {
    const auto headline = label({.text = "Enjoying Tarvik Dictate?",
                                 .font = {22, platform::FontWeight::bold},
                                 .wrapping = platform::LabelWrapping::whenNarrow});
    const int oneLine = headline->heightForWidth(headline->sizeHint().width());
    EXPECT_LT(oneLine, 2 * headline->fontMetrics().height());
    EXPECT_GT(headline->heightForWidth(headline->sizeHint().width() / 2), oneLine);
}

TEST_F(ViewsTest, RowsEndFlushAtTheRightAndTheNamesLineUp) {
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

TEST_F(ViewsTest, NothingOverlapsAndNoTextIsCutOffAtAnySize) {
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

TEST_F(ViewsTest, AWindowGrowsWithItsContentUnlessTheUserHasResizedIt) {
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

TEST_F(ViewsTest, TabReachesEveryControlInTheOrderOfTheEyeAndScrollsToIt) {
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

TEST_F(ViewsTest, ReturnAndSpacePressTheButtonThatHasTheFocus) {
    SampleWindow sample(userInterface);
    for (const int key : {Qt::Key_Return, Qt::Key_Space}) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
        QApplication::sendEvent(sample.find<QPushButton>("Save"), &press);
        QApplication::sendEvent(sample.find<QPushButton>("Save"), &release);
    }
    EXPECT_EQ(sample.saves, 2);
}

TEST_F(ViewsTest, EveryKindOfButtonShowsThatItHasTheFocusOnADarkGround) {
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

TEST_F(ViewsTest, ALongKeyLeavesTheLayoutAsItWas) {
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

TEST_F(ViewsTest, AScreenReaderHasANameForEveryControl) {
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

TEST_F(ViewsTest, ASecureFieldShowsNeitherItsTextNorGivesItAway) {
    SampleWindow sample(userInterface);
    sample.field()->setText("secret");
    EXPECT_NE(sample.field()->displayText(), "secret");
    EXPECT_EQ(sample.field()->echoMode(), QLineEdit::Password);
}

TEST_F(ViewsTest, ABezelIsExactlyTheColourThatWasAskedFor) {
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
