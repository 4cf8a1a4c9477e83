// SPDX-License-Identifier: MIT
#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "tests/linux/bus/BusServer.h"

namespace tarvik::tests {

/// A KWin without a screen that only has global shortcuts, on the session bus of the process. Its
/// own thread answers.
class FakeGlobalAccel {
  public:
    static constexpr std::int32_t altSpace = 0x08000020;
    static constexpr std::int32_t altShiftSpace = 0x0A000020;
    static constexpr std::int32_t altF2 = 0x09000031;

    /// How calls are answered: at once, when the manner is another one again, or by errors. With
    /// `sharing`, an action gets its key also when another action has the same key.
    enum class Manner { properly, later, byErrors, sharing };

    /// `isKWin` is whether the same program is KWin. With `takenKey`, an action of another program,
    /// "KRunner, Run Command", has that key and Alt+F2.
    explicit FakeGlobalAccel(bool isKWin = true, std::int32_t takenKey = 0);
    FakeGlobalAccel(const FakeGlobalAccel&) = delete;
    FakeGlobalAccel& operator=(const FakeGlobalAccel&) = delete;

    void setManner(Manner manner);
    /// The key of an action of our program, as "alt-space"; empty without such an action.
    std::map<std::string, std::int32_t> actions();
    /// What a process of ours left behind that was killed.
    void leave(const std::string& action, std::int32_t key);
    /// The key of an action of ours goes down, or up.
    void press(const std::string& action) { emitKey("globalShortcutPressed", action); }
    void release(const std::string& action) { emitKey("globalShortcutReleased", action); }
    /// The user gives another key to an action of ours.
    void change(const std::string& action, std::int32_t key);
    /// The keys of KRunner's action, and the user's change of them.
    std::set<std::int32_t> keysOfKRunner();
    void giveToKRunner(const std::set<std::int32_t>& keys);

  private:
    void emitKey(const char* signal, const std::string& action);

    template <int (FakeGlobalAccel::*method)(sd_bus_message*)>
    static int handle(sd_bus_message* call, void* self, sd_bus_error* error);
    int doRegister(sd_bus_message* call);
    int setShortcutKeys(sd_bus_message* call);
    int unregister(sd_bus_message* call);
    int globalShortcutsByKey(sd_bus_message* call);
    int shortcutKeys(sd_bus_message* call);
    int setForeignShortcutKeys(sd_bus_message* call);

    static const sd_bus_vtable methods[];

    // All under the mutex of the server.
    Manner manner_ = Manner::properly;
    std::set<std::int32_t> keysOfKRunner_;
    std::map<std::string, std::int32_t> actions_;
    BusServer server_;
};

}  // namespace tarvik::tests
