// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/Time.h"
#include "platform/Accessibility.h"

namespace tarvik::tests {

/// What a program's text field begins with. Offsets are in characters.
struct TargetContent {
    std::string text;
    std::size_t selectionStart = 0;
    std::size_t selectionEnd = 0;
    bool isReadOnly = false;
    /// A button beside the field has the focus instead.
    bool isButtonFocused = false;
};

/// Another program, with one text field and one button.
class AccessibilityTarget {
  public:
    virtual ~AccessibilityTarget() = default;

    virtual std::string text() = 0;
    /// Selects; an empty selection places the caret.
    virtual void select(std::size_t start, std::size_t end) = 0;
    virtual void focusButton() = 0;
    /// Takes the focus away from the text field. No other widget gets it.
    virtual void focusNothing() = 0;
    virtual void focusField() = 0;
    virtual void hang() = 0;
    virtual void goOn() = 0;
    virtual void die() = 0;
};

/// The outside of an accessibility service: the other programs.
class AccessibilityWorld {
  public:
    virtual ~AccessibilityWorld() = default;

    virtual platform::Accessibility& service() = 0;
    /// Starts a program that comes to the front and takes the focus.
    virtual std::unique_ptr<AccessibilityTarget> open(const TargetContent& content) = 0;
    /// Waits until `condition` holds; false when it does not hold within `timeout`.
    virtual bool waitUntil(const std::function<bool()>& condition, Seconds timeout) = 0;
};

struct AccessibilityWorldMaker {
    std::string name;
    std::function<std::unique_ptr<AccessibilityWorld>()> make;
};

std::unique_ptr<AccessibilityWorld> makeSimulatedAccessibilityWorld();
/// The worlds of the backend for which the program is built.
std::vector<AccessibilityWorldMaker> realAccessibilityWorlds();

inline auto everyAccessibilityWorld() {
    std::vector<AccessibilityWorldMaker> worlds = realAccessibilityWorlds();
    worlds.push_back({"Simulated", makeSimulatedAccessibilityWorld});
    return testing::ValuesIn(worlds);
}

inline std::string nameOf(const testing::TestParamInfo<AccessibilityWorldMaker>& info) {
    return info.param.name;
}

/// The byte at which a character of a UTF-8 text begins.
inline std::size_t byteOffset(const std::string& text, std::size_t character) {
    std::size_t byte = 0;
    for (; byte < text.size(); ++byte) {
        const bool isStart = (static_cast<unsigned char>(text[byte]) & 0xC0U) != 0x80U;
        if (isStart && character-- == 0) {
            break;
        }
    }
    return byte;
}

}  // namespace tarvik::tests
