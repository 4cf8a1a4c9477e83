// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/UserInterface.h"
#include "settings/PermissionStatus.h"

namespace tarvik {

/// One row of the setup window: the name of a permission, its status, and the button for granting
/// the permission. The row only displays. Main thread only.
class ConfigRow {
  public:
    /// The width of the name in points. All rows have the same, so that their other parts line up.
    static constexpr double nameWidth = 160;
    /// The priority of views that grow, shrink or are cut off before other views.
    static constexpr platform::LayoutPriority yielding = 250;

    /// The status is "—" until the first apply(). The button calls `action`, whose name is
    /// `actionName`. The button's name for screen readers consists of both texts, because the
    /// buttons of all rows have the same title.
    ConfigRow(platform::UserInterface& userInterface, const std::string& label,
              const std::string& buttonTitle, const std::string& actionName,
              std::function<void()> action);

    /// Shows `grantedLabel` when `status` is granted, and `deniedLabel` for every other status.
    void apply(PermissionStatus status, const std::string& grantedLabel,
               const std::string& deniedLabel);

    const std::shared_ptr<platform::View>& view() const { return view_; }

  private:
    std::shared_ptr<platform::Label> nameLabel_;
    std::shared_ptr<platform::Label> statusLabel_;
    std::shared_ptr<platform::Button> actionButton_;
    std::shared_ptr<platform::View> view_;
};

}  // namespace tarvik
