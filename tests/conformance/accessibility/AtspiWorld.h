// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/Workspace.h"
#include "platform/linux/accessibility/AtspiAccessibility.h"
#include "tests/conformance/accessibility/AccessibilityWorld.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

/// Real programs of one toolkit on the accessibility bus of the session around the test.
class AtspiWorld final : public AccessibilityWorld {
  public:
    /// `program` is a file of tests/desktop/targets; `widget` is "entry" or "text".
    AtspiWorld(std::string program, std::string widget);

    platform::Accessibility& service() override { return *service_; }
    std::unique_ptr<AccessibilityTarget> open(const TargetContent& content) override;
    bool waitUntil(const std::function<bool()>& condition, Seconds timeout) override;

    /// Ends the service and starts another one.
    void restartService();
    /// The process in front, as the display knows it.
    std::optional<platform::ProcessIdentifier> processInFront;

  private:
    std::string program_;
    std::string widget_;
    RecordingLog log_;
    RealTimeQueue mainQueue_;
    std::unique_ptr<linuxdesktop::AtspiAccessibility> service_;
};

}  // namespace tarvik::tests
