// SPDX-License-Identifier: MIT
#pragma once

#include "platform/LoginItemService.h"

namespace tarvik::macdesktop {

/// The application as its own login item, by SMAppService. Registering waits for the system.
class MainAppLoginItem final : public platform::LoginItemService {
  public:
    platform::LoginItemStatus status() override;
    std::optional<Error> registerItem() override;
    std::optional<Error> unregisterItem() override;
};

}  // namespace tarvik::macdesktop
