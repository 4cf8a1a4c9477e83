// SPDX-License-Identifier: MIT

#import "platform/macos/system/SystemLog.h"

#import "platform/macos/Strings.h"

namespace tarvik::macdesktop {

void SystemLog::write(std::string_view line) {
    NSLog(@"%@", nsString(line));
}

}  // namespace tarvik::macdesktop
