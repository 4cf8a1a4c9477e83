// SPDX-License-Identifier: MIT

#include "tests/support/SimulatedAccessibility.h"

namespace tarvik::simulated {

namespace {
class SystemWideElement final : public platform::AXUIElement {};
}  // namespace

platform::AXUIElementRef SimulatedAccessibility::createSystemWide() {
    return std::make_shared<SystemWideElement>();
}

platform::AXError SimulatedAccessibility::copyAttributeValue(
    const platform::AXUIElementRef& element, std::string_view attribute,
    platform::AXUIElementRef* outValue) {
    journal_.add("copyAttributeValue " + std::string(attribute));
    if (!std::dynamic_pointer_cast<SystemWideElement>(element) ||
        attribute != platform::axFocusedUIElementAttribute) {
        return platform::axErrorAttributeUnsupported;
    }
    if (focusedElement) {
        focusedElement->isUnresponsive = false;
    }
    *outValue = focusedElement;
    return focusStatus;
}

platform::AXError SimulatedAccessibility::setAttributeValue(const platform::AXUIElementRef& element,
                                                            std::string_view attribute,
                                                            const std::string& text) {
    journal_.add("setAttributeValue " + std::string(attribute) + " " + text);
    const auto target = std::dynamic_pointer_cast<SimulatedElement>(element);
    if (!target || attribute != platform::axSelectedTextAttribute) {
        return platform::axErrorAttributeUnsupported;
    }
    writes.emplace_back(element, text);
    target->attempts.push_back(text);
    target->isUnresponsive = target->isUnresponsive || target->isHung;
    if (target->isUnresponsive) {
        return platform::axErrorCannotComplete;
    }
    if (target->writeStatus == platform::axErrorSuccess) {
        target->text.replace(target->selectionStart, target->selectionLength, text);
        target->selectionStart += text.size();
        target->selectionLength = 0;
    }
    return target->writeStatus;
}

bool SimulatedAccessibility::isProcessTrusted() {
    journal_.add("isProcessTrusted");
    return isTrusted;
}

bool SimulatedAccessibility::isProcessTrustedWithOptions(bool prompt) {
    journal_.add(std::string("isProcessTrustedWithOptions ") + (prompt ? "true" : "false"));
    if (prompt) {
        ++prompts;
    }
    return isTrusted;
}

std::shared_ptr<SimulatedElement> SimulatedAccessibility::focusNewElement() {
    focusedElement = std::make_shared<SimulatedElement>();
    return focusedElement;
}

}  // namespace tarvik::simulated
