// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/core/app/SessionSchedule.h"

namespace tarvik {
namespace {

std::uint64_t numberFromEnvironment(const char* name, std::uint64_t otherwise) {
    const char* const text = std::getenv(name);
    return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

// TARVIK_SEED names the first schedule, and TARVIK_SCHEDULES the number of schedules. The message
// of a failure has the seed that gives the failed schedule alone.
TEST(SessionModel, AgreesWithTheApplicationOnRandomSchedules) {
    const std::uint64_t first = numberFromEnvironment("TARVIK_SEED", 1);
    const std::uint64_t count = numberFromEnvironment("TARVIK_SCHEDULES", 2000);
    for (std::uint64_t seed = first; seed < first + count; ++seed) {
        const SessionSchedule schedule = randomSchedule(seed);
        if (firstDifference(schedule).empty()) {
            continue;
        }
        const SessionSchedule shortest = minimized(schedule);
        FAIL() << "TARVIK_SEED=" << seed << " TARVIK_SCHEDULES=1, shortened to " << shortest.size()
               << " of " << schedule.size() << " steps:\n"
               << describe(shortest) << firstDifference(shortest);
    }
}

}  // namespace
}  // namespace tarvik
