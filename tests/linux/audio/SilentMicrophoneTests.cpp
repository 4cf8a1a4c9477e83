// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "tests/conformance/audio/AudioRecorder.h"
#include "tests/conformance/audio/PulseWorld.h"
#include "tests/linux/audio/ManualMicrophone.h"

namespace tarvik::tests {

namespace {

TEST(SilentMicrophone, IsToldOfOnce) {
    constexpr std::chrono::seconds maxWait{20};
    // Longer than the time after which the line comes.
    constexpr std::chrono::milliseconds furtherSilence{3500};
    PulseWorld world;
    AudioRecorder recorder(world.service());
    const ManualMicrophone microphone(world.server());
    ASSERT_TRUE(world.runUntil([&] { return recorder.changes() == 1; }, maxWait));
    ASSERT_FALSE(recorder.start());
    const std::string line =
        "TarvikDictate: sound — the microphone manual has delivered nothing for 3 s";
    ASSERT_TRUE(world.runUntil([&] { return world.log().count(line) == 1; }, maxWait));
    world.runFor(furtherSilence);
    EXPECT_EQ(world.log().count(line), 1U);
}

}  // namespace

}  // namespace tarvik::tests
