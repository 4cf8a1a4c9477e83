#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/Accessibility.h"
#include "platform/Workspace.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// A program on the accessibility bus.
class AtspiApplication {
  public:
    explicit AtspiApplication(std::string name) : busName(std::move(name)) {}

    /// Where every program keeps the object that stands for all of it.
    BusObject root() const { return {busName, "/org/a11y/atspi/accessible/root"}; }

    const std::string busName;
    /// It did not answer, or said that it had done what it had not. Set for good. Any thread.
    std::atomic<bool> isUnreliable = false;
    /// It has left the bus. Any thread.
    std::atomic<bool> isGone = false;

    /// The rest belongs to the bus's thread. Empty until the bus has told.
    std::optional<platform::ProcessIdentifier> process;
    /// What its widgets are made with; empty until it has told.
    std::string toolkit;
};

/// A widget of another program.
class AtspiElement final : public platform::AXUIElement {
  public:
    AtspiElement(std::shared_ptr<AtspiApplication> owner, std::string objectPath)
        : application(std::move(owner)), path(std::move(objectPath)) {}

    BusObject object() const { return {application->busName, path}; }

    const std::shared_ptr<AtspiApplication> application;
    const std::string path;
    /// Whether it offers to have its text changed; empty until it has told. It belongs to the
    /// bus's thread.
    std::optional<bool> isEditableText;
};

}  // namespace tarvik::linuxdesktop
