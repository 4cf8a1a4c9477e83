// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "base/Weakly.h"
#include "tests/core/app/SessionModel.h"

namespace tarvik {

/// The client's side of one connection.
class SessionModel::Client : public std::enable_shared_from_this<Client> {
  public:
    Client(SessionModel& model, Socket& socket) : model_(model), socket_(socket) {}

    void connect() {
        model_.time_.asyncAfter(Seconds(60), [&model = model_, &socket = socket_] {
            if (socket.state == Socket::State::connecting) {
                socket.queue.submit([&] { model.endSocket(socket, "The request timed out"); });
            }
        });
        model_.time_.asyncAfter(Seconds(5), weakly(*this, [](Client& self) {
                                    if (std::exchange(self.isConnecting_, false)) {
                                        self.model_.log(
                                            "TarvikDictate: Deepgram WS open timeout "
                                            "(5s) — connect failed");
                                        self.model_.connected(false);
                                    }
                                }));
    }

    void opened() {
        isOpen_ = true;
        if (std::exchange(isConnecting_, false)) {
            model_.connected(true);
        }
    }

    void closed() {
        isOpen_ = false;
        if (std::exchange(isConnecting_, false)) {
            model_.time_.async([&model = model_] { model.connected(false); });
        }
        if (auto finished = std::exchange(onFinished_, nullptr)) {
            model_.time_.async(std::move(finished));
        }
    }

    void received(const std::string& text, bool isFinal) {
        if (!text.empty()) {
            model_.time_.async([self = shared_from_this(), text, isFinal] {
                self->model_.transcript(text, isFinal);
            });
        }
        socket_.isReceiving = isOpen_ && hasTask_;
    }

    void send(const std::string& message, bool isErrorReported) {
        model_.add("send " + message);
        if (socket_.state == Socket::State::open) {
            socket_.received.push_back(message);
        } else if (isErrorReported) {
            socket_.queue.submit(weakly(*this, [](Client& self) {
                self.model_.log("Deepgram error: " + self.socket_.endReason);
            }));
        }
    }

    void sendAudio() {
        if (isOpen_ && hasTask_) {
            send("2 bytes", true);
        }
    }

    void finish(std::function<void()> onFinished) {
        if (!isOpen_ || !hasTask_) {
            onFinished();
            return;
        }
        send(R"({"type":"CloseStream"})", false);
        onFinished_ = std::move(onFinished);
        model_.time_.asyncAfter(Seconds(2), weakly(*this, &Client::giveUp));
    }

    void giveUp() {
        isOpen_ = false;
        if (std::exchange(hasTask_, false)) {
            model_.add("cancel 1001");
            socket_.queue.submit([&model = model_, &socket = socket_] {
                model.endSocket(socket, "The operation was cancelled");
            });
        }
        if (const auto finished = std::exchange(onFinished_, nullptr)) {
            finished();
        }
    }

  private:
    SessionModel& model_;
    Socket& socket_;
    bool isOpen_ = false;
    bool hasTask_ = true;
    bool isConnecting_ = true;
    std::function<void()> onFinished_;
};

}  // namespace tarvik
