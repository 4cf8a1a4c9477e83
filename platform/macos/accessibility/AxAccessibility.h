#pragma once

#import <AppKit/AppKit.h>

#include <map>

#include "platform/Accessibility.h"
#include "platform/Workspace.h"

namespace tarvik::macdesktop {

/// The system's accessibility interface. Each call to another program waits for it, 0.5 s at the
/// most. Whether a text has arrived is what the other program says; one that does not answer in
/// time may still take it later. Main thread only.
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
    bool hasFailedToAnswer(platform::ProcessIdentifier process);

    /// Programs that did not answer a write. Nil is one that the system does not count among the
    /// applications, and of which nobody learns when it ends.
    std::map<platform::ProcessIdentifier, NSRunningApplication*> silent_;
};

}  // namespace tarvik::macdesktop
