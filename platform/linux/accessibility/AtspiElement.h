// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/Accessibility.h"
#include "platform/Workspace.h"
#include "platform/linux/accessibility/AtspiProtocol.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// A program on the accessibility bus.
class AtspiApplication {
  public:
    explicit AtspiApplication(std::string name) : busName(std::move(name)) {}

    BusObject root() const { return {busName, atspi::rootPath}; }

    const std::string busName;
    /// The program did not reply, or confirmed a change that it had not made. Never reset. Any
    /// thread.
    std::atomic<bool> isUnreliable = false;
    /// The program has left the bus. Any thread.
    std::atomic<bool> isGone = false;

    /// Empty until the bus has replied. Any thread.
    std::optional<platform::ProcessIdentifier> process() const {
        const platform::ProcessIdentifier known = process_;
        return known > 0 ? std::optional(known) : std::nullopt;
    }
    /// The bus's thread only.
    void setProcess(platform::ProcessIdentifier process) { process_ = process; }

    /// The program's toolkit; empty until the program has replied. The bus's thread only.
    std::string toolkit;

  private:
    std::atomic<platform::ProcessIdentifier> process_ = 0;
};

/// A widget of another program.
class AtspiElement final : public platform::AXUIElement {
  public:
    AtspiElement(std::shared_ptr<AtspiApplication> owner, std::string objectPath)
        : application(std::move(owner)), path(std::move(objectPath)) {}

    BusObject object() const { return {application->busName, path}; }

    const std::shared_ptr<AtspiApplication> application;
    const std::string path;
    /// Whether the widget's text can be changed; empty until the program has replied. The bus's
    /// thread only.
    std::optional<bool> isEditableText;
};

}  // namespace tarvik::linuxdesktop
