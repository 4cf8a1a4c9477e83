// SPDX-License-Identifier: MIT

#include <memory>

#include "platform/linux/accessibility/AccessibilityWorker.h"
#include "platform/linux/accessibility/AtspiFront.h"
#include "tests/conformance/input/InputConformance.h"
#include "tests/conformance/input/LinuxInputWorld.h"
#include "tests/linux/x11/X11User.h"

namespace tarvik::tests {

namespace {

/// Real programs, of which only the accessibility bus tells which one is in front.
class AtspiFrontWorld final : public LinuxInputWorld<X11User> {
  public:
    std::optional<platform::ProcessIdentifier> frontmostProcess() override {
        return front_.frontmostProcess();
    }
    void take(std::uint32_t /*modifiers*/) override {}

  private:
    std::shared_ptr<linuxdesktop::AccessibilityWorker> worker_ =
        std::make_shared<linuxdesktop::AccessibilityWorker>(log_);
    linuxdesktop::AtspiFront front_{{worker_, &worker_->state()}};
};

}  // namespace

std::vector<NamedInputWorld> realInputWorlds() {
    return {{"AccessibilityBus",
             []() -> std::unique_ptr<InputWorld> { return std::make_unique<AtspiFrontWorld>(); }}};
}

}  // namespace tarvik::tests
