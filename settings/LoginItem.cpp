// SPDX-License-Identifier: MIT

#include "settings/LoginItem.h"

#include <string>

#include "base/Text.h"

namespace tarvik {

namespace {
constexpr std::string_view autoConfiguredKey = "loginItemAutoConfigured";
}

bool LoginItem::setEnabled(bool enabled, platform::LoginItemService& service, platform::Log& log) {
    const std::optional<Error> error = enabled ? service.registerItem() : service.unregisterItem();
    if (!error) {
        return true;
    }
    log.write("TarvikDictate: LoginItem.setEnabled(" + std::string(trueOrFalse(enabled)) +
              ") failed: " + error->localizedDescription);
    return false;
}

void LoginItem::enableOnFirstRun(platform::LoginItemService& service,
                                 platform::UserDefaults& defaults, platform::Log& log) {
    if (defaults.boolForKey(autoConfiguredKey)) {
        return;
    }
    if (setEnabled(true, service, log)) {
        defaults.setBool(true, autoConfiguredKey);
        log.write("TarvikDictate: registered as login item (first run)");
    }
}

}  // namespace tarvik
