// SPDX-License-Identifier: MIT

#include <QLabel>
#include <QString>
#include <QStringList>
#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "platform/linux/windows/LinuxTexts.h"
#include "settings/SetupWindowController.h"
#include "tests/core/app/ApplicationUnderTest.h"
#include "tests/linux/windows/UserInterfaceTest.h"
#include "usage/CTAWindowController.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::linuxTexts;
using linuxdesktop::shownText;

/// Every text that the core shows: of the menu, the prompt and all windows.
std::vector<std::string> coreTexts() {
    ApplicationUnderTest app(nothingStored());
    app.launchAndSettle();
    auto& userInterface = app.platform.userInterface();
    std::vector<std::string> texts;
    for (const auto& item : userInterface.statusItem()->menu->open()) {
        texts.push_back(item.title);
    }
    app.delegate->promptForApiKey();
    const platform::Alert& alert = userInterface.alerts.back();
    texts.insert(texts.end(), {alert.messageText, alert.informativeText, alert.fieldPlaceholder});
    std::ranges::copy(alert.buttons, std::back_inserter(texts));
    app.delegate->openSetupWindow();
    for (const CTATier tier : {CTATier::tenMinute, CTATier::sixtyMinute}) {
        CTAWindowController::shared().show(tier);
        for (const auto& window : userInterface.windows) {
            std::ranges::copy(window->texts(), std::back_inserter(texts));
        }
    }
    texts.push_back(userInterface.window("Tarvik Dictate")->checkbox()->look.title);
    return texts;
}

TEST(LinuxTextTest, EveryReplacedLineIsALineOfTheCore) {
    QStringList lines;
    for (const std::string& text : coreTexts()) {
        lines += QString::fromStdString(text).split(QLatin1Char('\n'));
    }
    ASSERT_FALSE(linuxTexts().empty());
    for (const auto& replaced : linuxTexts()) {
        EXPECT_TRUE(lines.contains(QString::fromStdString(std::string(replaced.coreLine))))
            << replaced.coreLine;
    }
}

TEST(LinuxTextTest, NoTextSpeaksOfAMac) {
    for (const std::string& text : coreTexts()) {
        const QString shown = shownText(text);
        for (const char* word : {"Mac", "Keychain", "⌥", "⇧", "Option", "menu-bar", "mic icon",
                                 "System Settings", "on the system prompt"}) {
            EXPECT_FALSE(shown.contains(QString::fromUtf8(word))) << shown.toStdString();
        }
    }
}

TEST(LinuxTextTest, OtherTextsStayAsTheyAre) {
    EXPECT_EQ(shownText("Deepgram API key"), "Deepgram API key");
    EXPECT_EQ(shownText(""), "");
    EXPECT_EQ(shownText("one\n\ntwo\n"), "one\n\ntwo\n");
}

TEST(LinuxTextTest, OnlyTheFalseLineOfATextIsReplaced) {
    EXPECT_EQ(shownText("before\nTwo ways to dictate from any text field on your Mac:\nafter"),
              "before\nTwo ways to dictate from any text field:\nafter");
}

class LinuxTextViewTest : public UserInterfaceTest {};

TEST_F(LinuxTextViewTest, ALabelShowsTheLinuxText) {
    const auto label = userInterface.makeLabel({.text = "Hold ⌥ Space — quick dictation"});
    EXPECT_EQ(dynamic_cast<QLabel&>(*label).text(), "Hold Alt+Space — quick dictation");
}

}  // namespace

}  // namespace tarvik::tests
