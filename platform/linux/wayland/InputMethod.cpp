// SPDX-License-Identifier: MIT

#include "platform/linux/wayland/InputMethod.h"

#include <chrono>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

// A program that takes part answers within milliseconds.
constexpr auto activationTimeout = 300ms;
// In bytes. A message has 4,096 at the most, with its head.
constexpr std::size_t maxCommit = 3900;

void appendUtf8(std::string& text, char32_t character) {
    const auto append = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
    const auto appendFollowing = [&](int shift) { append(0x80U | (character >> shift & 0x3FU)); };
    if (character < 0x80) {
        append(character);
    } else if (character < 0x800) {
        append(0xC0U | character >> 6);
        appendFollowing(0);
    } else if (character < 0x10000) {
        append(0xE0U | character >> 12);
        appendFollowing(6);
        appendFollowing(0);
    } else {
        append(0xF0U | character >> 18);
        appendFollowing(12);
        appendFollowing(6);
        appendFollowing(0);
    }
}

}  // namespace

std::string InputMethod::refusal(const WaylandConnection& connection) {
    return connection.offers(zwp_input_method_manager_v2_interface)
               ? ""
               : "the compositor has no zwp_input_method_manager_v2";
}

InputMethod::InputMethod(WaylandConnection& connection, EventLoop& loop, OnKnown onKnown)
    : onKnown_(std::move(onKnown)),
      seat_(connection.bind<wl_seat>(wl_seat_interface, 1)),
      deadline_(loop) {
    static constexpr zwp_input_method_v2_listener listener{
        [](void* self, zwp_input_method_v2*) {
            static_cast<InputMethod*>(self)->willBeActive_ = true;
        },
        [](void* self, zwp_input_method_v2*) {
            static_cast<InputMethod*>(self)->willBeActive_ = false;
        },
        [](void*, zwp_input_method_v2*, const char*, std::uint32_t, std::uint32_t) {},
        [](void*, zwp_input_method_v2*, std::uint32_t) {},
        [](void*, zwp_input_method_v2*, std::uint32_t, std::uint32_t) {},
        &handleDone,
        &handleUnavailable};
    auto* manager =
        connection.bind<zwp_input_method_manager_v2>(zwp_input_method_manager_v2_interface, 1);
    method_.reset(zwp_input_method_manager_v2_get_input_method(manager, seat_.get()));
    zwp_input_method_manager_v2_destroy(manager);
    zwp_input_method_v2_add_listener(method_.get(), &listener, this);
    deadline_.set(activationTimeout, [this] { tell("no text field of it listens"); });
}

void InputMethod::handleDone(void* self, zwp_input_method_v2* /*method*/) {
    auto& inputMethod = *static_cast<InputMethod*>(self);
    ++inputMethod.serial_;
    inputMethod.isActive_ = inputMethod.willBeActive_;
    if (inputMethod.isActive_) {
        inputMethod.tell("");
    }
}

void InputMethod::handleUnavailable(void* self, zwp_input_method_v2* /*method*/) {
    static_cast<InputMethod*>(self)->tell("the session has another input method");
}

void InputMethod::tell(const std::string& refusal) {
    deadline_.clear();
    if (const auto onKnown = std::exchange(onKnown_, nullptr)) {
        onKnown(refusal);
    }
}

void InputMethod::commit(std::u32string_view characters) {
    const auto send = [this](const std::string& text) {
        zwp_input_method_v2_commit_string(method_.get(), text.c_str());
        zwp_input_method_v2_commit(method_.get(), serial_);
    };
    std::string piece;
    for (const char32_t character : characters) {
        std::string encoded;
        appendUtf8(encoded, character);
        if (piece.size() + encoded.size() > maxCommit) {
            send(std::exchange(piece, {}));
        }
        piece += encoded;
    }
    send(piece);
}

}  // namespace tarvik::linuxdesktop
