#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Accessibility.h"
#include "platform/Log.h"
#include "platform/Workspace.h"

namespace tarvik::linuxdesktop {

class AccessibilityWorker;

/// Accessibility over AT-SPI. A thread of its own speaks D-Bus and tracks the focus all the time:
/// once the hotkey is pressed it is too late to ask, because the key grab takes the focus away.
///
/// Main thread only. The constructor does not block. The desktop's replies come a few milliseconds
/// later; until then nothing is focused and no process is trusted. A missing or lost bus costs one
/// line in the log and is joined again when it is back.
class AtspiAccessibility final : public platform::Accessibility {
  public:
    /// The process whose window has the keyboard, as the display knows it; empty when unknown.
    /// Called on the main thread; does not block.
    using ProcessInFront = std::function<std::optional<platform::ProcessIdentifier>()>;
    /// Whether keys can be typed into other programs. Called on the main thread; does not block.
    using CanType = std::function<bool()>;

    /// `log` outlives this object. While `processInFront` returns nothing, the program that last
    /// activated a window counts as the process in front.
    AtspiAccessibility(platform::Log& log, ProcessInFront processInFront, CanType canType);
    /// Ends the thread. Blocks until its current request is done.
    ~AtspiAccessibility() override;

    /// Calls `handler` once, on the service's thread, as soon as it is known whether the process is
    /// trusted. A missing bus counts as known. `handler` does not block.
    void whenFirstKnown(std::function<void()> handler);

    platform::AXUIElementRef createSystemWide() override;
    platform::AXError copyAttributeValue(const platform::AXUIElementRef& element,
                                         std::string_view attribute,
                                         platform::AXUIElementRef* outValue) override;
    platform::AXError setAttributeValue(const platform::AXUIElementRef& element,
                                        std::string_view attribute,
                                        const std::string& text) override;
    /// True while the desktop's accessibility is switched on, programs report to its bus, and keys
    /// can be typed.
    bool isProcessTrusted() override;
    bool isProcessTrustedWithOptions(bool prompt) override;

  private:
    ProcessInFront processInFront_;
    CanType canType_;
    std::unique_ptr<AccessibilityWorker> worker_;
};

}  // namespace tarvik::linuxdesktop
