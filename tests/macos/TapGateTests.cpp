// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <thread>

#include "platform/macos/audio/TapGate.h"

namespace tarvik::macdesktop {

namespace {

TEST(TapGateTest, BuffersPassUnchangedUntilTheGateCloses) {
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

TEST(TapGateTest, ClosingDestroysTheBlock) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> alive = held;
    TapGate gate([held](const platform::AudioPcmBuffer&) {});
    held.reset();
    EXPECT_FALSE(alive.expired());
    gate.close();
    EXPECT_TRUE(alive.expired());
}

TEST(TapGateTest, ClosingWaitsForADeliveryUnderWay) {
    std::promise<void> inside;
    std::promise<void> mayReturn;
    TapGate gate([&](const platform::AudioPcmBuffer&) {
        inside.set_value();
        mayReturn.get_future().wait();
    });
    std::thread delivery([&] { gate.deliver({}); });
    inside.get_future().wait();
    std::future<void> closed = std::async(std::launch::async, [&] { gate.close(); });
    EXPECT_EQ(closed.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    mayReturn.set_value();
    closed.get();
    delivery.join();
}

}  // namespace

}  // namespace tarvik::macdesktop
