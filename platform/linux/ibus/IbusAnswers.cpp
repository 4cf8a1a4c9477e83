// SPDX-License-Identifier: MIT

#include "platform/linux/ibus/IbusAnswers.h"

#include <algorithm>
#include <chrono>
#include <iterator>

#include "platform/linux/ibus/IbusAddress.h"
#include "platform/linux/ibus/IbusMessages.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

// IBus passes on what matches these rules, whoever it is for.
constexpr const char* rules[] = {
    "type='method_call',interface='org.freedesktop.IBus.InputContext',member='ProcessKeyEvent'",
    "type='method_return'",
    "type='error'",
    "type='signal',interface='org.freedesktop.DBus',member='NameOwnerChanged'",
};
constexpr auto lingerTime = 1s;
constexpr auto fenceTimeout = 30s;
// The replies to others bear the numbers of their calls. The own numbers begin beyond those.
constexpr std::uint64_t firstSerial = 0x40000000;

std::string textOf(const char* text) {
    return text != nullptr ? text : "";
}

}  // namespace

bool IbusAnswers::listen(std::function<void()> onReady) {
    end_.clear();
    if (bus_) {
        return true;
    }
    const auto address = ibusAddress();
    if (!address) {
        return false;
    }
    auto opened = openIbus(address.value(), firstSerial);
    if (!opened) {
        return false;
    }
    bus_ = std::move(opened).value();
    bus_->filter([this](sd_bus_message* message) { return handle(message); });
    bus_->attach(loop_, [this](const Error&) { end(); });
    for (const char* rule : rules) {
        addIbusRule(*bus_, rule);
    }
    fence([this, onReady = std::move(onReady)] {
        isReady_ = bus_ != nullptr;
        onReady();
    });
    return true;
}

// A handler of the connection may have called, and does not destroy it.
void IbusAnswers::stop() {
    if (bus_) {
        end_.set(lingerTime, [this] { end(); });
    }
}

// IBus reads its connections in any order, and may handle the first fence before a question that
// had come earlier. The second fence comes after all that was there when IBus read the first one.
void IbusAnswers::whenAnswered(std::function<void()> onAnswered) {
    fence([this, onAnswered = std::move(onAnswered)]() mutable {
        fence([this, onAnswered = std::move(onAnswered)]() mutable {
            if (questions_.empty()) {
                onAnswered();
            } else {
                waiting_.push_back({questions_, std::move(onAnswered)});
            }
        });
    });
}

void IbusAnswers::fence(std::function<void()> onPassed) {
    const auto place = fenced_.insert(fenced_.end(), std::move(onPassed));
    const auto pass = [this, place] {
        const auto action = std::move(*place);
        fenced_.erase(place);
        action();
    };
    if (!bus_ ||
        !bus_->call(newIbusQuestion(*bus_), fenceTimeout, [pass](sd_bus_message*) { pass(); })) {
        pass();
    }
}

// The messages are for others. The library would answer the calls.
bool IbusAnswers::handle(sd_bus_message* message) {
    std::uint8_t type = 0;
    sd_bus_message_get_type(message, &type);
    if (type == SD_BUS_MESSAGE_METHOD_CALL) {
        std::uint64_t serial = 0;
        sd_bus_message_get_cookie(message, &serial);
        questions_.insert({textOf(sd_bus_message_get_sender(message)), serial});
        ++questionCount_;
    } else if (type == SD_BUS_MESSAGE_SIGNAL) {
        const char* name = nullptr;
        const char* before = nullptr;
        const char* now = nullptr;
        if (sd_bus_message_read(message, "sss", &name, &before, &now) > 0 && *now == '\0') {
            handleAnswer([&](const Question& question) { return question.first == name; });
        }
    } else {
        std::uint64_t serial = 0;
        sd_bus_message_get_reply_cookie(message, &serial);
        const Question answered{textOf(sd_bus_message_get_destination(message)), serial};
        handleAnswer([&](const Question& question) { return question == answered; });
    }
    return true;
}

void IbusAnswers::handleAnswer(const std::function<bool(const Question&)>& isAnswered) {
    if (std::erase_if(questions_, isAnswered) == 0) {
        return;
    }
    lastAnswer_ = loop_.now();
    std::list<Waiting> done;
    for (auto each = waiting_.begin(); each != waiting_.end();) {
        const auto next = std::next(each);
        std::erase_if(each->questions, isAnswered);
        if (each->questions.empty()) {
            done.splice(done.end(), waiting_, each);
        }
        each = next;
    }
    for (const Waiting& each : done) {
        each.onAnswered();
    }
}

void IbusAnswers::end() {
    bus_.reset();
    isReady_ = false;
    questions_.clear();
    for (const auto& onPassed : std::exchange(fenced_, {})) {
        onPassed();
    }
    for (const Waiting& each : std::exchange(waiting_, {})) {
        each.onAnswered();
    }
}

}  // namespace tarvik::linuxdesktop
