// SPDX-License-Identifier: MIT

#include <benchmark/benchmark.h>

#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#include "audio/PcmConversion.h"
#include "tests/conformance/websocket/BeastWorld.h"

namespace {

using tarvik::tests::BeastWorld;

class SilentDelegate final : public tarvik::platform::WebSocketSessionDelegate {
  public:
    void didOpen(tarvik::platform::WebSocketTask&, const std::string&) override {}
    void didClose(tarvik::platform::WebSocketTask&, int, const std::string&) override {}
};

// Measures from a microphone buffer on the delivery thread until the completion of the send, when
// the socket has taken the encrypted bytes of the message.
void buffer_delivered_to_bytes_handed_to_the_socket(benchmark::State& state) {
    BeastWorld world;
    const auto session = world.service().makeSession(std::make_shared<SilentDelegate>());
    const auto task = session->webSocketTask(world.request());
    task->resume();
    world.accept("token");
    std::thread reader([&world] {
        while (world.peer().readFrame()) {
        }
    });

    const std::vector<float> samples(2048, 0.25F);
    const std::array<const float*, 1> channels = {samples.data()};
    const tarvik::platform::AudioPcmBuffer buffer{channels.data(), 2048, {48000.0, 1}};
    std::atomic<bool> isSent = false;
    for (auto iteration : state) {
        isSent = false;
        task->send(
            {tarvik::platform::WebSocketMessage::Kind::data, *tarvik::float32ToInt16LE(buffer)},
            [&](const std::optional<tarvik::Error>& error) {
                if (error) {
                    std::abort();
                }
                isSent = true;
                isSent.notify_one();
            });
        isSent.wait(false);
    }
    task->cancel(tarvik::platform::closeCodeGoingAway);
    reader.join();
}

BENCHMARK(buffer_delivered_to_bytes_handed_to_the_socket)->UseRealTime();

}  // namespace
