// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "speech/DeepgramClient.h"
#include "tests/support/SimulatedPlatform.h"
#include "tests/support/TranscriptJson.h"

namespace tarvik {

/// A client on a simulated network, and a record of its callbacks.
class ClientUnderTest {
  public:
    struct Transcript {
        std::string text;
        bool isFinal = false;
        bool operator==(const Transcript&) const = default;
    };

    explicit ClientUnderTest(const std::string& key = "secret", std::int64_t rate = 48000,
                             const std::string& host = "speech.example")
        : client(DeepgramClient::make({platform.webSockets(), platform.mainQueue(), platform.log()},
                                      host, key, rate)) {
        client->onTranscript = [this](const std::string& text, bool isFinal) {
            transcripts.push_back({text, isFinal});
            note("transcript " + text);
            deliveriesOffMain += platform.time().isRunningBlock() ? 0 : 1;
        };
        client->onError = [this](const Error& error) {
            errors.push_back(error.localizedDescription);
            note("error");
            errorsOffDelegateQueue += platform.webSockets().isOnDelegateQueue() ? 0 : 1;
        };
    }

    void connect() {
        client->connect([this](bool isOpen) {
            connects.push_back(isOpen);
            note(isOpen ? "connected" : "not connected");
            deliveriesOffMain += platform.time().isRunningBlock() ? 0 : 1;
        });
        platform.runUntilIdle();
    }
    void open() {
        task().open();
        platform.runUntilIdle();
    }
    void connectAndOpen() {
        connect();
        open();
    }
    void finish(const std::string& name = "finished") {
        client->finish([this, name] { note(name); });
    }
    void close() {
        task().close();
        platform.runUntilIdle();
    }
    void receive(const std::string& text) {
        task().deliverText(text);
        platform.runUntilIdle();
    }

    simulated::SimulatedWebSocketTask& task() { return platform.webSockets().lastTask(); }
    long count(const std::string& event) { return std::count(events.begin(), events.end(), event); }

    simulated::SimulatedPlatform platform;
    std::shared_ptr<DeepgramClient> client;
    std::vector<bool> connects;
    std::vector<Transcript> transcripts;
    std::vector<std::string> errors;
    /// All callbacks, in order.
    std::vector<std::string> events;
    int deliveriesOffMain = 0;
    int errorsOffDelegateQueue = 0;

  private:
    // onError is called on the delegate queue, which may run on another thread.
    void note(const std::string& event) {
        const std::lock_guard lock(mutex_);
        events.push_back(event);
    }

    std::mutex mutex_;
};

}  // namespace tarvik
