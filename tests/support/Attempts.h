// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include "base/Time.h"

namespace tarvik::tests {

/// Whether `attempt`, which returns how long something took, returns less than `limit` at one of
/// `maxTries` tries. A busy machine is late at some tries. A program that is too slow is late at
/// each.
template <typename Attempt>
testing::AssertionResult isWithin(Seconds limit, const Attempt& attempt, int maxTries = 5) {
    testing::AssertionResult late = testing::AssertionFailure();
    for (int tries = 0; tries < maxTries; ++tries) {
        const Seconds duration = attempt();
        if (duration < limit) {
            return testing::AssertionSuccess();
        }
        late << duration.count() << " s, ";
    }
    return late << "none of them less than " << limit.count() << " s";
}

}  // namespace tarvik::tests
