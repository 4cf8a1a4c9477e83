#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Accessibility.h"
#include "tests/support/Journal.h"

namespace tarvik::simulated {

/// A text element of another program. A write replaces the selection and leaves the caret after it.
class SimulatedElement final : public platform::AXUIElement {
  public:
    /// What a write answers; anything but success leaves the text alone.
    platform::AXError writeStatus = platform::axErrorSuccess;
    std::string text;
    /// In bytes.
    std::size_t selectionStart = 0;
    std::size_t selectionLength = 0;
    /// Every text that was written, refused ones too.
    std::vector<std::string> attempts;
};

/// A desktop whose focus a test sets.
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

    /// Makes a text element that has the focus from now on.
    std::shared_ptr<SimulatedElement> focusNewElement();

    /// The element that has the focus; none is a success without a value, as focusStatus allows.
    std::shared_ptr<SimulatedElement> focusedElement;
    /// What asking for the focused element answers; the value is handed out all the same.
    platform::AXError focusStatus = platform::axErrorSuccess;
    bool isTrusted = true;
    /// How often permission was asked for with the prompt.
    int prompts = 0;
    /// Every write to any element, refused ones too.
    std::vector<std::pair<platform::AXUIElementRef, std::string>> writes;

  private:
    Journal& journal_;
};

}  // namespace tarvik::simulated
