// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/core/app/SessionWorld.h"
#include "tests/support/SerialQueue.h"
#include "tests/support/SimulatedTime.h"

namespace tarvik {

/// The rules of recordings, written down a second time and without a line of the core: hotkeys,
/// sockets, microphone, insertion, limits, wake, usage. Only the virtual time is shared with the
/// simulated platform.
class SessionModel final : public SessionWorld {
  public:
    SessionModel();
    ~SessionModel() override;

    void pressHold() override;
    void releaseHold() override;
    void tapToggle() override;
    void wake() override;
    void setKey(bool isStored) override { hasKey_ = isStored; }
    void focus(std::optional<std::size_t> element) override { focused_ = element; }
    void bringToFront(std::optional<int> process) override { front_ = process; }
    void speak() override;
    void accept(std::size_t socket) override;
    void close(std::size_t socket) override;
    void lose(std::size_t socket) override;
    void say(std::size_t socket, const std::string& text, bool isFinal) override;
    void sayNothing(std::size_t socket) override { say(socket, "", true); }
    void settle() override { time_.runUntilIdle(); }
    void advance(Seconds interval) override { time_.advance(interval); }
    std::vector<std::string> takeEvents() override { return std::exchange(events_, {}); }
    std::vector<std::string> state() const override;

    /// The number of sockets so far.
    std::size_t sockets() const { return sockets_.size(); }
    /// Whether the service may accept this socket: the socket is neither accepted nor ended.
    bool canAccept(std::size_t socket) const;
    /// Whether the service may send on this socket.
    bool canSay(std::size_t socket) const;

  private:
    class Client;

    /// The network's side of one connection.
    struct Socket {
        enum class State { connecting, open, ended };
        State state = State::connecting;
        bool isAccepted = false;
        bool isAbandonedByService = false;
        bool isReceiving = true;
        std::string endReason;
        std::vector<std::string> received;
        simulated::SerialQueue queue;
        std::weak_ptr<Client> client;
        std::shared_ptr<Client> heldClient;
    };

    void start();
    void stop();
    void toggle();
    void prompt();
    void checkLimits();
    void setIcon(bool isRecording);
    void finishStop(std::int64_t number, const std::shared_ptr<Client>& client);
    void connected(bool isOpen);
    void transcript(const std::string& text, bool isFinal);
    void insert(const std::string& piece);
    void type(const std::string& text);
    void startCapture();
    void stopCapture();
    void registerHotkeys();
    void endSocket(Socket& socket, const std::string& reason);
    void add(std::string event) { events_.push_back(std::move(event)); }
    void log(const std::string& line) { add("log " + line); }
    double now() const { return time_.now().time_since_epoch().count(); }

    simulated::SimulatedTime time_;
    std::vector<std::string> events_;
    std::vector<std::unique_ptr<Socket>> sockets_;

    bool hasKey_ = true;
    bool isPrompting_ = false;
    bool isRecording_ = false;
    bool isCapturing_ = false;
    std::int64_t number_ = 0;
    std::string text_;
    std::optional<double> startedAt_;
    double lastFinalAt_ = 0;
    std::unique_ptr<platform::Timer> timer_;
    std::shared_ptr<Client> client_;
    std::optional<std::size_t> focused_;
    std::optional<int> front_;
    std::optional<std::size_t> targetElement_;
    std::optional<int> targetProcess_;
    std::string elementTexts_[elements];
    std::string typedTexts_[3];
    std::int64_t usage_ = 0;
};

}  // namespace tarvik
