// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>

#include "platform/Workspace.h"
#include "platform/linux/accessibility/AtspiElement.h"

namespace tarvik::linuxdesktop {

/// The focused widget of each program, as far as known. Immutable; any thread.
struct FocusSnapshot {
    /// A program that hides its focus during a key grab keeps the widget that had the focus before.
    std::map<platform::ProcessIdentifier, std::shared_ptr<AtspiElement>> elements;
    /// The process that activated its window last; empty when none is known.
    std::optional<platform::ProcessIdentifier> activeProcess;
    /// When the report of `activeProcess` came.
    std::chrono::steady_clock::time_point activeSince;
};

}  // namespace tarvik::linuxdesktop
