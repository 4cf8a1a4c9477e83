#include "platform/linux/x11/InputThread.h"

#include <pthread.h>
#include <signal.h>

#include <chrono>
#include <utility>

#include "platform/linux/x11/InputSession.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto longestWait = 1s;
// Leaves the time to put the keyboard back.
constexpr auto longestTypingAtEnd = 800ms;

}  // namespace

InputThread::InputThread(platform::Log& log, HotKeys::Listener listener)
    : log_(log), listener_(std::move(listener)) {
    std::promise<void> connected;
    const std::future<void> isReady = connected.get_future();
    // The signals of the process are the main thread's business.
    sigset_t everySignal;
    sigset_t before;
    sigfillset(&everySignal);
    pthread_sigmask(SIG_SETMASK, &everySignal, &before);
    thread_ = std::thread(&InputThread::run, this, std::move(connected));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    if (isReady.wait_for(longestWait) != std::future_status::ready) {
        log.write("TarvikDictate: the X server does not answer");
    }
}

InputThread::~InputThread() {
    loop_.post([this] { finish(); });
    if (ended_.get_future().wait_for(longestWait) != std::future_status::ready) {
        opening_.giveUp();
        if (XcbConnection* connection = breakable_) {
            connection->shutDown();
        }
    }
    thread_.join();
}

void InputThread::run(std::promise<void> connected) {
    XcbOpening::Opened opened = opening_.open();
    if (opened) {
        connection_ = std::move(opened).value();
        breakable_ = connection_.get();
        session_ =
            std::make_unique<InputSession>(*connection_, loop_, log_, listener_, frontProcess_);
        isConnected_ = true;
    } else {
        log_.write("TarvikDictate: " + opened.error().localizedDescription);
    }
    connected.set_value();
    loop_.run([this] { return drain(); });
    session_.reset();
    ended_.set_value();
}

int InputThread::drain() {
    if (session_ && !session_->drain()) {
        log_.write("TarvikDictate: the X server is gone");
        isConnected_ = false;
        session_.reset();
    }
    return session_ ? connection_->descriptor() : -1;
}

void InputThread::finish() {
    if (session_) {
        session_->typist().whenIdle([this] { loop_.quit(); });
        endDeadline_.set(longestTypingAtEnd, [this] { loop_.quit(); });
    } else {
        loop_.quit();
    }
}

platform::OSStatus InputThread::addHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                          std::uint32_t modifiers) {
    const auto answer = std::make_shared<std::promise<platform::OSStatus>>();
    std::future<platform::OSStatus> status = answer->get_future();
    loop_.post([this, answer, number, keyCode, modifiers] {
        answer->set_value(session_ ? session_->hotKeys().add(number, keyCode, modifiers)
                                   : platform::eventInternalErr);
    });
    if (isConnected_ && status.wait_for(longestWait) == std::future_status::ready) {
        return status.get();
    }
    // The server may still carry it out, at a time when nobody knows of it any more.
    loop_.post([this, number] { drop(number); });
    return platform::eventInternalErr;
}

void InputThread::removeHotKey(HotKeyNumber number) {
    const auto answer = std::make_shared<std::promise<void>>();
    const std::future<void> isDone = answer->get_future();
    loop_.post([this, answer, number] {
        drop(number);
        answer->set_value();
    });
    if (isConnected_) {
        isDone.wait_for(longestWait);
    }
}

void InputThread::drop(HotKeyNumber number) {
    if (session_) {
        session_->hotKeys().remove(number);
    }
}

void InputThread::type(TypedText text) {
    loop_.post([this, text = std::move(text)]() mutable {
        if (session_) {
            session_->typist().type(std::move(text));
        } else {
            log_.write("TarvikDictate: typed text not delivered: no X server (" +
                       std::to_string(text.characters.size()) + " characters)");
        }
    });
}

std::optional<platform::ProcessIdentifier> InputThread::frontmostProcess() const {
    const platform::ProcessIdentifier process = frontProcess_;
    return process > 0 ? std::optional(process) : std::nullopt;
}

}  // namespace tarvik::linuxdesktop
