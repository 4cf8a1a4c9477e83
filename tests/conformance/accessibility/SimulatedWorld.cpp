// SPDX-License-Identifier: MIT

#include "tests/conformance/accessibility/SimulatedWorld.h"

#include <utility>

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
    void focusNothing() override { service_.focusedElement.reset(); }
    void focusField() override { service_.focusedElement = field_; }
    void hang() override { field_->isHung = true; }
    void goOn() override { field_->isHung = false; }
    void die() override { field_->writeStatus = platform::axErrorInvalidUIElement; }

  private:
    simulated::SimulatedAccessibility& service_;
    std::shared_ptr<simulated::SimulatedElement> field_;
};

}  // namespace

std::unique_ptr<AccessibilityTarget> SimulatedAccessibilityWorld::open(
    const TargetContent& content) {
    const auto field = service_.focusNewElement();
    field->text = content.text;
    auto target = std::make_unique<SimulatedTarget>(service_, field);
    target->select(content.selectionStart, content.selectionEnd);
    if (content.isReadOnly) {
        field->writeStatus = platform::axErrorAttributeUnsupported;
    }
    if (content.isButtonFocused) {
        target->focusButton();
    }
    return target;
}

bool SimulatedAccessibilityWorld::waitUntil(const std::function<bool()>& condition,
                                            Seconds /*timeout*/) {
    return condition();
}

}  // namespace tarvik::tests
