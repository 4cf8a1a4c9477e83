#pragma once

#include <string>
#include <utility>

#include "platform/UserInterface.h"
#include "platform/linux/system/SymbolIcon.h"

namespace tarvik::linuxdesktop {

/// One of the symbols, to be shown by the status item. Main thread only.
class QtImage final : public platform::Image {
  public:
    QtImage(Symbol symbol, std::string accessibilityDescription)
        : symbol_(symbol), accessibilityDescription_(std::move(accessibilityDescription)) {}

    void setTemplate(bool isTemplate) override { isTemplate_ = isTemplate; }

    Symbol symbol() const { return symbol_; }
    const std::string& accessibilityDescription() const { return accessibilityDescription_; }
    bool isTemplate() const { return isTemplate_; }

  private:
    Symbol symbol_;
    std::string accessibilityDescription_;
    bool isTemplate_ = false;
};

}  // namespace tarvik::linuxdesktop
