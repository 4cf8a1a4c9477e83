#pragma once

#include <cstdint>
#include <optional>

#include "platform/Platform.h"
#include "usage/CTATier.h"

namespace tarvik {

/// Adds up how long the user has dictated in all and decides which call to action is due.
///
/// All state is in the user defaults, and only ever moves forward. Main thread.
class UsageTracker {
  public:
    explicit UsageTracker(platform::Platform& platform);

    /// The one tracker of the current platform. Any thread.
    static UsageTracker& shared();

    /// Adds a finished session of so many whole seconds (below 1: nothing happens) and answers the
    /// call to action that is due now, each one once in the life of the installation. A total past
    /// the range of 64 bits is said in the log and stops the process; nothing is stored then.
    std::optional<CTATier> recordSession(std::int64_t seconds);

    /// No call to action comes any more; the total keeps growing.
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
