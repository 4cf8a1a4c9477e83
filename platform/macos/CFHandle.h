// SPDX-License-Identifier: MIT
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <type_traits>

namespace tarvik::macdesktop {

struct CFReleaser {
    void operator()(CFTypeRef reference) const { CFRelease(reference); }
};

/// An owned reference to a Core Foundation object, released with the handle. Make a handle only
/// from the result of a function with "Create" or "Copy" in its name.
template <typename Reference>
using CFHandle = std::unique_ptr<std::remove_pointer_t<Reference>, CFReleaser>;

}  // namespace tarvik::macdesktop
