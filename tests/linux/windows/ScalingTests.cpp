// SPDX-License-Identifier: MIT

#include <QFontInfo>
#include <QLabel>
#include <array>
#include <cstdlib>
#include <string>
#include <utility>

#include "platform/linux/windows/QtWindow.h"
#include "tests/linux/windows/UserInterfaceTest.h"

namespace tarvik::tests {

namespace {

using ScalingTest = UserInterfaceTest;

constexpr std::array<double, 5> usedSizes = {11, 12, 13, 22, 24};

TEST_F(ScalingTest, TextHasTheSizeAndWeightAskedForInTheDesktopsOwnFont) {
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

/// A screen on a desktop that wants everything at `percent` of the usual size. Either Qt scales
/// everything by a factor of its own, or only text is larger.
struct Scale {
    int percent;
    bool isTextOnly;

    int dotsPerInch() const { return 96 * percent / 100; }
};

struct FineScreen {
    explicit FineScreen(const Scale& scale) {
        putFile(folder / "screen.json",
                R"({"screens": [{"name": "fine", "x": 0, "y": 0, "width": 2560, "height": 1600, )"
                R"("dpr": 1, "logicalDpi": )" +
                    std::to_string(scale.dotsPerInch()) + R"(, "logicalBaseDpi": )" +
                    std::to_string(scale.isTextOnly ? scale.dotsPerInch() : 96) + "}]}");
        setenv("QT_QPA_PLATFORM",
               ("offscreen:configfile=" + (folder / "screen.json").string()).c_str(), 1);
    }
    ~FineScreen() { setenv("QT_QPA_PLATFORM", platform.c_str(), 1); }

    const std::string platform = std::getenv("QT_QPA_PLATFORM");
    TemporaryFolder folder;
};

class FineScreenTest : public testing::WithParamInterface<Scale>,
                       private FineScreen,
                       public UserInterfaceTest {
  protected:
    FineScreenTest() : FineScreen(GetParam()) {}
};

TEST_P(FineScreenTest, EverythingGrowsByTheScale) {
    const double scale = GetParam().percent / 100.0;
    // Lengths and fonts are rounded to whole units of Qt.
    const double tolerance = 0.5 * scale;
    for (const double size : usedSizes) {
        const auto made = userInterface.makeLabel(
            {.text = "Microphone", .font = {size}, .layout = {.width = 160}});
        const auto& text = dynamic_cast<QLabel&>(*made);
        const double ratio = text.devicePixelRatioF();
        EXPECT_NEAR(text.minimumWidth() * ratio, 160 * scale, tolerance);
        EXPECT_NEAR(text.maximumWidth() * ratio, 160 * scale, tolerance);
        EXPECT_NEAR(QFontInfo(text.font()).pixelSize() * ratio, size * scale, tolerance);
    }
    const auto window = userInterface.makeWindow({.contentSize = {300, 200}, .styleMask = 15});
    const QWidget& widget = dynamic_cast<linuxdesktop::QtWindow&>(*window).widget();
    EXPECT_NEAR(widget.width() * widget.devicePixelRatioF(), 300 * scale, tolerance);
    EXPECT_NEAR(widget.height() * widget.devicePixelRatioF(), 200 * scale, tolerance);
}

INSTANTIATE_TEST_SUITE_P(Desktops, FineScreenTest,
                         testing::Values(Scale{100, false}, Scale{125, false}, Scale{150, false},
                                         Scale{200, false}, Scale{300, false}, Scale{125, true},
                                         Scale{150, true}, Scale{200, true}, Scale{300, true}),
                         [](const auto& test) {
                             return (test.param.isTextOnly ? "Text" : "All") +
                                    std::to_string(test.param.percent);
                         });

}  // namespace

}  // namespace tarvik::tests
