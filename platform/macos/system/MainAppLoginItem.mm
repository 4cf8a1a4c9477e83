// SPDX-License-Identifier: MIT

#import "platform/macos/system/MainAppLoginItem.h"

#import <ServiceManagement/ServiceManagement.h>

#import "platform/macos/Strings.h"

namespace tarvik::macdesktop {

platform::LoginItemStatus MainAppLoginItem::status() {
    return static_cast<platform::LoginItemStatus>(SMAppService.mainAppService.status);
}

std::optional<Error> MainAppLoginItem::registerItem() {
    NSError* error = nil;
    if ([SMAppService.mainAppService registerAndReturnError:&error]) {
        return std::nullopt;
    }
    return errorFrom(error);
}

std::optional<Error> MainAppLoginItem::unregisterItem() {
    NSError* error = nil;
    if ([SMAppService.mainAppService unregisterAndReturnError:&error]) {
        return std::nullopt;
    }
    return errorFrom(error);
}

}  // namespace tarvik::macdesktop
