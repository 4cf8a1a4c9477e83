// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "platform/LoginItemService.h"

namespace tarvik::linuxdesktop {

/// The login item as an autostart entry of the user's desktop. An entry that the user has hidden or
/// deleted, or whose program is gone, counts as not registered. Every operation waits for the disk.
/// Main thread only.
class XdgLoginItem final : public platform::LoginItemService {
  public:
    /// The entry starts `executable` (absolute).
    explicit XdgLoginItem(std::string executable);

    platform::LoginItemStatus status() override;
    std::optional<Error> registerItem() override;
    /// Succeeds also when the item is not registered.
    std::optional<Error> unregisterItem() override;

  private:
    std::string executable_;
    std::string path_;
};

}  // namespace tarvik::linuxdesktop
