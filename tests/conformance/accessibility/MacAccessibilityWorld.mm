// SPDX-License-Identifier: MIT

#include <cstdlib>

#import "platform/macos/accessibility/AxAccessibility.h"
#include "tests/conformance/accessibility/AccessibilityWorld.h"
#import "tests/macos/MainRunLoop.h"

namespace tarvik::tests {

namespace {

/// The accessibility of macOS, with the permission or without.
class MacAccessibilityWorld final : public AccessibilityWorld {
  public:
    platform::Accessibility& service() override { return service_; }
    bool waitUntil(const std::function<bool()>& condition, Seconds timeout) override {
        return runMainLoopUntil(condition, timeout);
    }

    // The suite that would need it is left out: text of other programs needs the permission.
    std::unique_ptr<AccessibilityTarget> open(const TargetContent&) override { std::abort(); }

  private:
    macdesktop::AxAccessibility service_;
};

}  // namespace

std::vector<AccessibilityWorldMaker> realAccessibilityWorlds() {
    return {{"Real", [] { return std::make_unique<MacAccessibilityWorld>(); }}};
}

}  // namespace tarvik::tests
