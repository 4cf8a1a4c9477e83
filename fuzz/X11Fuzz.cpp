// SPDX-License-Identifier: MIT
// Properties, events and keyboard maps that another client of the X server sets. None of them is a
// hotkey, and a text that is typed meanwhile is dealt with once.

#include <fuzzer/FuzzedDataProvider.h>
#include <xcb/xcb.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/Promise.h"
#include "platform/EventManager.h"
#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/x11/X11Session.h"
#include "platform/linux/x11/XcbConnection.h"

namespace {

using namespace tarvik;
using namespace tarvik::linuxdesktop;
using fuzz::promise;

constexpr int maxSteps = 30;
constexpr std::uint32_t spaceKey = 49;
constexpr std::uint32_t optionKey = 2048;
// Of keycodes, from the end: others are those of a keyboard.
constexpr std::uint8_t firstSpareKey = 200;

// Names and types that the application reads, and others.
constexpr const char* names[] = {"_NET_ACTIVE_WINDOW",
                                 "_NET_CLIENT_LIST_STACKING",
                                 "_NET_SUPPORTING_WM_CHECK",
                                 "_NET_WM_PID",
                                 "WM_CLIENT_MACHINE",
                                 "WM_HINTS",
                                 "_NET_WM_DESKTOP",
                                 "WM_PROTOCOLS",
                                 "_NET_WM_PING",
                                 "_NET_CURRENT_DESKTOP",
                                 "XIM_SERVERS",
                                 "WM_CLASS",
                                 "_NET_WM_STATE",
                                 "_XKB_RULES_NAMES",
                                 "MANAGER",
                                 "CARDINAL",
                                 "WINDOW",
                                 "ATOM",
                                 "STRING",
                                 "UTF8_STRING"};

class NoLog final : public platform::Log {
    void write(std::string_view) override {}
};

/// The application's part of the display.
struct Application {
    Application() {
        auto opened = XcbConnection::open();
        promise(bool(opened), "there is a display");
        connection = std::move(opened).value();
        session = std::make_unique<X11Session>(
            *connection, loop, log,
            HotKeys::Events{[](HotKeyNumber) { promise(false, "nobody pressed the hotkey"); },
                            [](HotKeyNumber) { promise(false, "nobody released the hotkey"); },
                            [](HotKeyNumber, const std::string&) {}},
            OnLift(), front);
        promise(session->hotKeys().add(1, spaceKey, optionKey) == platform::noErr,
                "the hotkey is free");
    }

    // Handles what has come, and what is due.
    void turn() {
        connection->synchronise();
        loop.post([this] { loop.quit(); });
        loop.run([this] { promise(session->drain(), "the server stays"); });
        const FrontWindow::Known known = front;
        promise(known.process >= 0, "a process in front has a number");
    }

    NoLog log;
    PollLoop loop;
    std::atomic<FrontWindow::Known> front;
    std::unique_ptr<XcbConnection> connection;
    std::unique_ptr<X11Session> session;
};

/// Another client, which may do what every client may.
class Stranger {
  public:
    Stranger() : connection_(xcb_connect(nullptr, nullptr)) {
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
        for (const char* name : names) {
            const auto cookie = xcb_intern_atom(
                connection_, 0, static_cast<std::uint16_t>(std::string_view(name).size()), name);
            const XcbReply<xcb_intern_atom_reply_t> reply(
                xcb_intern_atom_reply(connection_, cookie, nullptr));
            atoms_.push_back(reply->atom);
        }
    }
    Stranger(const Stranger&) = delete;
    Stranger& operator=(const Stranger&) = delete;

    void begin() {
        for (xcb_window_t& window : windows_) {
            window = xcb_generate_id(connection_);
            xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root_, 0, 0, 50, 50, 0,
                              XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        }
    }

    void step(FuzzedDataProvider& input) {
        switch (input.ConsumeIntegralInRange(0, 7)) {
            case 0:
                xcb_map_window(connection_, own(input));
                break;
            case 1:
                xcb_unmap_window(connection_, own(input));
                break;
            case 2:
                xcb_destroy_window(connection_, own(input));
                break;
            case 3:
                xcb_set_input_focus(connection_, XCB_INPUT_FOCUS_PARENT, any(input),
                                    XCB_CURRENT_TIME);
                break;
            case 4:
                sendEvent(input);
                break;
            case 5:
                changeMap(input);
                break;
            default:
                changeProperty(input);
        }
        synchronise();
    }

    void end() {
        for (const xcb_window_t window : windows_) {
            xcb_destroy_window(connection_, window);
        }
        for (const xcb_atom_t atom : atoms_) {
            xcb_delete_property(connection_, root_, atom);
        }
        synchronise();
    }

  private:
    xcb_window_t own(FuzzedDataProvider& input) { return input.PickValueInArray(windows_); }
    xcb_window_t any(FuzzedDataProvider& input) { return input.ConsumeBool() ? own(input) : root_; }
    xcb_atom_t atom(FuzzedDataProvider& input) {
        return atoms_[input.ConsumeIntegralInRange<std::size_t>(0, atoms_.size() - 1)];
    }

    // A window, an atom, or any number.
    std::uint32_t item(FuzzedDataProvider& input) {
        switch (input.ConsumeIntegralInRange(0, 2)) {
            case 0:
                return any(input);
            case 1:
                return atom(input);
            default:
                return input.ConsumeIntegral<std::uint32_t>();
        }
    }

    void changeProperty(FuzzedDataProvider& input) {
        const xcb_window_t window = any(input);
        const xcb_atom_t name = atom(input);
        if (input.ConsumeBool()) {
            const std::string text = input.ConsumeRandomLengthString(64);
            xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, name, atom(input), 8,
                                static_cast<std::uint32_t>(text.size()), text.data());
            return;
        }
        std::vector<std::uint32_t> items(input.ConsumeIntegralInRange<std::size_t>(0, 9));
        for (std::uint32_t& each : items) {
            each = item(input);
        }
        const auto format = input.PickValueInArray<std::uint8_t>({16, 32, 32, 32});
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, name, atom(input), format,
                            static_cast<std::uint32_t>(items.size()), items.data());
    }

    void sendEvent(FuzzedDataProvider& input) {
        xcb_client_message_event_t event{};
        event.response_type =
            input.ConsumeBool()
                ? input.PickValueInArray<std::uint8_t>(
                      {XCB_CLIENT_MESSAGE, XCB_PROPERTY_NOTIFY, XCB_DESTROY_NOTIFY, XCB_FOCUS_IN})
                : input.ConsumeIntegral<std::uint8_t>();
        event.format = 32;
        event.window = item(input);
        event.type = atom(input);
        for (std::uint32_t& each : event.data.data32) {
            each = item(input);
        }
        xcb_send_event(connection_, 0, any(input), input.ConsumeIntegral<std::uint32_t>(),
                       reinterpret_cast<const char*>(&event));
    }

    void changeMap(FuzzedDataProvider& input) {
        const auto key = input.ConsumeIntegralInRange<std::uint8_t>(firstSpareKey, 255);
        const xcb_keysym_t symbols[] = {input.ConsumeIntegral<std::uint32_t>(),
                                        input.ConsumeIntegral<std::uint32_t>()};
        xcb_change_keyboard_mapping(connection_, 1, key, 2, symbols);
    }

    void synchronise() {
        const XcbReply<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
        // Refusals are of no interest.
        while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
        }
    }

    xcb_connection_t* connection_;
    xcb_window_t root_ = XCB_NONE;
    xcb_window_t windows_[3] = {};
    std::vector<xcb_atom_t> atoms_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Application application;
    static Stranger stranger;
    FuzzedDataProvider input(data, size);
    stranger.begin();
    const auto typed = std::make_shared<int>(0);
    int given = 0;
    for (int count = 0; count < maxSteps && input.remaining_bytes() > 0; ++count) {
        stranger.step(input);
        if (input.ConsumeIntegralInRange(0, 15) == 15) {
            application.session->typist().type({std::nullopt, U"aä"}, XCB_NONE,
                                               [typed] { ++*typed; });
            ++given;
        }
        if (input.ConsumeBool()) {
            application.turn();
        }
        promise(*typed <= given, "a text is dealt with once");
    }
    stranger.end();
    application.turn();
    const FrontWindow::Known known = application.front;
    promise(known.window == XCB_NONE || known.process > 0, "a window in front has its process");
    return 0;
}
