// SPDX-License-Identifier: MIT

#include "platform/linux/ibus/IbusEngine.h"

#include <utility>

#include "platform/linux/bus/BusReplies.h"
#include "platform/linux/ibus/EngineNames.h"
#include "platform/linux/ibus/IbusAddress.h"
#include "platform/linux/ibus/IbusMessages.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto timeout = 1s;
constexpr auto dropInterval = 10ms;
constexpr int maxDropAttempts = 15;

constexpr const char* engineInterface = "org.freedesktop.IBus.Engine";
constexpr const char* enginePrefix = "/org/freedesktop/IBus/Engine/TarvikDictate";

constexpr std::uint32_t altState = 1U << 3;
constexpr std::uint32_t releaseState = 1U << 30;
constexpr std::uint32_t controlSymbol = 0xffe3;
constexpr std::uint32_t controlCode = 29;

IbusEngine& engineOf(void* self) {
    return *static_cast<IbusEngine*>(self);
}

}  // namespace

const sd_bus_vtable IbusEngine::factoryMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("CreateEngine", "s", "o", &IbusEngine::onCreate, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

const sd_bus_vtable IbusEngine::engineMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("ProcessKeyEvent", "uuu", "b", &IbusEngine::onKeyEvent,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("FocusIn", "", "", &IbusEngine::onFocusIn, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("FocusInId", "ss", "", &IbusEngine::onFocusInOf, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("FocusOut", "", "", &IbusEngine::onFocusOut, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("FocusOutId", "s", "", &IbusEngine::onFocusOut, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Disable", "", "", &IbusEngine::onFocusOut, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Enable", "", "", &IbusEngine::onIgnored, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Reset", "", "", &IbusEngine::onIgnored, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("SetCapabilities", "u", "", &IbusEngine::onIgnored, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("SetCursorLocation", "iiii", "", &IbusEngine::onIgnored,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("SetSurroundingText", "vuu", "", &IbusEngine::onIgnored,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("FocusId", "b", &IbusEngine::onFocusIdAsked, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_VTABLE_END};

// IBus ends an engine by it.
const sd_bus_vtable IbusEngine::serviceMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Destroy", "", "", &IbusEngine::onFocusOut, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

IbusEngine::IbusEngine(EventLoop& loop, AskConfigured askConfigured, Handlers handlers)
    : loop_(loop),
      name_(nextEngineName()),
      askConfigured_(std::move(askConfigured)),
      handlers_(std::move(handlers)),
      field_([this] { handlers_.onField(); }),
      endDelay_(loop),
      reconnection_(loop, ibusAddressFile(), [this] { return !connect(); }) {}

std::optional<std::string> IbusEngine::connect() {
    if (bus_) {
        return std::nullopt;
    }
    const auto address = ibusAddress();
    if (!address) {
        return address.error().localizedDescription;
    }
    auto opened = openIbus(address.value());
    if (!opened) {
        return "IBus does not answer: " + opened.error().localizedDescription;
    }
    bus_ = std::move(opened).value();
    bus_->attach(loop_, [this](const Error&) { lose(); });
    addObjects();
    observeIbus(
        *bus_, "type='signal',interface='org.freedesktop.IBus',member='GlobalEngineChanged'",
        [this](sd_bus_message* signal) { handleEngineChange(textIn(signal).value_or("")); });
    isBusy_ = true;
    BusMessage call = bus_->newCall(ibusObject, ibusInterface, "RegisterComponent");
    if (call && appendIbusComponent(call.get(), name_)) {
        bus_->call(std::move(call), timeout, [this](sd_bus_message* reply) {
            if (isError(reply)) {
                refuse("IBus does not take an engine");
            } else {
                restore();
            }
        });
    }
    if (std::exchange(isLost_, false)) {
        reconnection_.end();
        isRefused_ = false;
        handlers_.onPresence(true);
    }
    return std::nullopt;
}

void IbusEngine::addObjects() {
    bus_->addObject("/org/freedesktop/IBus/Factory", "org.freedesktop.IBus.Factory", factoryMethods,
                    this);
    bus_->addObjects(enginePrefix, engineInterface, engineMethods, this);
    bus_->addObjects(enginePrefix, "org.freedesktop.IBus.Service", serviceMethods, this);
}

void IbusEngine::lose() {
    bus_.reset();
    isBusy_ = false;
    isTaken_ = false;
    field_.drop();
    isLost_ = true;
    reconnection_.begin();
    handlers_.onPresence(false);
    refuse("IBus is gone");
}

void IbusEngine::acquire() {
    ++users_;
    isRefused_ = false;
    if (const auto refusal = connect()) {
        refuse(*refusal);
    } else {
        step();
    }
}

void IbusEngine::release() {
    --users_;
    step();
}

void IbusEngine::whenIdle(std::function<void()> onIdle) {
    onIdle_ = std::move(onIdle);
    step();
}

void IbusEngine::end(std::function<void()> onDone) {
    whenIdle([this, onDone = std::move(onDone)]() mutable {
        // In a turn of its own: the caller may be a handler of the connection.
        endDelay_.set(0ms,
                      [this, onDone = std::move(onDone)]() mutable { leave(std::move(onDone)); });
    });
}

void IbusEngine::leave(std::function<void()> onDone) {
    reconnection_.end();
    const auto address = ibusAddress();
    if (!std::exchange(bus_, nullptr) || !address) {
        onDone();
        return;
    }
    auto opened = openIbus(address.value());
    if (!opened) {
        onDone();
        return;
    }
    bus_ = std::move(opened).value();
    bus_->attach(loop_, [](const Error&) {});
    awaitDrop(maxDropAttempts, std::move(onDone));
}

void IbusEngine::awaitDrop(int attempts, std::function<void()> onDone) {
    askEngine([this, attempts, onDone = std::move(onDone)](std::optional<std::string> known) {
        const auto previous = previous_.read();
        const bool isDropped = known && (known->empty() || isOwnEngine(*known));
        if (isDropped && previous) {
            setEngine(*previous, [this, onDone](bool hasSucceeded) {
                if (hasSucceeded) {
                    previous_.remove();
                }
                onDone();
            });
        } else if (known && attempts > 0) {
            endDelay_.set(dropInterval,
                          [this, attempts, onDone] { awaitDrop(attempts - 1, onDone); });
        } else {
            previous_.remove();
            onDone();
        }
    });
}

void IbusEngine::step() {
    if (isBusy_) {
        return;
    }
    const bool isWanted = users_ > 0 && !isRefused_;
    if (isWanted != isTaken_ && bus_) {
        isBusy_ = true;
        isWanted ? take() : giveBack();
    } else if (users_ == 0 && onIdle_) {
        std::exchange(onIdle_, nullptr)();
    }
}

void IbusEngine::finishStep() {
    isBusy_ = false;
    step();
}

void IbusEngine::take() {
    askEngine([this](std::optional<std::string> known) {
        if (!known) {
            refuse("IBus does not answer");
            return;
        }
        const bool isUsers = !known->empty() && !isOwnEngine(*known);
        const std::string engine = isUsers ? *known : previous_.read().value_or(askConfigured_());
        if (composes(engine)) {
            refuse("the input method " + engine + " composes text");
            return;
        }
        previous_.write(engine);
        setEngine(name_, [this, engine](bool hasSucceeded) {
            isTaken_ = hasSucceeded;
            if (hasSucceeded) {
                handlers_.onField();
                finishStep();
            } else {
                setEngine(engine, [this](bool) { refuse("IBus does not switch to the engine"); });
            }
        });
    });
}

void IbusEngine::giveBack() {
    isTaken_ = false;
    field_.drop();
    restore();
}

// An engine that the user has chosen meanwhile stays.
void IbusEngine::restore() {
    askEngine([this](std::optional<std::string> known) {
        const auto previous = previous_.read();
        if (!known) {
            refuse("IBus does not answer");
        } else if (!known->empty() && !isOwnEngine(*known)) {
            previous_.write(*known);
            finishStep();
        } else if (previous) {
            setEngine(*previous, [this](bool) { finishStep(); });
        } else {
            finishStep();
        }
    });
}

void IbusEngine::refuse(const std::string& reason) {
    isRefused_ = true;
    isBusy_ = false;
    handlers_.onRefused(reason);
    step();
}

// Gets an empty name where IBus says that it has no engine.
void IbusEngine::askEngine(OnEngine onEngine) {
    bus_->call(bus_->newPropertyCall(ibusObject, ibusInterface, "GlobalEngine"), timeout,
               [onEngine = std::move(onEngine)](sd_bus_message* reply) {
                   onEngine(isNoReply(reply) ? std::nullopt
                                             : std::optional(engineNameIn(reply).value_or("")));
               });
}

void IbusEngine::setEngine(const std::string& name, std::function<void(bool hasSucceeded)> onDone) {
    bus_->call(bus_->newCall(ibusObject, ibusInterface, "SetGlobalEngine", "s", name.c_str()),
               timeout,
               [onDone = std::move(onDone)](sd_bus_message* reply) { onDone(!isError(reply)); });
}

void IbusEngine::handleEngineChange(const std::string& name) {
    if (name.empty() || isOwnEngine(name)) {
        return;
    }
    previous_.write(name);
    if (isTaken_ && !isBusy_) {
        isTaken_ = false;
        field_.drop();
        step();
    }
}

void IbusEngine::commit(const std::string& text) {
    BusMessage signal = bus_->newSignal(field_.path(), engineInterface, "CommitText");
    if (signal && appendIbusText(signal.get(), text)) {
        bus_->send(std::move(signal));
    }
}

void IbusEngine::tapControl() {
    forward(altState);
    forward(altState | releaseState);
}

void IbusEngine::forward(std::uint32_t state) {
    BusMessage signal = bus_->newSignal(field_.path(), engineInterface, "ForwardKeyEvent");
    if (signal &&
        sd_bus_message_append(signal.get(), "uuu", controlSymbol, controlCode, state) >= 0) {
        bus_->send(std::move(signal));
    }
}

void IbusEngine::sync(std::function<void()> onDone) {
    bus_->call(bus_->newCall(ibusObject, ibusInterface, "Ping", "v", "s", ""), timeout,
               [onDone = std::move(onDone)](sd_bus_message*) { onDone(); });
}

int IbusEngine::onCreate(sd_bus_message* call, void* self, sd_bus_error*) {
    const std::string path =
        std::string(enginePrefix) + "/" + std::to_string(++engineOf(self).engineCount_);
    return sd_bus_reply_method_return(call, "o", path.c_str());
}

// Each key goes on to the program.
int IbusEngine::onKeyEvent(sd_bus_message* call, void* self, sd_bus_error*) {
    std::uint32_t symbol = 0;
    Key key;
    std::uint32_t state = 0;
    sd_bus_message_read(call, "uuu", &symbol, &key.code, &state);
    const int result = sd_bus_reply_method_return(call, "b", 0);
    key.isUp = (state & releaseState) != 0;
    key.hasAlt = (state & altState) != 0;
    engineOf(self).handlers_.onKey(key);
    return result;
}

// IBus asks a new engine whether it wants to know the client, and does not wait for the answer. So
// the first time, and older versions always, it does not tell.
int IbusEngine::onFocusIn(sd_bus_message* call, void* self, sd_bus_error*) {
    IbusEngine& engine = engineOf(self);
    engine.field_.focusUnknown(*engine.bus_, sd_bus_message_get_path(call));
    return sd_bus_reply_method_return(call, "");
}

int IbusEngine::onFocusInOf(sd_bus_message* call, void* self, sd_bus_error*) {
    const char* context = "";
    const char* client = "";
    sd_bus_message_read(call, "ss", &context, &client);
    engineOf(self).field_.focus(sd_bus_message_get_path(call), client);
    return sd_bus_reply_method_return(call, "");
}

int IbusEngine::onFocusOut(sd_bus_message* call, void* self, sd_bus_error*) {
    engineOf(self).field_.unfocus(sd_bus_message_get_path(call));
    return sd_bus_reply_method_return(call, "");
}

int IbusEngine::onIgnored(sd_bus_message* call, void*, sd_bus_error*) {
    return sd_bus_reply_method_return(call, "");
}

int IbusEngine::onFocusIdAsked(sd_bus*, const char*, const char*, const char*,
                               sd_bus_message* reply, void*, sd_bus_error*) {
    return sd_bus_message_append(reply, "b", 1);
}

}  // namespace tarvik::linuxdesktop
