// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/Text.h"
#include "platform/linux/DesktopInput.h"
#include "platform/linux/accessibility/AccessibilityWorker.h"
#include "tests/conformance/input/HotKeyRecorder.h"
#include "tests/linux/input/TypingCorpus.h"
#include "tests/linux/x11/X11Target.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

/// The input of a desktop session, which openInput() makes.
class DesktopInputFixture {
  protected:
    static constexpr auto hold = HotKeyRecorder::hold;
    static constexpr auto toggle = HotKeyRecorder::toggle;

    explicit DesktopInputFixture(
        std::shared_ptr<linuxdesktop::AccessibilityWorker> accessibilityWorker = nullptr)
        : worker(std::move(accessibilityWorker)) {}

    void openInput() {
        input.emplace(mainQueue, log,
                      worker ? std::shared_ptr<const linuxdesktop::AccessibilityState>(
                                   worker, &worker->state())
                             : nullptr);
    }

    /// Posts a text as the core does, in runs of 20 UTF-16 units.
    void type(std::string_view text, std::optional<platform::ProcessIdentifier> process) {
        auto& keyboard = input->keyboardEvents();
        const auto source = keyboard.createSource(platform::eventSourceStateCombinedSession);
        const std::u16string units = utf16FromUtf8(text);
        for (std::size_t first = 0; first < units.size(); first += 20) {
            const auto event = keyboard.createKeyboardEvent(source, 0, true);
            ASSERT_NE(event, nullptr);
            keyboard.setUnicodeString(*event, std::u16string_view(units).substr(first, 20));
            if (process) {
                keyboard.postToPid(*process, event);
            } else {
                keyboard.post(platform::hidEventTap, event);
            }
        }
    }

    bool becomes(const X11Target& target, std::string_view text,
                 std::chrono::milliseconds timeout = std::chrono::seconds(20)) {
        const bool holds = mainQueue.runUntil([&] { return target.text() == text; }, timeout);
        EXPECT_EQ(target.text(), text);
        if (!holds) {
            tellLog();
        }
        return holds;
    }
    bool becomes(const HotKeyRecorder& recorder, std::string_view events,
                 std::chrono::milliseconds timeout = std::chrono::seconds(3)) {
        const bool holds = mainQueue.runUntil([&] { return recorder.events == events; }, timeout);
        EXPECT_EQ(recorder.events, events);
        return holds;
    }
    bool comesToFront(const X11Target& target) {
        return mainQueue.runUntil([&] { return input->chooseTarget() == target.process(); });
    }
    bool logs(const std::string& line) {
        const bool isThere = mainQueue.runUntil([&] { return log.hasLineWith(line); });
        EXPECT_TRUE(isThere) << line;
        return isThere;
    }
    void tellLog() {
        for (const std::string& line : log.lines()) {
            ADD_FAILURE() << line;
        }
    }

    void typeCorpus(const X11Target& target) {
        std::string expected;
        for (const std::string_view text : typingCorpus) {
            type(text, target.process());
            expected += text;
            ASSERT_TRUE(becomes(target, expected));
        }
    }
    void typeTwoThousandCharacters(const X11Target& target, std::chrono::milliseconds timeout) {
        std::string text;
        while (text.size() < 2000) {
            text += "Zażółć gęślą jaźń, the quick brown fox. ";
        }
        const auto start = std::chrono::steady_clock::now();
        type(text, target.process());
        ASSERT_TRUE(becomes(target, text, timeout));
        testing::Test::RecordProperty("milliseconds",
                                      static_cast<int>((std::chrono::steady_clock::now() - start) /
                                                       std::chrono::milliseconds(1)));
    }
    void typeIntoFirstOfTwoWindows() {
        X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
        ASSERT_TRUE(comesToFront(target));
        target.openSecondWindow(mainQueue);
        type("for the first window", target.process());
        EXPECT_TRUE(becomes(target, "for the first window"));
        EXPECT_EQ(target.textOfSecondWindow(), "");
    }
    void typeBehindAnotherProgram() {
        X11Target first(X11Target::Kind::gtk3Entry, mainQueue);
        X11Target second(X11Target::Kind::gtk3Entry, mainQueue);
        ASSERT_TRUE(comesToFront(second));
        type("behind", first.process());
        EXPECT_TRUE(becomes(first, "behind"));
        EXPECT_TRUE(comesToFront(second));
    }
    /// The end of the input types what is left.
    void typeLastWords(const X11Target& target) {
        type("the last words, żółć", target.process());
        input.reset();
        EXPECT_TRUE(becomes(target, "the last words, żółć"));
    }

    const std::shared_ptr<linuxdesktop::AccessibilityWorker> worker;
    RealTimeQueue mainQueue;
    RecordingLog log;
    std::optional<linuxdesktop::DesktopInput> input;
};

/// The programs that every session is tried with, for INSTANTIATE_TEST_SUITE_P.
inline auto typingToolkits() {
    return testing::Values(X11Target::Kind::gtk3Entry, X11Target::Kind::gtk4Text,
                           X11Target::Kind::qt6Entry, X11Target::Kind::qt6Text);
}
inline std::string toolkitName(const testing::TestParamInfo<X11Target::Kind>& kind) {
    return nameOf(kind.param) + std::to_string(kind.index);
}

}  // namespace tarvik::tests
