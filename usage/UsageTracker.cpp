// SPDX-License-Identifier: MIT

#include "usage/UsageTracker.h"

#include <cstdlib>
#include <limits>

namespace tarvik {

UsageTracker::UsageTracker(platform::Platform& platform)
    : defaults_(platform.userDefaults()), log_(platform.log()) {}

UsageTracker& UsageTracker::shared() {
    return platform::Platform::current().shared<UsageTracker>();
}

std::optional<CTATier> UsageTracker::recordSession(std::int64_t seconds) {
    if (seconds < 1) {
        return std::nullopt;
    }
    const std::int64_t total = addToTotal(seconds);
    if (defaults_.boolForKey(kPermDismissed)) {
        return std::nullopt;
    }
    // Sixty minutes first: one long session may pass both limits. The ten-minute call then follows
    // after the next session.
    if (total >= sixtyMinutes && takeFirstTime(kCTA60Shown)) {
        return CTATier::sixtyMinute;
    }
    if (total >= tenMinutes && takeFirstTime(kCTA10Shown)) {
        return CTATier::tenMinute;
    }
    return std::nullopt;
}

std::int64_t UsageTracker::addToTotal(std::int64_t seconds) {
    const std::int64_t total = defaults_.integerForKey(kSeconds);
    if (total > std::numeric_limits<std::int64_t>::max() - seconds) {
        log_.write("TarvikDictate: total dictation time out of range — stopping");
        std::abort();
    }
    defaults_.setInteger(total + seconds, kSeconds);
    return total + seconds;
}

bool UsageTracker::takeFirstTime(std::string_view shownKey) {
    if (defaults_.boolForKey(shownKey)) {
        return false;
    }
    defaults_.setBool(true, shownKey);
    return true;
}

void UsageTracker::dismissPermanently() {
    defaults_.setBool(true, kPermDismissed);
}

}  // namespace tarvik
