#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <type_traits>

namespace tarvik::macdesktop {

struct CFReleaser {
    void operator()(CFTypeRef reference) const { CFRelease(reference); }
};

/// One owned reference to a Core Foundation object, released with the handle. It is made from what
/// a function with "Create" or "Copy" in its name has answered, and from nothing else.
template <typename Reference>
using CFHandle = std::unique_ptr<std::remove_pointer_t<Reference>, CFReleaser>;

}  // namespace tarvik::macdesktop
