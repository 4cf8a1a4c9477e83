// SPDX-License-Identifier: MIT

#include <utility>

#include "tests/conformance/accessibility/AccessibilityWorld.h"
#include "tests/support/Journal.h"
#include "tests/support/SimulatedAccessibility.h"

namespace tarvik::tests {

namespace {

class SimulatedTarget final : public AccessibilityTarget {
  public:
    SimulatedTarget(simulated::SimulatedAccessibility& service,
                    std::shared_ptr<simulated::SimulatedElement> field)
        : service_(service), field_(std::move(field)) {}

    std::string text() override { return field_->text; }
    void select(std::size_t start, std::size_t end) override {
        field_->selectionStart = byteOffset(field_->text, start);
        field_->selectionLength = byteOffset(field_->text, end) - field_->selectionStart;
    }
    void focusButton() override {
        service_.focusNewElement()->writeStatus = platform::axErrorAttributeUnsupported;
    }
    void focusNothing() override {
        service_.focusedElement.reset();
        service_.focusStatus = platform::axErrorNoValue;
    }
    void focusField() override {
        service_.focusedElement = field_;
        service_.focusStatus = platform::axErrorSuccess;
    }
    void hang() override { field_->isHung = true; }
    void goOn() override { field_->isHung = false; }
    void die() override { field_->writeStatus = platform::axErrorInvalidUIElement; }

  private:
    simulated::SimulatedAccessibility& service_;
    std::shared_ptr<simulated::SimulatedElement> field_;
};

/// Simulated elements in place of programs.
class SimulatedAccessibilityWorld final : public AccessibilityWorld {
  public:
    SimulatedAccessibilityWorld() { service_.focusStatus = platform::axErrorNoValue; }

    platform::Accessibility& service() override { return service_; }

    std::unique_ptr<AccessibilityTarget> open(const TargetContent& content) override {
        const auto field = service_.focusNewElement();
        field->text = content.text;
        auto target = std::make_unique<SimulatedTarget>(service_, field);
        target->focusField();
        target->select(content.selectionStart, content.selectionEnd);
        if (content.isReadOnly) {
            field->writeStatus = platform::axErrorAttributeUnsupported;
        }
        if (content.isButtonFocused) {
            target->focusButton();
        }
        return target;
    }

    bool waitUntil(const std::function<bool()>& condition, Seconds /*timeout*/) override {
        return condition();
    }

  private:
    simulated::Journal journal_;
    simulated::SimulatedAccessibility service_{journal_};
};

}  // namespace

std::unique_ptr<AccessibilityWorld> makeSimulatedAccessibilityWorld() {
    return std::make_unique<SimulatedAccessibilityWorld>();
}

}  // namespace tarvik::tests
