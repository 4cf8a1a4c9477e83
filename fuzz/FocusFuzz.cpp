// SPDX-License-Identifier: MIT
// Events and replies of the programs on an accessibility bus, and of the bus itself. Whatever they
// say, a program that has left the bus has no focus any more.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/BusValues.h"
#include "fuzz/FakeBus.h"
#include "fuzz/Promise.h"
#include "platform/linux/accessibility/AtspiRegistry.h"
#include "platform/linux/loop/PollLoop.h"

namespace {

using namespace tarvik;
using namespace tarvik::linuxdesktop;
using fuzz::promise;

constexpr int maxRounds = 6;
// The end is known to be known when so many more calls have been answered.
constexpr int quietRounds = 8;

constexpr const char* programs[] = {":1.7", ":1.8"};
constexpr const char* senders[] = {":1.7", ":1.8", "org.freedesktop.DBus",
                                   "org.a11y.atspi.Registry"};
constexpr const char* paths[] = {"/widget/1", "/widget/2", "/window/1",
                                 "/org/a11y/atspi/accessible/root"};

struct Event {
    const char* interface;
    const char* member;
    const char* types;
};
constexpr Event events[] = {
    {"org.a11y.atspi.Event.Object", "StateChanged", "siiva{sv}"},
    {"org.a11y.atspi.Event.Window", "Activate", "siiva{sv}"},
    {"org.a11y.atspi.Event.Window", "deactivate", "siiva{sv}"},
    {"org.a11y.atspi.Event.Object", "ChildrenChanged", "siiv(so)"},
    {"org.freedesktop.DBus", "NameOwnerChanged", "sss"},
};

/// The programs, and the bus between them.
class Programs {
  public:
    explicit Programs(FuzzedDataProvider& input)
        : input_(input), rounds_(input.ConsumeIntegralInRange(1, maxRounds)) {}

    void handle(sd_bus* bus, sd_bus_message* call) {
        const std::string member = sd_bus_message_get_member(call);
        if (member == "Round") {
            if (rounds_ > 0) {
                sendEvents(bus);
            }
            if (--rounds_ == 0) {
                sendEnds(bus);
            }
            sd_bus_reply_method_return(call, "b", rounds_ < -quietRounds ? 1 : 0);
        } else if (rounds_ <= 0) {
            sd_bus_reply_method_errorf(call, SD_BUS_ERROR_NAME_HAS_NO_OWNER, "gone");
        } else {
            reply(call, member);
        }
    }

  private:
    void sendEvents(sd_bus* bus) {
        for (int count = input_.ConsumeIntegralInRange(0, 6); count > 0; --count) {
            const Event event = input_.PickValueInArray(events);
            sd_bus_message* signal = newSignal(bus, event, input_.PickValueInArray(paths),
                                               input_.PickValueInArray(senders));
            if (event.member == std::string("StateChanged") && input_.ConsumeBool()) {
                sd_bus_message_append(signal, "siivs", "focused", input_.ConsumeBool() ? 1 : 0, 0,
                                      "i", 0, "");
            } else if (input_.ConsumeBool()) {
                fuzz::appendValues(input_, signal, 4);
            } else {
                appendTypes(signal, event.types);
            }
            send(bus, signal);
        }
    }

    void appendTypes(sd_bus_message* message, const char* types) {
        for (const char* type = types; *type != '\0'; ++type) {
            if (*type == 'a' || *type == '(') {
                fuzz::appendValue(input_, message, type);
                return;
            }
            fuzz::appendValue(input_, message, std::string(1, *type).c_str());
        }
    }

    // All programs leave the bus.
    static void sendEnds(sd_bus* bus) {
        for (const char* name : senders) {
            sd_bus_message* signal =
                newSignal(bus, {"org.freedesktop.DBus", "NameOwnerChanged", "sss"},
                          "/org/freedesktop/DBus", "org.freedesktop.DBus");
            sd_bus_message_append(signal, "sss", name, name, "");
            send(bus, signal);
        }
    }

    static sd_bus_message* newSignal(sd_bus* bus, const Event& event, const char* path,
                                     const char* sender) {
        sd_bus_message* signal = nullptr;
        sd_bus_message_new_signal(bus, &signal, path, event.interface, event.member);
        sd_bus_message_set_sender(signal, sender);
        return signal;
    }

    static void send(sd_bus* bus, sd_bus_message* message) {
        sd_bus_send(bus, message, nullptr);
        sd_bus_message_unref(message);
    }

    void reply(sd_bus_message* call, const std::string& member) {
        const int kind = input_.ConsumeIntegralInRange(0, 5);
        sd_bus_message* answer = nullptr;
        if (kind == 0 || sd_bus_message_new_method_return(call, &answer) < 0) {
            sd_bus_reply_method_errorf(call, SD_BUS_ERROR_FAILED, "no");
            return;
        }
        if (kind == 1) {
            fuzz::appendValues(input_, answer, 3);
        } else if (member == "GetConnectionUnixProcessID") {
            sd_bus_message_append(answer, "u", input_.ConsumeIntegralInRange(0U, 3U));
        } else if (member == "GetState") {
            // Active, editable, focused, showing.
            sd_bus_message_append(
                answer, "au", 2,
                input_.ConsumeBool() ? input_.ConsumeIntegral<std::uint32_t>() : 0x02001082U, 0U);
        } else if (member == "GetChildren") {
            appendChildren(answer);
        } else {
            appendTypes(answer, member == "Get" ? "v" : member == "GetRole" ? "u" : "as");
        }
        send(nullptr, answer);
    }

    void appendChildren(sd_bus_message* answer) {
        sd_bus_message_open_container(answer, 'a', "(so)");
        for (int count = input_.ConsumeIntegralInRange(0, 3); count > 0; --count) {
            sd_bus_message_append(answer, "(so)", input_.PickValueInArray(programs),
                                  input_.PickValueInArray(paths));
        }
        sd_bus_message_close_container(answer);
    }

    FuzzedDataProvider& input_;
    int rounds_;
};

void play(AtspiRegistry& registry, PollLoop& loop) {
    registry.bus().call(registry.bus().newCall({":1.7", "/"}, "a.b", "Round"),
                        std::chrono::seconds(20), [&](sd_bus_message* reply) {
                            int isOver = 0;
                            promise(sd_bus_message_read(reply, "b", &isOver) > 0, "a reply");
                            if (isOver != 0) {
                                loop.quit();
                            } else {
                                registry.focus().scan(1);
                                play(registry, loop);
                            }
                        });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    Programs world(input);
    fuzz::FakeBus bus(
        [&world](sd_bus* connection, sd_bus_message* call) { world.handle(connection, call); });
    PollLoop loop;
    std::shared_ptr<const FocusSnapshot> latest;
    std::vector<std::shared_ptr<AtspiElement>> seen;
    const auto registry = AtspiRegistry::open(
        loop, bus.address(),
        {[&](std::shared_ptr<const FocusSnapshot> snapshot) {
             for (const auto& [process, element] : snapshot->elements) {
                 promise(process > 0, "a focus belongs to a process");
                 promise(element != nullptr, "a process with a focus has an element");
                 promise(element->application->process() == process,
                         "a focus is filed under its own process");
                 seen.push_back(element);
             }
             latest = std::move(snapshot);
         },
         [](bool, const std::string&) {}, [] { promise(false, "the bus is there"); }});
    promise(registry != nullptr, "the bus can be joined");
    play(*registry, loop);
    loop.run();
    promise(!latest || latest->elements.empty(), "a program that has left has no focus");
    promise(!latest || !latest->activeProcess, "a program that has left is not in front");
    for (const auto& element : seen) {
        promise(element->application->isGone, "a program that has left is known to be gone");
    }
    return 0;
}
