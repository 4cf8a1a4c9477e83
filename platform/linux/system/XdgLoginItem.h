#pragma once

#include <string>

#include "platform/LoginItemService.h"

namespace tarvik::linuxdesktop {

/// The login item as an autostart entry of the user's desktop. An entry that the user has hidden or
/// deleted, or whose program is gone, counts as not registered.
class XdgLoginItem final : public platform::LoginItemService {
  public:
    /// `executable` (absolute) is what the entry starts.
    explicit XdgLoginItem(std::string executable);

    platform::LoginItemStatus status() override;
    std::optional<Error> registerItem() override;
    /// Also succeeds when there is nothing to unregister.
    std::optional<Error> unregisterItem() override;

  private:
    std::string executable_;
    std::string path_;
};

}  // namespace tarvik::linuxdesktop
