// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "platform/Accessibility.h"
#include "platform/linux/accessibility/AccessibilityWorker.h"
#include "platform/linux/accessibility/AtspiAccessibility.h"
#include "tests/linux/accessibility/TargetProcess.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

/// A service on the session bus of the environment, and what tests ask of it.
class AtspiFixture : public testing::Test {
  protected:
    static constexpr Seconds timeout{10};

    void startService() {
        service = std::make_unique<linuxdesktop::AtspiAccessibility>(
            std::make_shared<linuxdesktop::AccessibilityWorker>(log), mainQueue,
            linuxdesktop::AtspiAccessibility::Input{
                [this] { return processInFront; },
                [this] { return canType; },
                [this](platform::ProcessIdentifier process) { return process == typedInto; },
                {[this](platform::ProcessIdentifier process) {
                     heldFor = canBeHeld ? std::optional(process) : std::nullopt;
                     return canBeHeld ? std::optional<std::size_t>(0) : std::nullopt;
                 },
                 [this](platform::ProcessIdentifier process, std::size_t units) {
                     EXPECT_EQ(heldFor, process);
                     heldFor.reset();
                     arrivedUnits = units;
                 }}});
    }

    /// The program in front from now on, with the focus in its field.
    std::unique_ptr<TargetProcess> openFake(std::vector<std::string> options) {
        auto target = std::make_unique<TargetProcess>("fake_target.py", std::move(options));
        processInFront = target->identifier();
        return target;
    }

    platform::AXError copyFocus(platform::AXUIElementRef* element) {
        return service->copyAttributeValue(service->createSystemWide(),
                                           platform::axFocusedUIElementAttribute, element);
    }

    platform::AXUIElementRef focusedElement() {
        platform::AXUIElementRef element;
        copyFocus(&element);
        return element;
    }

    platform::AXUIElementRef awaitFocus() {
        platform::AXUIElementRef element;
        EXPECT_TRUE(
            becomesTrue([&] { return copyFocus(&element) == platform::axErrorSuccess; }, timeout));
        return element;
    }

    platform::AXError write(const platform::AXUIElementRef& element, const std::string& text) {
        const auto start = std::chrono::steady_clock::now();
        const platform::AXError status =
            service->setAttributeValue(element, platform::axSelectedTextAttribute, text);
        lastDuration = std::chrono::steady_clock::now() - start;
        return status;
    }

    RecordingLog log;
    RealTimeQueue mainQueue;
    /// Whether typed text can wait for the outcome of a write.
    bool canBeHeld = false;
    /// The process whose typed text waits.
    std::optional<platform::ProcessIdentifier> heldFor;
    /// How much of the text that has waited arrived by the write.
    std::optional<std::size_t> arrivedUnits;
    std::optional<platform::ProcessIdentifier> processInFront;
    bool canType = true;
    std::optional<platform::ProcessIdentifier> typedInto;
    /// How long the last write took.
    Seconds lastDuration{0};
    std::unique_ptr<linuxdesktop::AtspiAccessibility> service;
};

}  // namespace tarvik::tests
