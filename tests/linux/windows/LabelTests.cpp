// SPDX-License-Identifier: MIT

#include <QFontMetrics>
#include <string>

#include "tests/linux/windows/UserInterfaceTest.h"

namespace tarvik::tests {

namespace {

using LabelTest = UserInterfaceTest;

TEST_F(LabelTest, AWrappedLabelIsAsHighAsItsLinesAndNeverWiderThanAskedFor) {
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

TEST_F(LabelTest, AnEmptyLabelKeepsThePlaceOfItsLine) {
    const auto status = label({.text = ""});
    const int empty = status->sizeHint().height();
    status->setText("✓ Saved");
    EXPECT_EQ(status->sizeHint().height(), empty);
}

TEST_F(LabelTest, ALabelThatFitsStaysInOneLine) {
    const auto headline = label({.text = "Enjoying Tarvik Dictate?",
                                 .font = {22, platform::FontWeight::bold},
                                 .wrapping = platform::LabelWrapping::whenNarrow});
    const int oneLine = headline->heightForWidth(headline->sizeHint().width());
    EXPECT_LT(oneLine, 2 * headline->fontMetrics().height());
    EXPECT_GT(headline->heightForWidth(headline->sizeHint().width() / 2), oneLine);
}

}  // namespace

}  // namespace tarvik::tests
