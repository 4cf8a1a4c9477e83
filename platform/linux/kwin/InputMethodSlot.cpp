// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/InputMethodSlot.h"

#include <unistd.h>

#include <chrono>
#include <utility>

#include "platform/linux/settings/AtomicFile.h"
#include "platform/linux/settings/ProgramPaths.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto activationTimeout = 1500ms;
constexpr const char* helperName = "tarvik-dictate-input-method";

}  // namespace

InputMethodSlot::InputMethodSlot(MessageBus& bus, EventLoop& loop, platform::Log& log)
    : bus_(bus),
      loop_(loop),
      log_(log),
      desktopFile_(runtimePath("tarvik-dictate-input-method.desktop")),
      socketPath_(runtimePath("tarvik-dictate-input-method")),
      setting_(desktopFile_) {
    if (!desktopFile_.empty() && setting_.giveBack()) {
        log_.write("TarvikDictate: KWin's input method is what it was before a killed run");
        announceChange();
    }
}

void InputMethodSlot::request(OnReady onReady) {
    onReady_ = std::move(onReady);
    if (const auto refusal = take()) {
        answer(*refusal);
        return;
    }
    deadline_.set(activationTimeout, [this] {
        answer(method_ ? "no text field has the keyboard" : "KWin does not start the input method");
    });
    handleChange();
}

std::optional<std::string> InputMethodSlot::take() {
    if (isTaken_) {
        return std::nullopt;
    }
    if (desktopFile_.empty()) {
        return "there is no XDG_RUNTIME_DIR";
    }
    if (const std::string other = setting_.other(); !other.empty()) {
        return "the input method is the user's own: " + other;
    }
    const std::string helper = helperPath(helperName);
    if (helper.empty()) {
        return std::string(helperName) + " is missing";
    }
    socket_.emplace(socketPath_, loop_,
                    [this](FileDescriptor wayland) { handleConnection(std::move(wayland)); });
    if (!socket_->isOpen()) {
        return "no socket at " + socketPath_;
    }
    const std::string content = "[Desktop Entry]\nType=Application\nName=Tarvik Dictate\nExec=\"" +
                                helper + "\" \"" + socketPath_ +
                                "\"\nNoDisplay=true\nX-KDE-Wayland-VirtualKeyboard=true\n";
    auto error = replaceFile(desktopFile_, content, 0600, 0700, Durability::kernel);
    if (!error) {
        error = setting_.take();
    }
    if (error) {
        return error->localizedDescription;
    }
    isTaken_ = true;
    announceChange();
    return std::nullopt;
}

void InputMethodSlot::handleConnection(FileDescriptor wayland) {
    closing_.clear();
    method_.reset();
    auto opened = WaylandConnection::openOn(std::move(wayland));
    if (opened) {
        method_ = std::make_unique<KWinInputMethod>(
            std::move(opened).value(), loop_, [this] { handleChange(); },
            [this] { closing_.set(0ms, [this] { method_.reset(); }); });
    }
}

// What KWin tells about a field comes right behind its activation.
void InputMethodSlot::handleChange() {
    if (onReady_ && method_ && method_->isActive()) {
        method_->sync([this] {
            if (method_->isActive()) {
                answer("");
            }
        });
    }
}

void InputMethodSlot::answer(const std::string& refusal) {
    deadline_.clear();
    if (const OnReady onReady = std::exchange(onReady_, nullptr)) {
        onReady(refusal);
    }
}

void InputMethodSlot::commit(std::u32string_view text, std::function<void()> onDone) {
    method_->commit(text);
    method_->sync(std::move(onDone));
}

void InputMethodSlot::giveBack() {
    deadline_.clear();
    onReady_ = nullptr;
    if (std::exchange(isTaken_, false)) {
        if (setting_.giveBack()) {
            announceChange();
        }
        unlink(desktopFile_.c_str());
        socket_.reset();
    }
}

void InputMethodSlot::announceChange() {
    // Two texts of bytes: the group, and the key in it.
    BusMessage signal = bus_.newSignal("/kwinrc", "org.kde.kconfig.notify", "ConfigChanged");
    constexpr char key[] = "InputMethod";
    if (!signal || sd_bus_message_open_container(signal.get(), 'a', "{saay}") < 0 ||
        sd_bus_message_open_container(signal.get(), 'e', "saay") < 0 ||
        sd_bus_message_append(signal.get(), "s", "Wayland") < 0 ||
        sd_bus_message_open_container(signal.get(), 'a', "ay") < 0 ||
        sd_bus_message_append_array(signal.get(), 'y', key, sizeof key - 1) < 0 ||
        sd_bus_message_close_container(signal.get()) < 0 ||
        sd_bus_message_close_container(signal.get()) < 0 ||
        sd_bus_message_close_container(signal.get()) < 0) {
        return;
    }
    bus_.send(std::move(signal));
}

void InputMethodSlot::flush() {
    if (method_) {
        method_->flush();
    }
}

}  // namespace tarvik::linuxdesktop
