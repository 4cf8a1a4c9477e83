// SPDX-License-Identifier: MIT

#include "tests/conformance/websocket/WebSocketRecorder.h"

#include <algorithm>
#include <utility>

#include "base/Weakly.h"

namespace tarvik::tests {

using platform::WebSocketMessage;
using platform::WebSocketTask;

class WebSocketRecorder::Notification {
  public:
    explicit Notification(WebSocketRecorder& recorder) : recorder_(recorder) {
        if (recorder_.activeNotifications_.fetch_add(1) != 0) {
            recorder_.wasConcurrent_ = true;
        }
        const std::lock_guard lock(recorder_.mutex_);
        recorder_.threads_.insert(std::this_thread::get_id());
    }
    ~Notification() { recorder_.activeNotifications_.fetch_sub(1); }
    Notification(const Notification&) = delete;
    Notification& operator=(const Notification&) = delete;

  private:
    WebSocketRecorder& recorder_;
};

void WebSocketRecorder::didOpen(WebSocketTask& /*task*/, const std::string& protocol) {
    const Notification notification(*this);
    add("open " + protocol);
}

void WebSocketRecorder::didClose(WebSocketTask& /*task*/, int closeCode,
                                 const std::string& reason) {
    const Notification notification(*this);
    add("close " + std::to_string(closeCode) + " " + reason);
}

void WebSocketRecorder::receive(WebSocketTask& task) {
    task.receive(weakly(*this, [](WebSocketRecorder& self, const Result<WebSocketMessage>& result) {
        const Notification notification(self);
        self.addReceived(result);
    }));
}

void WebSocketRecorder::receiveAll(const std::shared_ptr<WebSocketTask>& task) {
    task->receive(
        weakly(*this, [weakTask = std::weak_ptr(task)](WebSocketRecorder& self,
                                                       const Result<WebSocketMessage>& result) {
            const auto strongTask = weakTask.lock();
            if (!strongTask) {
                return;
            }
            const Notification notification(self);
            self.addReceived(result);
            if (result) {
                self.receiveAll(strongTask);
            }
        }));
}

void WebSocketRecorder::addReceived(const Result<WebSocketMessage>& result) {
    if (!result) {
        {
            const std::lock_guard lock(mutex_);
            lastError_ = result.error();
        }
        add("failed receive");
        return;
    }
    constexpr std::size_t maxShownSize = 40;
    const WebSocketMessage& message = result.value();
    const std::string kind = message.kind == WebSocketMessage::Kind::string ? "text " : "data ";
    add(kind + (message.bytes.size() > maxShownSize
                    ? std::to_string(message.bytes.size()) + " bytes"
                    : message.bytes));
}

void WebSocketRecorder::sendText(WebSocketTask& task, const std::string& text) {
    task.send({WebSocketMessage::Kind::string, text},
              weakly(*this, [text](WebSocketRecorder& self, const std::optional<Error>& error) {
                  const Notification notification(self);
                  if (error) {
                      const std::lock_guard lock(self.mutex_);
                      self.lastError_ = *error;
                  }
                  self.add((error ? "failed " : "sent ") + text);
              }));
}

void WebSocketRecorder::add(std::string event) {
    const std::lock_guard lock(mutex_);
    events_.push_back(std::move(event));
}

std::vector<std::string> WebSocketRecorder::events() const {
    const std::lock_guard lock(mutex_);
    return events_;
}

std::size_t WebSocketRecorder::count(const std::string& event) const {
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(std::count(events_.begin(), events_.end(), event));
}

Error WebSocketRecorder::lastError() const {
    const std::lock_guard lock(mutex_);
    return lastError_;
}

std::set<std::thread::id> WebSocketRecorder::threads() const {
    const std::lock_guard lock(mutex_);
    return threads_;
}

}  // namespace tarvik::tests
