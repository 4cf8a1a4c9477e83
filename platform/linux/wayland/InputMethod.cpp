// SPDX-License-Identifier: MIT

#include "platform/linux/wayland/InputMethod.h"

#include <chrono>
#include <utility>

#include "base/Text.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

// A program that takes part answers within milliseconds.
constexpr auto activationTimeout = 300ms;
// In bytes. A message has 4,096 at the most, with its head.
constexpr std::size_t maxCommit = 3900;

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
        const std::string encoded = utf8FromUtf32({&character, 1});
        if (piece.size() + encoded.size() > maxCommit) {
            send(std::exchange(piece, {}));
        }
        piece += encoded;
    }
    send(piece);
}

}  // namespace tarvik::linuxdesktop
