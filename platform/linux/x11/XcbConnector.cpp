// SPDX-License-Identifier: MIT

#include "platform/linux/x11/XcbConnector.h"

#include <atomic>
#include <future>
#include <system_error>
#include <utility>

#include "platform/linux/loop/Thread.h"

namespace tarvik::linuxdesktop {

/// The first answer counts.
struct XcbConnector::Answer {
    void give(Connected connected) {
        if (!isGiven.exchange(true)) {
            promise.set_value(std::move(connected));
        }
    }

    std::atomic<bool> isGiven = false;
    std::promise<Connected> promise;
};

XcbConnector::XcbConnector() : answer_(std::make_shared<Answer>()) {}

// Nothing ends the library's attempt while a server takes the connection and says nothing. Its
// thread is then left behind.
XcbConnector::Connected XcbConnector::connect() {
    try {
        startThread("x11-connect", [answer = answer_] {
            answer->give(XcbConnection::open());
        }).detach();
    } catch (const std::system_error& failure) {
        return Error{failure.code().value(),
                     "no thread can connect to the X server: " + failure.code().message()};
    }
    return answer_->promise.get_future().get();
}

void XcbConnector::cancel() {
    answer_->give(Error{0, "the X server has never answered"});
}

}  // namespace tarvik::linuxdesktop
