// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/ibus/EngineField.h"
#include "platform/linux/ibus/FieldEngine.h"
#include "platform/linux/ibus/PreviousEngine.h"
#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/loop/Reconnection.h"

namespace tarvik::linuxdesktop {

/// An engine of IBus that stands in the place of the user's engine for as long as somebody uses it.
/// Loop thread only; no operation waits.
///
/// The user's engine is put back afterwards, unless the user has chosen another one meanwhile. A
/// process that is killed leaves a file, by which the next object puts the user's engine back. An
/// engine that composes text is never replaced: the user may be composing. IBus drops whichever
/// engine is in use when a program with an engine leaves, so an object is ended by end().
class IbusEngine final : public FieldEngine {
  public:
    struct Handlers {
        std::function<void(const Key&)> onKey;
        /// The engine has got a text field, or has lost the field.
        std::function<void()> onField;
        /// The engine cannot be used, or not any more. The next acquire() tries again.
        std::function<void(const std::string& reason)> onRefused;
        /// IBus is gone, or is back after that.
        std::function<void(bool isThere)> onPresence = [](bool) {};
    };
    /// The name of the engine that the desktop's settings choose, for an IBus that does not know.
    using AskConfigured = std::function<std::string()>;

    /// `loop` outlives the object. The handlers do not destroy the object.
    IbusEngine(EventLoop& loop, AskConfigured askConfigured, Handlers handlers);
    IbusEngine(const IbusEngine&) = delete;
    IbusEngine& operator=(const IbusEngine&) = delete;

    /// Connects to IBus where the object is not connected; puts the user's engine back if a killed
    /// process has left its own. Returns why IBus cannot be reached, or nothing.
    std::optional<std::string> connect();

    void acquire() override;
    void release() override;
    /// Calls `onIdle` once, when the user's engine is back, or cannot be put back.
    void whenIdle(std::function<void()> onIdle);

    /// Leaves IBus, and puts the user's engine back that IBus drops thereby. `onDone` is called
    /// once. The last call.
    void end(std::function<void()> onDone);

    bool hasField() const override { return isTaken_ && !field_.path().empty(); }
    /// How often the field has changed.
    std::uint64_t fieldCount() const { return field_.changeCount(); }

    /// Commits `text`, UTF-8, into the field. Only while there is one.
    void commit(const std::string& text);
    void tapControl() override;
    /// Calls `onDone` when IBus has handled everything before this call, or does not answer.
    void sync(std::function<void()> onDone);

  private:
    using OnEngine = std::function<void(std::optional<std::string> name)>;

    void addObjects();
    void leave(std::function<void()> onDone);
    void awaitDrop(int attempts, std::function<void()> onDone);
    void step();
    void finishStep();
    void take();
    void giveBack();
    void restore();
    void refuse(const std::string& reason);
    void askEngine(OnEngine onEngine);
    void setEngine(const std::string& name, std::function<void(bool hasSucceeded)> onDone);
    void handleEngineChange(const std::string& name);
    void lose();
    void forward(std::uint32_t state);

    static int onCreate(sd_bus_message* call, void* self, sd_bus_error* error);
    static int onKeyEvent(sd_bus_message* call, void* self, sd_bus_error* error);
    static int onFocusIn(sd_bus_message* call, void* self, sd_bus_error* error);
    static int onFocusInOf(sd_bus_message* call, void* self, sd_bus_error* error);
    static int onFocusOut(sd_bus_message* call, void* self, sd_bus_error* error);
    static int onIgnored(sd_bus_message* call, void* self, sd_bus_error* error);
    static int onFocusIdAsked(sd_bus* bus, const char* path, const char* interface,
                              const char* property, sd_bus_message* reply, void* self,
                              sd_bus_error* error);
    static const sd_bus_vtable factoryMethods[];
    static const sd_bus_vtable engineMethods[];
    static const sd_bus_vtable serviceMethods[];

    EventLoop& loop_;
    const std::string name_;
    AskConfigured askConfigured_;
    Handlers handlers_;
    PreviousEngine previous_;
    int users_ = 0;
    // A refusal lasts until the next acquire().
    bool isRefused_ = false;
    // A step has begun, and IBus has not answered yet.
    bool isBusy_ = false;
    bool isTaken_ = false;
    std::function<void()> onIdle_;
    int engineCount_ = 0;
    EngineField field_;
    Deadline endDelay_;
    std::unique_ptr<MessageBus> bus_;
    // IBus has ended, and is not back.
    bool isLost_ = false;
    Reconnection reconnection_;
};

}  // namespace tarvik::linuxdesktop
