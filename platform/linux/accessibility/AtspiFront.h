// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <utility>

#include "platform/linux/accessibility/AccessibilityState.h"
#include "platform/linux/input/FrontMeans.h"

namespace tarvik::linuxdesktop {

/// The process whose window is active, as its program reports it over the accessibility bus. A
/// program that reports nothing is never in front. Costs nothing until it is asked.
class AtspiFront final : public FrontMeans {
  public:
    explicit AtspiFront(std::shared_ptr<const AccessibilityState> state)
        : state_(std::move(state)) {}

    std::optional<platform::ProcessIdentifier> frontmostProcess() const override;
    /// The same, if its program has reported that since a time. A program that hangs does not
    /// report that the user has left it.
    std::optional<platform::ProcessIdentifier> frontmostProcessSince(
        std::chrono::steady_clock::time_point time) const;
    bool followsReports() const override { return true; }

  private:
    const std::shared_ptr<const AccessibilityState> state_;
};

}  // namespace tarvik::linuxdesktop
