// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Suspends slow keys and bounce keys while the object lives. Typed keys are pressed faster than
/// these filters allow, and would be dropped.
///
/// The destructor enables the filters again, on each keyboard those that were enabled there. The
/// server does the same when this client is killed. Where no filter is enabled nothing changes. The
/// server is grabbed while the object lives, so no other client changes the filters meanwhile.
/// Input thread only.
class FilterSuspension {
  public:
    /// `keyboard` is the XInput device that presses the keys.
    FilterSuspension(XcbConnection& connection, std::uint16_t keyboard);
    ~FilterSuspension();
    FilterSuspension(const FilterSuspension&) = delete;
    FilterSuspension& operator=(const FilterSuspension&) = delete;

  private:
    std::uint32_t filtersOf(std::uint16_t keyboard);
    void findFilters();
    void enableAtEnd(std::uint16_t keyboard, std::uint32_t filters);
    void set(std::uint16_t keyboard, std::uint32_t filters);

    XcbConnection& connection_;
    /// The enabled filters of each keyboard, by its XInput device. Empty when there are none.
    std::map<std::uint16_t, std::uint32_t> filters_;
};

}  // namespace tarvik::linuxdesktop
