// SPDX-License-Identifier: MIT
// What a server sends to the client of the speech service, over the real web socket. The client
// hears every transcript that was sent in whole, once and in order, and is told of the end once.

#include <fuzzer/FuzzedDataProvider.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/FrameReader.h"
#include "fuzz/Promise.h"
#include "fuzz/TlsEnd.h"
#include "platform/linux/websocket/BeastWebSocketService.h"
#include "speech/DeepgramClient.h"
#include "speech/TranscriptMessage.h"
#include "tests/conformance/websocket/LoopbackListener.h"
#include "tests/conformance/websocket/PlainPeer.h"
#include "tests/linux/websocket/Certificates.h"
#include "tests/support/RealTimeQueue.h"

namespace {

using namespace tarvik;
using fuzz::promise;

// A machine may be busy.
constexpr std::chrono::seconds timeout{100};

/// The services that all runs share, because it takes long to make them.
struct World {
    class NoLog final : public platform::Log {
        void write(std::string_view) override {}
    };

    tests::SslContext tls = tests::makeServerContext({"IP:127.0.0.1"});
    tests::LoopbackListener listener{"127.0.0.1"};
    NoLog log;
    tests::RealTimeQueue queue;
    linuxdesktop::BeastWebSocketService service{
        log, {std::chrono::milliseconds(50), std::chrono::milliseconds(0)}};
};

World& world() {
    static World instance;
    return instance;
}

struct Heard {
    std::vector<std::pair<std::string, bool>> transcripts;
    int opened = 0;
    int refused = 0;
    std::atomic<int> errors = 0;
};

std::shared_ptr<DeepgramClient> connectedClient(const std::shared_ptr<Heard>& heard) {
    World& shared = world();
    auto client =
        DeepgramClient::make({shared.service, shared.queue, shared.log},
                             "127.0.0.1:" + std::to_string(shared.listener.port()), "key", 48000);
    client->onTranscript = [heard](const std::string& text, bool isFinal) {
        heard->transcripts.emplace_back(text, isFinal);
    };
    client->onError = [heard](const Error&) { ++heard->errors; };
    client->connect([heard](bool isOpen) { ++(isOpen ? heard->opened : heard->refused); });
    return client;
}

std::vector<std::pair<std::string, bool>> transcriptsIn(const std::string& frames) {
    std::vector<std::pair<std::string, bool>> transcripts;
    for (const std::string& message : fuzz::messagesIn(frames)) {
        if (const auto transcript = parseTranscriptMessage(message)) {
            transcripts.emplace_back(transcript->text, transcript->isFinal);
        }
    }
    return transcripts;
}

// A response of the input's own, in which "@" stands for what the whole response would be.
std::string response(FuzzedDataProvider& input, const std::string& right) {
    std::string bytes = input.ConsumeRandomLengthString();
    if (const std::size_t at = bytes.find('@'); at != std::string::npos) {
        bytes.replace(at, 1, right);
    }
    return bytes;
}

// In pieces. A client that has heard enough may end the connection.
void write(fuzz::TlsEnd& peer, FuzzedDataProvider& input, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto size = input.ConsumeIntegralInRange<std::size_t>(1, bytes.size());
        if (!peer.write(bytes.substr(0, size))) {
            return;
        }
        bytes.remove_prefix(size);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const bool accepts = input.ConsumeIntegralInRange(0, 3) > 0;
    const bool isFinished = input.ConsumeBool();
    const std::string frames = input.ConsumeRandomLengthString();
    const auto heard = std::make_shared<Heard>();
    const auto client = connectedClient(heard);
    tests::RealTimeQueue& queue = world().queue;

    fuzz::TlsEnd peer(world().listener.acceptSocket(), world().tls.get());
    promise(peer.accept(), "the client trusts the certificate");
    const std::string right =
        tests::PlainPeer::upgradeResponse(peer.readUntil("\r\n\r\n"), "token");
    write(peer, input, accepts ? right : response(input, right));
    if (accepts) {
        promise(queue.runUntil([&] { return heard->opened == 1; }, timeout),
                "a right response opens");
        if (isFinished) {
            client->finish([] {});
        }
    }
    write(peer, input, frames);
    peer.endWriting();
    peer.readAll();
    promise(!peer.hasTimedOut(), "the client ends the connection");

    // A message before the main thread knows that the socket is open ends the receiving.
    promise(queue.runUntil([&] { return heard->errors > 0 || (!accepts && heard->opened > 0); },
                           timeout),
            "the end is told");
    bool isDrained = false;
    queue.async([&] { isDrained = true; });
    queue.runUntil([&] { return isDrained; }, timeout);
    promise(heard->errors <= 1, "the end is told once");
    promise(heard->opened + heard->refused <= 1, "the connecting is answered once");
    if (accepts) {
        promise(heard->transcripts == transcriptsIn(frames),
                "every whole transcript is heard, once and in order");
    }
    return 0;
}
