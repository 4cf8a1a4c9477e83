// SPDX-License-Identifier: MIT
// What a client sends to the local speech service, over TLS. The service refuses or serves, never
// accepts a client without a key, and every stream that ends leaves room for the next one.

#include <fuzzer/FuzzedDataProvider.h>
#include <netinet/in.h>
#include <simdjson.h>
#include <sys/socket.h>

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <string>

#include "fuzz/FrameReader.h"
#include "fuzz/Promise.h"
#include "fuzz/TlsEnd.h"
#include "tests/speech-service/RunningServer.h"

namespace {

using namespace tarvik;
using fuzz::promise;

constexpr std::string_view goodTarget =
    "/v1/listen?encoding=linear16&sample_rate=16000&interim_results=true";
constexpr std::string_view accepted = "HTTP/1.1 101 ";
constexpr const char* controls[] = {R"({"type":"KeepAlive"})", R"({"type":"Finalize"})",
                                    R"({"type":"CloseStream"})", R"({"type":"Other"})"};

// A search beside other work may stand still for longer than a client's handshake may take.
service::ServerOptions patient() {
    service::ServerOptions options;
    options.handshakeTimeout = Seconds(100);
    return options;
}

/// The service, and how to reach it. It is made once, because it loads a model.
struct World {
    World() { std::cerr.rdbuf(nullptr); }

    service::RunningServer server{patient()};
    SSL_CTX* tls = SSL_CTX_new(TLS_client_method());
};

World& world() {
    static World instance;
    return instance;
}

int connectedSocket() {
    const int number = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(world().server.port());
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    promise(connect(number, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0,
            "the service listens");
    return number;
}

std::string upgradeRequest(std::string_view target, std::string_view fields) {
    return "GET " + std::string(target) +
           " HTTP/1.1\r\nHost: localhost\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
           "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n" +
           std::string(fields) + "\r\n";
}

// A client's frame, whose mask is zero.
std::string frame(unsigned first, std::string_view payload) {
    std::string bytes{static_cast<char>(first)};
    if (payload.size() < 126) {
        bytes += static_cast<char>(0x80 | payload.size());
    } else {
        bytes += static_cast<char>(0x80 | 126);
        bytes += static_cast<char>(payload.size() >> 8);
        bytes += static_cast<char>(payload.size() & 0xFF);
    }
    return bytes.append(4, '\0').append(payload);
}

std::string framesFrom(FuzzedDataProvider& input) {
    constexpr unsigned text = 0x81;
    constexpr unsigned binary = 0x82;
    std::string frames;
    while (input.remaining_bytes() > 0 && frames.size() < 40'000) {
        switch (input.ConsumeIntegralInRange(0, 3)) {
            case 0:
                frames += frame(text, input.PickValueInArray(controls));
                break;
            case 1:
                frames += frame(text, input.ConsumeRandomLengthString(200));
                break;
            case 2:
                frames += frame(binary, input.ConsumeRandomLengthString(4000));
                break;
            default:
                frames += frame(input.ConsumeIntegral<std::uint8_t>(),
                                input.ConsumeRandomLengthString(100));
        }
    }
    return frames;
}

void checkMessages(const std::string& bytes) {
    simdjson::dom::parser parser;
    for (const std::string& message : fuzz::messagesIn(bytes)) {
        std::string_view type;
        promise(parser.parse(message)["type"].get(type) == simdjson::SUCCESS,
                "a message of the service is JSON with a type");
    }
}

// A request of any kind gets a response, or none where it is no request at all.
void checkRequest(fuzz::TlsEnd& client, const std::string& request, bool hasKey) {
    client.write(request);
    client.endWriting();
    const std::string response = client.readAll();
    promise(!client.hasTimedOut(), "the service ends a connection that the client has ended");
    promise(response.empty() || response.starts_with("HTTP/1."), "a response is HTTP");
    promise(hasKey || !response.starts_with(accepted), "nobody is served without a key");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const int kind = input.ConsumeIntegralInRange(0, 3);
    fuzz::TlsEnd client(connectedSocket(), world().tls);
    promise(client.connect(), "the service shakes hands");
    if (kind == 0) {
        const std::string request = input.ConsumeRemainingBytesAsString();
        checkRequest(client, request, request.find("oken") != std::string::npos);
        return 0;
    }
    if (kind == 1) {
        const std::string target = input.ConsumeRandomLengthString(400);
        const std::string fields = input.ConsumeRemainingBytesAsString();
        const std::string request = upgradeRequest("/v1/listen?" + target, fields);
        checkRequest(client, request, request.find(',') != std::string::npos);
        return 0;
    }
    client.write(upgradeRequest(goodTarget, "Sec-WebSocket-Protocol: token, a key\r\n"));
    promise(client.readUntil("\r\n\r\n").starts_with(accepted), "a right request is accepted");
    client.write(kind == 2 ? framesFrom(input) : input.ConsumeRemainingBytesAsString());
    client.endWriting();
    const std::string bytes = client.readAll();
    promise(!client.hasTimedOut(), "the service ends a stream that the client has ended");
    checkMessages(bytes);
    return 0;
}
