#pragma once

#import <Foundation/Foundation.h>

#include <functional>

namespace tarvik::macdesktop {

/// An object that calls `action` when it is sent actionSelector(). Controls and menu items hold
/// their target weakly, so whoever owns the control holds it as well. The action may drop both.
NSObject* makeActionTarget(std::function<void()> action);

SEL actionSelector();

}  // namespace tarvik::macdesktop
