// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/conformance/websocket/BeastWorld.h"
#include "tests/conformance/websocket/WebSocketRecorder.h"

namespace tarvik::tests {

/// A fixture with the real service, a server in this process and a recording delegate.
class BeastTest : public testing::Test {
  protected:
    void start() { start(world.request()); }
    void start(const platform::UrlRequest& request) {
        session = world.service().makeSession(recorder);
        task = session->webSocketTask(request);
        task->resume();
        recorder->receiveAll(task);
    }

    void open() {
        start();
        world.accept("token");
        ASSERT_TRUE(comes("open token"));
    }

    bool comes(const std::string& event, std::size_t count = 1) {
        return world.runUntil([&] { return recorder->count(event) >= count; });
    }

    /// Whether the connection failed to open with an error that contains `text`.
    testing::AssertionResult failed(const std::string& text) {
        if (!comes("failed receive")) {
            return testing::AssertionFailure() << "no error came";
        }
        const std::string found = recorder->lastError().localizedDescription;
        if (recorder->has("open token") || found.find(text) == std::string::npos) {
            return testing::AssertionFailure() << found;
        }
        return testing::AssertionSuccess();
    }

    BeastWorld world;
    std::shared_ptr<WebSocketRecorder> recorder = std::make_shared<WebSocketRecorder>();
    std::shared_ptr<platform::WebSocketSession> session;
    std::shared_ptr<platform::WebSocketTask> task;
};

}  // namespace tarvik::tests
