// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Accessibility.h"
#include "tests/support/Journal.h"

namespace tarvik::simulated {

/// A text element of another program. A write replaces the selection and puts the caret behind the
/// new text.
class SimulatedElement final : public platform::AXUIElement {
  public:
    /// The result of every write, unless the program hangs. A write with an error does not change
    /// the text.
    platform::AXError writeStatus = platform::axErrorSuccess;
    /// The program does not reply to writes.
    bool isHung = false;
    /// The program has not replied to a write since the focus was last read.
    bool isUnresponsive = false;
    std::string text;
    /// The selection, in bytes.
    std::size_t selectionStart = 0;
    std::size_t selectionLength = 0;
    /// The texts of all writes, including failed ones.
    std::vector<std::string> attempts;
};

/// Accessibility of a desktop whose focus a test sets.
class SimulatedAccessibility final : public platform::Accessibility {
  public:
    explicit SimulatedAccessibility(Journal& journal) : journal_(journal) {}

    platform::AXUIElementRef createSystemWide() override;
    platform::AXError copyAttributeValue(const platform::AXUIElementRef& element,
                                         std::string_view attribute,
                                         platform::AXUIElementRef* outValue) override;
    platform::AXError setAttributeValue(const platform::AXUIElementRef& element,
                                        std::string_view attribute,
                                        const std::string& text) override;
    bool isProcessTrusted() override;
    bool isProcessTrustedWithOptions(bool prompt) override;

    /// Makes a text element and gives it the focus.
    std::shared_ptr<SimulatedElement> focusNewElement();

    /// The element with the focus. Without one, reading the focus yields focusStatus and no value.
    std::shared_ptr<SimulatedElement> focusedElement;
    /// The result of reading the focused element. Even an error comes with the value.
    platform::AXError focusStatus = platform::axErrorSuccess;
    bool isTrusted = true;
    /// How often the permission was requested with the prompt.
    int prompts = 0;
    /// The writes to all elements, including failed ones.
    std::vector<std::pair<platform::AXUIElementRef, std::string>> writes;

  private:
    Journal& journal_;
};

}  // namespace tarvik::simulated
