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

/// Accessibility over AT-SPI. A thread of its own speaks D-Bus and follows the focus all the time,
/// because a pressed hotkey takes the focus away before anybody could ask who had it.
///
/// Main thread only. The constructor returns at once; what the desktop answers is known a few
/// milliseconds later, and until then nothing is focused and nobody is trusted. A missing or lost
/// bus is one line in the log; it is joined again when it is back.
class AtspiAccessibility final : public platform::Accessibility {
  public:
    /// The process whose window has the keyboard, as the display tells it; empty when it is not
    /// known. Called on the main thread; does not wait.
    using ProcessInFront = std::function<std::optional<platform::ProcessIdentifier>()>;
    /// Whether keys can be typed into other programs. Called on the main thread; does not wait.
    using CanType = std::function<bool()>;

    /// `log` outlives this object. With an empty `processInFront` answer, the program that last
    /// activated a window counts as the one in front.
    AtspiAccessibility(platform::Log& log, ProcessInFront processInFront, CanType canType);
    /// Ends the thread; waits for what it does at the moment, never for another program.
    ~AtspiAccessibility() override;

    /// Calls `handler` once, on a thread of the service's own, where it does not wait: as soon as
    /// it is known whether the process is trusted, be it because something is missing for it.
    void whenFirstKnown(std::function<void()> handler);

    platform::AXUIElementRef createSystemWide() override;
    platform::AXError copyAttributeValue(const platform::AXUIElementRef& element,
                                         std::string_view attribute,
                                         platform::AXUIElementRef* outValue) override;
    platform::AXError setAttributeValue(const platform::AXUIElementRef& element,
                                        std::string_view attribute,
                                        const std::string& text) override;
    /// True while the desktop's accessibility is switched on, its bus answers, and keys can be
    /// typed.
    bool isProcessTrusted() override;
    bool isProcessTrustedWithOptions(bool prompt) override;

  private:
    ProcessInFront processInFront_;
    CanType canType_;
    std::unique_ptr<AccessibilityWorker> worker_;
};

}  // namespace tarvik::linuxdesktop
