// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "base/Result.h"
#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::linuxdesktop {

/// A connection to the IPC socket of Sway. Replies and events come in the order in which Sway
/// handled what they are about. Loop thread only; no operation blocks.
class SwayConnection {
  public:
    /// Kinds of requests, as the protocol numbers them.
    enum class Request : std::uint32_t {
        runCommand = 0,
        subscribe = 2,
        getTree = 4,
        getVersion = 7,
        getConfig = 9
    };
    /// Kinds of events.
    enum class Event : std::uint32_t {
        workspace = 0x80000000,
        window = 0x80000003,
        binding = 0x80000005
    };

    /// Get a JSON document, which lives for the call.
    using OnReply = std::function<void(std::string_view json)>;
    using OnEvent = std::function<void(Event event, std::string_view json)>;

    /// Connects to the socket that SWAYSOCK names. An error when nobody listens there.
    static Result<std::unique_ptr<SwayConnection>> open();
    /// The socket to which open() connects; empty when SWAYSOCK is not set.
    static std::filesystem::path socketPath();
    SwayConnection(const SwayConnection&) = delete;
    SwayConnection& operator=(const SwayConnection&) = delete;

    /// Has `loop`, which outlives the connection, drive it. `onLost` is called once, when Sway is
    /// gone. Neither callback destroys the connection.
    void attach(EventLoop& loop, OnEvent onEvent, std::function<void()> onLost);

    /// Asks Sway; `onReply` may be empty. It is called in a later turn, unless the connection is
    /// lost first.
    void request(Request kind, std::string_view payload, OnReply onReply);
    /// Runs a command of Sway's configuration language.
    void run(std::string_view command, OnReply onReply = {}) {
        request(Request::runCommand, command, std::move(onReply));
    }

  private:
    explicit SwayConnection(FileDescriptor socket) : socket_(std::move(socket)) {}

    void handleReady();
    bool read();
    bool write();
    void handle(std::uint32_t kind, std::string_view json);
    void lose();

    FileDescriptor socket_;
    std::string input_;
    std::string output_;
    std::deque<OnReply> awaited_;
    OnEvent onEvent_;
    std::function<void()> onLost_;
    std::unique_ptr<EventLoop::Watch> watch_;
};

/// What has changed, by an event about a window or a workspace; empty where the event does not say.
std::string changeIn(std::string_view event);

}  // namespace tarvik::linuxdesktop
