// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/core/app/SessionModel.h"
#include "tests/core/app/SessionWorld.h"

namespace tarvik {

/// One action in a schedule.
struct SessionStep {
    enum class Action {
        pressHold,
        releaseHold,
        tapToggle,
        wake,
        storeKey,
        removeKey,
        focus,
        bringToFront,
        speak,
        accept,
        close,
        lose,
        sayFinal,
        sayInterim,
        sayNothing,
        settle,
        advance
    };

    Action action = Action::settle;
    /// Which socket, counted back from the newest; or which element or process.
    std::size_t number = 0;
    /// How long to advance.
    std::int64_t microseconds = 0;
    /// Which text the service says.
    std::size_t text = 0;

    std::string description() const;
};

using SessionSchedule = std::vector<SessionStep>;

/// A random schedule. The same seed gives the same schedule on every machine.
SessionSchedule randomSchedule(std::uint64_t seed);

/// Carries out `step` in both worlds. A step that nobody could do at this time, such as an answer
/// on a socket that does not exist, is skipped in both.
void perform(const SessionStep& step, SessionModel& model, SessionWorld& world);

/// Runs `schedule` in a new model and a new application on the simulated platform. Empty when both
/// agree; otherwise the first difference.
std::string firstDifference(const SessionSchedule& schedule);

/// Leaves out steps of a schedule with a difference, as long as a difference remains.
SessionSchedule minimized(SessionSchedule schedule);

/// `schedule` with one line a step.
std::string describe(const SessionSchedule& schedule);

}  // namespace tarvik
