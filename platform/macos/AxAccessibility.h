#pragma once

#include "platform/Accessibility.h"

namespace tarvik::macdesktop {

/// The system's accessibility interface. Each call to another program waits for it, 0.5 s at the
/// most. Whether a text has arrived is what the other program says. Main thread only.
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
};

}  // namespace tarvik::macdesktop
