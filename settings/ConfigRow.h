#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/UserInterface.h"
#include "settings/PermissionStatus.h"

namespace tarvik {

/// One line of the setup window: the name of a permission, whether it is granted, and the button
/// that starts to grant it. It only displays. Main thread only.
class ConfigRow {
  public:
    /// Points. Every line's name is this wide, so that what follows lines up.
    static constexpr double nameWidth = 160;
    /// What grows, shrinks or is cut off before the lines around it do.
    static constexpr platform::LayoutPriority yielding = 250;

    /// The status reads "—" until the first apply(). `action` is what the button does, which is
    /// named after both texts to a screen reader: the rows' buttons look alike.
    ConfigRow(platform::UserInterface& userInterface, const std::string& label,
              const std::string& buttonTitle, std::function<void()> action);

    /// Shows `status` in the words given; every status but `granted` looks the same.
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
