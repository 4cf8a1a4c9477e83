// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>

#include "tests/conformance/audio/AudioRecorder.h"
#include "tests/conformance/audio/PulseWorld.h"
#include "tests/linux/audio/ManualMicrophone.h"

namespace tarvik::tests {

namespace {

constexpr std::chrono::seconds maxWait{20};
// Longer than the time after which the line comes.
constexpr std::chrono::milliseconds furtherSilence{3500};

TEST(SilentMicrophone, IsToldOfOnce) {
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

TEST(SilentMicrophone, IsNotToldOfAfterAStartThatFailed) {
    PulseWorld world;
    AudioRecorder recorder(world.service());
    recorder.ignoreChanges();
    std::optional<ManualMicrophone> microphone(world.server());
    ASSERT_TRUE(world.runUntil([&] { return recorder.changes() == 1; }, maxWait));
    ASSERT_FALSE(recorder.start());
    recorder.ignoreChanges();
    world.server().control({"unload-module", "module-pipe-source"});
    ASSERT_TRUE(world.runUntil([&] { return recorder.engine().start().has_value(); }, maxWait));
    world.runFor(furtherSilence);
    EXPECT_FALSE(world.log().hasLineWith("has delivered nothing for 3 s"));
}

}  // namespace

}  // namespace tarvik::tests
