// SPDX-License-Identifier: MIT

#include <memory>

#include "tests/conformance/input/InputConformance.h"
#include "tests/conformance/input/LinuxInputWorld.h"
#include "tests/linux/sway/SwayUser.h"

namespace tarvik::tests {

namespace {

// Outlives the input, which shares the worker.
struct Accessibility {
    RecordingLog log;
    std::shared_ptr<linuxdesktop::AccessibilityWorker> worker =
        std::make_shared<linuxdesktop::AccessibilityWorker>(log);
};

/// A session of which only the protocols of wlroots are known.
class WaylandWorld final : private Accessibility, public LinuxInputWorld<SwayUser> {
  public:
    WaylandWorld() : LinuxInputWorld(worker) {}

    void take(std::uint32_t /*modifiers*/) override {}
};

}  // namespace

std::vector<NamedInputWorld> realInputWorlds() {
    return {{"Wayland",
             []() -> std::unique_ptr<InputWorld> { return std::make_unique<WaylandWorld>(); }}};
}

}  // namespace tarvik::tests
