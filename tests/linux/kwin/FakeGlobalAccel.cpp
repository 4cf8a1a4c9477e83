// SPDX-License-Identifier: MIT

#include "tests/linux/kwin/FakeGlobalAccel.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <vector>

namespace tarvik::tests {

namespace {

using linuxdesktop::BusMessage;

constexpr const char* path = "/kglobalaccel";
constexpr const char* accelInterface = "org.kde.KGlobalAccel";
constexpr const char* program = "com.tarvik.dictate";
constexpr const char* krunner = "org.kde.krunner.desktop";
constexpr const char* krunnerAction = "_launch";

std::vector<std::string> textsIn(sd_bus_message* message) {
    std::vector<std::string> texts;
    char** words = nullptr;
    if (sd_bus_message_read_strv(message, &words) > 0) {
        for (char** word = words; *word != nullptr; ++word) {
            texts.emplace_back(*word);
            std::free(*word);
        }
        std::free(words);
    }
    return texts;
}

int replyWithKeys(sd_bus_message* call, const std::set<std::int32_t>& keys) {
    sd_bus_message* made = nullptr;
    sd_bus_message_new_method_return(call, &made);
    const BusMessage reply(made);
    sd_bus_message_open_container(made, 'a', "(ai)");
    for (const std::int32_t key : keys) {
        sd_bus_message_append(made, "(ai)", 4, key, 0, 0, 0);
    }
    sd_bus_message_close_container(made);
    return sd_bus_send(nullptr, made, nullptr);
}

void appendShortcut(sd_bus_message* reply, std::int32_t key, const char* action,
                    const char* actionTitle, const char* owner, const char* ownerTitle) {
    sd_bus_message_append(reply, "(ssssssaiai)", action, actionTitle, owner, ownerTitle, "default",
                          "Default Context", 1, key, 1, key);
}

}  // namespace

template <int (FakeGlobalAccel::*method)(sd_bus_message*)>
int FakeGlobalAccel::handle(sd_bus_message* call, void* self, sd_bus_error* /*error*/) {
    auto& fake = *static_cast<FakeGlobalAccel*>(self);
    return fake.manner_ == Manner::byErrors ? -EACCES : (fake.*method)(call);
}

const sd_bus_vtable FakeGlobalAccel::methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("doRegister", "as", "", &handle<&FakeGlobalAccel::doRegister>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("setShortcutKeys", "asa(ai)u", "a(ai)",
                  &handle<&FakeGlobalAccel::setShortcutKeys>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("unregister", "ss", "b", &handle<&FakeGlobalAccel::unregister>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("globalShortcutsByKey", "(ai)(i)", "a(ssssssaiai)",
                  &handle<&FakeGlobalAccel::globalShortcutsByKey>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("shortcutKeys", "as", "a(ai)", &handle<&FakeGlobalAccel::shortcutKeys>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("setForeignShortcutKeys", "asa(ai)", "",
                  &handle<&FakeGlobalAccel::setForeignShortcutKeys>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

FakeGlobalAccel::FakeGlobalAccel(bool isKWin, std::int32_t takenKey) {
    if (takenKey != 0) {
        keysOfKRunner_ = {takenKey, altF2};
    }
    sd_bus* const bus = server_.bus();
    sd_bus_add_object_vtable(bus, nullptr, path, accelInterface, methods, this);
    if (isKWin) {
        sd_bus_request_name(bus, "org.kde.KWin", 0);
    }
    sd_bus_request_name(bus, "org.kde.kglobalaccel", 0);
    server_.start();
}

void FakeGlobalAccel::setManner(Manner manner) {
    const std::lock_guard lock(server_.mutex());
    manner_ = manner;
    server_.setLate(manner == Manner::later);
}

std::map<std::string, std::int32_t> FakeGlobalAccel::actions() {
    const std::lock_guard lock(server_.mutex());
    return actions_;
}

void FakeGlobalAccel::leave(const std::string& action, std::int32_t key) {
    const std::lock_guard lock(server_.mutex());
    actions_[action] = key;
}

void FakeGlobalAccel::emitKey(const char* signal, const std::string& action) {
    const std::lock_guard lock(server_.mutex());
    sd_bus_emit_signal(server_.bus(), "/component/com_tarvik_dictate",
                       "org.kde.kglobalaccel.Component", signal, "ssx", program, action.c_str(),
                       std::int64_t{0});
    sd_bus_flush(server_.bus());
}

void FakeGlobalAccel::change(const std::string& action, std::int32_t key) {
    const std::lock_guard lock(server_.mutex());
    actions_[action] = key;
    sd_bus_emit_signal(server_.bus(), path, accelInterface, "yourShortcutsChanged", "asa(ai)", 4,
                       program, action.c_str(), "Tarvik Dictate", "Dictate", 1, 4, key, 0, 0, 0);
    sd_bus_flush(server_.bus());
}

int FakeGlobalAccel::doRegister(sd_bus_message* call) {
    const std::vector<std::string> action = textsIn(call);
    if (action.size() != 4 || action[0] != program) {
        return -EINVAL;
    }
    actions_.try_emplace(action[1], 0);
    return sd_bus_reply_method_return(call, "");
}

int FakeGlobalAccel::setShortcutKeys(sd_bus_message* call) {
    const std::vector<std::string> action = textsIn(call);
    std::int32_t key = 0;
    std::int32_t none = 0;
    std::uint32_t flags = 0;
    if (sd_bus_message_read(call, "a(ai)u", 1, 4, &key, &none, &none, &none, &flags) <= 0 ||
        action.size() != 4 || !actions_.contains(action[1])) {
        return -EINVAL;
    }
    constexpr std::uint32_t replacesKeys = 4;
    std::int32_t& kept = actions_[action[1]];
    if (kept == 0 || (flags & replacesKeys) != 0) {
        kept = manner_ != Manner::sharing && keysOfKRunner_.contains(key) ? 0 : key;
    }
    return sd_bus_reply_method_return(call, "a(ai)", 1, 4, kept, 0, 0, 0);
}

int FakeGlobalAccel::unregister(sd_bus_message* call) {
    const char* component = nullptr;
    const char* action = nullptr;
    sd_bus_message_read(call, "ss", &component, &action);
    return sd_bus_reply_method_return(call, "b", static_cast<int>(actions_.erase(action)));
}

int FakeGlobalAccel::globalShortcutsByKey(sd_bus_message* call) {
    std::int32_t key = 0;
    std::int32_t none = 0;
    std::int32_t match = 0;
    if (sd_bus_message_read(call, "(ai)(i)", 4, &key, &none, &none, &none, &match) <= 0) {
        return -EINVAL;
    }
    sd_bus_message* made = nullptr;
    sd_bus_message_new_method_return(call, &made);
    const BusMessage reply(made);
    sd_bus_message_open_container(made, 'a', "(ssssssaiai)");
    for (const auto& [action, owned] : actions_) {
        if (owned == key) {
            appendShortcut(made, key, action.c_str(), "Dictate", program, "Tarvik Dictate");
        }
    }
    if (keysOfKRunner_.contains(key)) {
        appendShortcut(made, key, krunnerAction, "Run Command", krunner, "KRunner");
    }
    sd_bus_message_close_container(made);
    return sd_bus_send(nullptr, made, nullptr);
}

std::set<std::int32_t> FakeGlobalAccel::keysOfKRunner() {
    const std::lock_guard lock(server_.mutex());
    return keysOfKRunner_;
}

void FakeGlobalAccel::giveToKRunner(const std::set<std::int32_t>& keys) {
    const std::lock_guard lock(server_.mutex());
    keysOfKRunner_ = keys;
}

int FakeGlobalAccel::shortcutKeys(sd_bus_message* call) {
    const std::vector<std::string> action = textsIn(call);
    const bool isKRunner = action.size() == 4 && action[0] == krunner && action[1] == krunnerAction;
    return replyWithKeys(call, isKRunner ? keysOfKRunner_ : std::set<std::int32_t>{});
}

int FakeGlobalAccel::setForeignShortcutKeys(sd_bus_message* call) {
    const std::vector<std::string> action = textsIn(call);
    if (action.size() != 4 || action[0] != krunner || action[1] != krunnerAction ||
        sd_bus_message_enter_container(call, 'a', "(ai)") <= 0) {
        return -EINVAL;
    }
    std::set<std::int32_t> keys;
    while (sd_bus_message_enter_container(call, 'r', "ai") > 0) {
        const void* numbers = nullptr;
        std::size_t size = 0;
        if (sd_bus_message_read_array(call, 'i', &numbers, &size) < 0 || size == 0) {
            return -EINVAL;
        }
        const std::int32_t key = *static_cast<const std::int32_t*>(numbers);
        // A key that an action has is given to nobody else.
        if (std::ranges::none_of(actions_,
                                 [key](const auto& ours) { return ours.second == key; })) {
            keys.insert(key);
        }
        sd_bus_message_exit_container(call);
    }
    keysOfKRunner_ = keys;
    return sd_bus_reply_method_return(call, "");
}

}  // namespace tarvik::tests
