// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "tests/conformance/accessibility/AccessibilityWorld.h"
#include "tests/support/Journal.h"
#include "tests/support/SimulatedAccessibility.h"

namespace tarvik::tests {

/// Simulated elements in place of programs.
class SimulatedAccessibilityWorld final : public AccessibilityWorld {
  public:
    platform::Accessibility& service() override { return service_; }
    std::unique_ptr<AccessibilityTarget> open(const TargetContent& content) override;
    bool waitUntil(const std::function<bool()>& condition, Seconds timeout) override;

  private:
    simulated::Journal journal_;
    simulated::SimulatedAccessibility service_{journal_};
};

}  // namespace tarvik::tests
