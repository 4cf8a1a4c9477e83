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

/// A screen of 192 dots per inch on a desktop that wants twice the usual size. With a base of 96
/// dots per inch Qt scales everything by a factor of its own; with a base of 192 only text is
/// larger.
struct FineScreen {
    explicit FineScreen(int baseDotsPerInch) {
        putFile(folder / "screen.json",
                R"({"screens": [{"name": "fine", "x": 0, "y": 0, "width": 2560, "height": 1600, )"
                R"("logicalDpi": 192, "dpr": 1, "logicalBaseDpi": )" +
                    std::to_string(baseDotsPerInch) + "}]}");
        setenv("QT_QPA_PLATFORM",
               ("offscreen:configfile=" + (folder / "screen.json").string()).c_str(), 1);
    }
    ~FineScreen() { setenv("QT_QPA_PLATFORM", platform.c_str(), 1); }

    const std::string platform = std::getenv("QT_QPA_PLATFORM");
    TemporaryFolder folder;
};

class FineScreenTest : public testing::WithParamInterface<int>,
                       private FineScreen,
                       public UserInterfaceTest {
  protected:
    FineScreenTest() : FineScreen(GetParam()) {}
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

}  // namespace

}  // namespace tarvik::tests
