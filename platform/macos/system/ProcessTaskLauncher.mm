// SPDX-License-Identifier: MIT

#import "platform/macos/system/ProcessTaskLauncher.h"

#import "platform/macos/Strings.h"

namespace tarvik::macdesktop {

std::optional<Error> ProcessTaskLauncher::launch(const std::string& launchPath,
                                                 const std::vector<std::string>& arguments) {
    NSTask* task = [[NSTask alloc] init];
    [task setLaunchPath:nsString(launchPath)];
    [task setArguments:nsStrings(arguments)];
    NSError* error = nil;
    if ([task launchAndReturnError:&error]) {
        return std::nullopt;
    }
    return errorFrom(error);
}

}  // namespace tarvik::macdesktop
