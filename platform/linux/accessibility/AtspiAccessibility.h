// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Accessibility.h"
#include "platform/MainQueue.h"
#include "platform/Workspace.h"
#include "platform/linux/accessibility/PendingWrites.h"

namespace tarvik::linuxdesktop {

class AccessibilityWorker;

/// Accessibility over AT-SPI. A thread of its own speaks D-Bus and tracks the focus all the time.
/// A query at the press of the hotkey would come too late, because the key grab takes the focus
/// away.
///
/// Main thread only. The constructor does not block. The desktop's replies come a few milliseconds
/// later; until then nothing is focused and no process is trusted. A missing or lost bus costs one
/// line in the log and is joined again when it is back.
class AtspiAccessibility final : public platform::Accessibility {
  public:
    /// What the desktop's input answers, on the main thread and without blocking.
    struct Input {
        /// The process whose window has the keyboard; empty when unknown.
        std::function<std::optional<platform::ProcessIdentifier>()> frontmostProcess;
        /// Whether keys can be typed into other programs.
        std::function<bool()> canType;
        /// Whether text for the process is on its way by typing, or may belong to another process.
        /// A write would overtake that text, or be misplaced, so the write is refused, and its text
        /// is typed as well.
        std::function<bool(platform::ProcessIdentifier)> isTypingInto;
        /// Text that is typed instead of a write may have to wait for the outcome of the write, and
        /// for the writes before.
        PendingWrites::Typing typing;
    };

    /// `worker` is the thread, which others may share. `mainQueue` outlives this object.
    AtspiAccessibility(std::shared_ptr<AccessibilityWorker> worker, platform::MainQueue& mainQueue,
                       Input input);
    /// Ends the thread, unless others share it, and blocks until its current request is done.
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
    Input input_;
    std::shared_ptr<PendingWrites> pendingWrites_;
    const std::shared_ptr<AccessibilityWorker> worker_;
};

}  // namespace tarvik::linuxdesktop
