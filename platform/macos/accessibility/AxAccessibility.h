// SPDX-License-Identifier: MIT
#pragma once

#import <AppKit/AppKit.h>

#include <map>

#include "platform/Accessibility.h"
#include "platform/Workspace.h"

namespace tarvik::macdesktop {

/// Accessibility by AXUIElement. A call to another program waits for that program, 0.5 s at most.
///
/// A write asks first whether the attribute can be set, and succeeds when the other program says
/// so. A program that answers the question and then not the write may still carry out the write
/// later. Main thread only.
class AxAccessibility final : public platform::Accessibility {
  public:
    platform::AXUIElementRef createSystemWide() override;
    platform::AXError copyAttributeValue(const platform::AXUIElementRef& element,
                                         std::string_view attribute,
                                         platform::AXUIElementRef* outValue) override;
    platform::AXError setAttributeValue(const platform::AXUIElementRef& element,
                                        std::string_view attribute,
                                        const std::string& text) override;
    bool isProcessTrusted() override;
    bool isProcessTrustedWithOptions(bool prompt) override;

  private:
    bool isUnresponsive(platform::ProcessIdentifier process);

    /// Programs that did not answer a write in time, with their applications. Nil is a program that
    /// is not an application; the system does not report the end of such a program.
    std::map<platform::ProcessIdentifier, NSRunningApplication*> unresponsive_;
};

}  // namespace tarvik::macdesktop
