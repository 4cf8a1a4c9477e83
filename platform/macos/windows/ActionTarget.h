// SPDX-License-Identifier: MIT
#pragma once

#import <Foundation/Foundation.h>

#include <functional>
#include <string>

namespace tarvik::macdesktop {

/// An object that calls `action` when it receives any selector of actionSelector(). Controls and
/// menu items hold their target weakly, so the owner of a control also holds the target. `action`
/// may drop both.
NSObject* makeActionTarget(std::function<void()> action);

/// The selector with the name of an action, or a selector for all actions without a name.
SEL actionSelector(const std::string& actionName);

}  // namespace tarvik::macdesktop
