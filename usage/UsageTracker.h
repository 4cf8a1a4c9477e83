// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

#include "platform/Platform.h"
#include "usage/CTATier.h"

namespace tarvik {

/// Adds up the total dictation time and decides which call to action is due.
///
/// All state is in the user defaults. The total only grows, and a flag once set stays set. Main
/// thread.
class UsageTracker {
  public:
    explicit UsageTracker(platform::Platform& platform);

    /// The tracker of the current platform. Any thread.
    static UsageTracker& shared();

    /// Adds a finished session of `seconds` to the total and returns the call to action that is due
    /// now. Each call to action is returned once per installation.
    ///
    /// Does nothing when `seconds` is below 1. A total beyond 64 bits is logged and aborts the
    /// process; nothing is stored then.
    std::optional<CTATier> recordSession(std::int64_t seconds);

    /// Ends all calls to action. The total keeps growing.
    void dismissPermanently();

  private:
    static constexpr std::string_view kSeconds = "totalDictationSeconds";
    static constexpr std::string_view kCTA10Shown = "ctaTenMinuteShown";
    static constexpr std::string_view kCTA60Shown = "ctaSixtyMinuteShown";
    static constexpr std::string_view kPermDismissed = "ctaPermanentlyDismissed";
    static constexpr std::int64_t tenMinutes = 600;
    static constexpr std::int64_t sixtyMinutes = 3600;

    std::int64_t addToTotal(std::int64_t seconds);
    bool takeFirstTime(std::string_view shownKey);

    platform::UserDefaults& defaults_;
    platform::Log& log_;
};

}  // namespace tarvik
