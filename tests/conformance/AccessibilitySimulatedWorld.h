#pragma once

#include <memory>

#include "tests/conformance/AccessibilityWorld.h"
#include "tests/support/Journal.h"
#include "tests/support/SimulatedAccessibility.h"

namespace tarvik::conformance {

/// Simulated elements in place of programs.
class AccessibilitySimulatedWorld final : public AccessibilityWorld {
  public:
    platform::Accessibility& service() override { return service_; }
    std::unique_ptr<AccessibilityTarget> open(const TargetContent& content) override;
    bool waitUntil(const std::function<bool()>& condition, Seconds limit) override;

  private:
    simulated::Journal journal_;
    simulated::SimulatedAccessibility service_{journal_};
};

}  // namespace tarvik::conformance
