#pragma once

#include <map>
#include <memory>
#include <optional>

#include "platform/Workspace.h"
#include "platform/linux/accessibility/AtspiElement.h"

namespace tarvik::linuxdesktop {

/// What has the focus in each program, as far as it is known. Immutable; any thread.
struct FocusSnapshot {
    /// A program that hides its focus while a key is grabbed keeps the widget that had it before.
    std::map<platform::ProcessIdentifier, std::shared_ptr<AtspiElement>> elements;
    /// The program whose window is active, when its own word has to do.
    std::optional<platform::ProcessIdentifier> activeProcess;
};

}  // namespace tarvik::linuxdesktop
