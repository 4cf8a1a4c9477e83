// SPDX-License-Identifier: MIT

#include "platform/linux/ibus/IbusTypist.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/Text.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

// A Wayland message holds 4 KiB, and a character takes 4 bytes at the most.
constexpr std::size_t pieceLength = 500;
// The time in which a field has to appear. The user may be on the way back to it.
constexpr auto targetTimeout = 2s;
constexpr auto pollInterval = 50ms;
// The next text of a dictation often follows soon.
constexpr auto lingerInterval = 300ms;

}  // namespace

IbusTypist::IbusTypist(IbusEngine& engine, EventLoop& loop, platform::Log& log, Session session)
    : engine_(engine), log_(log), session_(std::move(session)), delay_(loop) {}

IbusTypist::~IbusTypist() {
    while (!items_.empty()) {
        report("not delivered: the application ends",
               current().text.characters.size() - current().position);
        const auto onTyped = std::move(current().onTyped);
        items_.pop_front();
        onTyped();
    }
}

void IbusTypist::type(TypedText text, std::int64_t /*window*/, std::function<void()> onTyped) {
    items_.push_back({std::move(text), std::move(onTyped)});
    if (items_.size() == 1) {
        beginNext();
    }
}

void IbusTypist::whenIdle(std::function<void()> onIdle) {
    onIdle_ = std::move(onIdle);
    if (items_.empty()) {
        beginNext();
    }
}

void IbusTypist::beginNext() {
    ++textCount_;
    isWaiting_ = false;
    if (!items_.empty()) {
        targetDeadline_ = std::chrono::steady_clock::now() + targetTimeout;
        isWaiting_ = true;
        if (!std::exchange(isUsing_, true)) {
            // A refusal may come inside the call.
            engine_.acquire();
        }
        if (isWaiting_) {
            findTarget();
        }
        return;
    }
    const auto end = [this] {
        if (std::exchange(isUsing_, false)) {
            engine_.release();
        }
    };
    if (onIdle_) {
        end();
        std::exchange(onIdle_, nullptr)();
    } else {
        delay_.set(lingerInterval, end);
    }
}

void IbusTypist::findTarget() {
    const auto& process = current().text.process;
    const bool isInFront = !process || !session_.isInFront || session_.isInFront(*process);
    if (engine_.hasField() && isInFront) {
        sendPiece();
    } else if (std::chrono::steady_clock::now() >= targetDeadline_) {
        fail(isInFront ? "no text field has the keyboard"
                       : "process " + std::to_string(*process) + " does not have the keyboard");
    } else {
        delay_.set(pollInterval, [this] { findTarget(); });
    }
}

void IbusTypist::sendPiece() {
    isWaiting_ = false;
    delay_.clear();
    const auto left = std::u32string_view(current().text.characters).substr(current().position);
    // Firefox takes a commit of one character for a key, and a key with Alt for a shortcut.
    const auto piece =
        left.substr(0, left.size() == pieceLength + 1 ? pieceLength - 1 : pieceLength);
    engine_.commit(utf8FromUtf32(piece));
    const auto check = [this, text = textCount_, count = engine_.fieldCount(),
                        length = piece.size()] {
        if (text == textCount_) {
            checkPiece(count, length);
        }
    };
    engine_.sync([this, check] { session_.sync(check); });
}

void IbusTypist::checkPiece(std::uint64_t fieldCount, std::size_t length) {
    if (engine_.fieldCount() != fieldCount) {
        report("may have gone to another window, since the keyboard did", length);
    }
    current().position += length;
    if (current().position == current().text.characters.size()) {
        endText();
        return;
    }
    isWaiting_ = true;
    targetDeadline_ = std::chrono::steady_clock::now() + targetTimeout;
    findTarget();
}

void IbusTypist::handleField() {
    if (isWaiting_) {
        findTarget();
    }
}

void IbusTypist::handleRefusal(const std::string& reason) {
    // The next text acquires the engine anew.
    if (!std::exchange(isUsing_, false)) {
        return;
    }
    isWaiting_ = false;
    engine_.release();
    while (!items_.empty()) {
        report("not delivered: " + reason, current().text.characters.size() - current().position);
        const auto onTyped = std::move(current().onTyped);
        items_.pop_front();
        onTyped();
    }
    beginNext();
}

void IbusTypist::endText() {
    const auto onTyped = std::move(current().onTyped);
    items_.pop_front();
    onTyped();
    beginNext();
}

void IbusTypist::fail(const std::string& reason) {
    report("not delivered: " + reason, current().text.characters.size() - current().position);
    endText();
}

void IbusTypist::report(const std::string& problem, std::size_t characters) {
    log_.write("TarvikDictate: typed text " + problem + " (" + std::to_string(characters) +
               " characters)");
}

}  // namespace tarvik::linuxdesktop
