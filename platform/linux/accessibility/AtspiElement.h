// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/Accessibility.h"
#include "platform/Workspace.h"
#include "platform/linux/accessibility/AtspiProtocol.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

class AtspiElement;

/// A program on the accessibility bus.
class AtspiApplication {
  public:
    explicit AtspiApplication(std::string name) : busName(std::move(name)) {}

    BusObject root() const { return {busName, atspi::rootPath}; }

    const std::string busName;
    /// The program did not reply to a write since the focus was last read. Any thread.
    std::atomic<bool> isUnresponsive = false;
    /// The last write that was awaited took the program long. Any thread.
    std::atomic<bool> isSlow = false;
    /// The program has left the bus. Any thread.
    std::atomic<bool> isGone = false;

    /// Empty until the bus has replied. Any thread.
    std::optional<platform::ProcessIdentifier> process() const {
        const platform::ProcessIdentifier known = process_;
        return known > 0 ? std::optional(known) : std::nullopt;
    }
    /// A line for the log: why the program's text will be typed. Any thread.
    std::string reasonToType(const char* reason) const {
        return name() + " " + reason + "; its text will be typed";
    }
    /// How a line of the log calls the program. Any thread.
    std::string name() const {
        const auto known = process();
        return "process " + (known ? std::to_string(*known) : busName);
    }
    /// The bus's thread only.
    void setProcess(platform::ProcessIdentifier process) { process_ = process; }

    /// The program's toolkit; empty until the program has replied. The bus's thread only.
    std::string toolkit;
    /// An insertion has shown that the program counts UTF-16 units. The toolkit's name does not
    /// tell for LibreOffice. The bus's thread only.
    bool isKnownToCountUtf16Units = false;
    /// The widget that has the focus, as last published. The bus's thread only.
    std::weak_ptr<AtspiElement> focus;
    /// There while the program owes replies to a change that may have to be undone. The bus's
    /// thread only.
    std::weak_ptr<const void> lateReplies;

  private:
    std::atomic<platform::ProcessIdentifier> process_ = 0;
};

/// A widget of another program.
class AtspiElement final : public platform::AXUIElement {
  public:
    AtspiElement(std::shared_ptr<AtspiApplication> owner, std::string objectPath)
        : application(std::move(owner)), path(std::move(objectPath)) {}

    BusObject object() const { return {application->busName, path}; }

    /// Whether an earlier write failed in a way that the next write would repeat. Any thread.
    bool isUnreliable() const { return hasLied || application->isUnresponsive; }
    /// Gives the widget and its program another chance. Any thread.
    void forgetFailures() {
        hasLied = false;
        hasRefused = false;
        application->isUnresponsive = false;
    }

    const std::shared_ptr<AtspiApplication> application;
    const std::string path;
    /// The widget confirmed a change that it had not made, since the focus was last read. Any
    /// thread.
    std::atomic<bool> hasLied = false;
    /// The log has a line of a text that the widget did not take, since the focus was last read.
    /// Any thread.
    std::atomic<bool> hasRefused = false;
    /// Whether the widget's text can be changed; empty until the program has replied. The bus's
    /// thread only.
    std::optional<bool> isEditableText;
    /// Empty until the program has replied. The bus's thread only.
    std::optional<std::uint32_t> role;
    /// What contains the widget; empty until the program has replied. The bus's thread only.
    std::optional<BusObject> parent;

    /// The path of the focused widget that a write into this widget has looked for inside it; empty
    /// before. The bus's thread only.
    std::string examinedFocus;
    /// Whether that widget is inside this one. The bus's thread only.
    bool containsFocus = false;

    /// Whether the widget hides its text, and lets nobody read the text either. The bus's thread
    /// only.
    bool isPasswordField() const { return role == atspi::passwordTextRole; }
    /// Whether the widget is text of a document, which may go on on the next page. The bus's thread
    /// only.
    bool isParagraph() const { return role == atspi::paragraphRole || role == atspi::headingRole; }
};

}  // namespace tarvik::linuxdesktop
