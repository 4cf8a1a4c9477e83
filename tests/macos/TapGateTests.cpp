#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "platform/macos/TapGate.h"

namespace tarvik::macdesktop {

namespace {

TEST(TapGateTest, BuffersPassAsTheyAreUntilItCloses) {
    const float samples[] = {0.25F, -0.25F};
    const float* const channels[] = {samples};
    const platform::AudioPcmBuffer* seen = nullptr;
    TapGate gate([&](const platform::AudioPcmBuffer& buffer) { seen = &buffer; });
    const platform::AudioPcmBuffer buffer{channels, 2, {48000, 1}};
    gate.deliver(buffer);
    EXPECT_EQ(seen, &buffer);
    gate.close();
    seen = nullptr;
    gate.deliver(buffer);
    EXPECT_EQ(seen, nullptr);
    gate.close();
}

TEST(TapGateTest, WhatTheBlockHoldsIsReleasedWhenItCloses) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> alive = held;
    TapGate gate([held](const platform::AudioPcmBuffer&) {});
    held.reset();
    EXPECT_FALSE(alive.expired());
    gate.close();
    EXPECT_TRUE(alive.expired());
}

TEST(TapGateTest, ClosingWaitsForADeliveryUnderWay) {
    std::atomic<bool> isInside = false;
    std::atomic<bool> mayReturn = false;
    std::atomic<bool> hasReturned = false;
    TapGate gate([&](const platform::AudioPcmBuffer&) {
        isInside = true;
        isInside.notify_all();
        mayReturn.wait(false);
        hasReturned = true;
    });
    std::thread delivery([&] { gate.deliver({}); });
    isInside.wait(false);
    std::thread release([&] {
        mayReturn = true;
        mayReturn.notify_all();
    });
    gate.close();
    EXPECT_TRUE(hasReturned);
    delivery.join();
    release.join();
}

}  // namespace

}  // namespace tarvik::macdesktop
