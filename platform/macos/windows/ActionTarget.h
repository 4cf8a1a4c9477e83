// SPDX-License-Identifier: MIT
#pragma once

#import <Foundation/Foundation.h>

#include <functional>

namespace tarvik::macdesktop {

/// An object that calls `action` when it receives actionSelector(). Controls and menu items hold
/// their target weakly, so the owner of a control also holds the target. `action` may drop both.
NSObject* makeActionTarget(std::function<void()> action);

SEL actionSelector();

}  // namespace tarvik::macdesktop
