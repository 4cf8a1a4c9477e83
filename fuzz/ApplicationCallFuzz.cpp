// SPDX-License-Identifier: MIT
// Calls of other programs to the application on the session bus. Only the two actions act, each
// call acts once, is answered once, and costs one short line of the log at the most.

#include <fuzzer/FuzzedDataProvider.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/BusValues.h"
#include "fuzz/FakeBus.h"
#include "fuzz/Promise.h"
#include "platform/linux/loop/MonotonicClock.h"
#include "platform/linux/system/ApplicationObject.h"

namespace {

using namespace tarvik;
using namespace tarvik::linuxdesktop;
using fuzz::promise;

constexpr int maxCalls = 6;
// Of a line, in bytes: the text around a name of a hundred characters.
constexpr std::size_t maxLine = 500;

struct Method {
    const char* name;
    const char* types;
};
constexpr Method methods[] = {{"Activate", "a{sv}"},
                              {"Open", "as"},
                              {"ActivateAction", "s"},
                              {"ActivateAction", "s"},
                              {"Introspect", ""}};

class ShortLog final : public platform::Log {
  public:
    void write(std::string_view line) override {
        promise(line.size() <= maxLine, "another program's text does not fill the log");
        ++lines;
    }
    int lines = 0;
};

/// The programs that call.
class Callers {
  public:
    explicit Callers(FuzzedDataProvider& input) : input_(input) {}

    // Each "Next" of the test makes one call to the application.
    void handle(sd_bus* bus, sd_bus_message* call) {
        // The application answers a call before it hears of the next one.
        promise(replies_ == count_, "a call is answered once");
        const bool isOver = count_ == maxCalls || input_.remaining_bytes() == 0;
        if (!isOver) {
            ++count_;
            callApplication(bus);
        }
        sd_bus_reply_method_return(call, "b", isOver ? 1 : 0);
    }

    int calls() const { return count_; }

  private:
    void callApplication(sd_bus* bus) {
        const Method method = input_.PickValueInArray(methods);
        sd_bus_message* call = nullptr;
        sd_bus_message_new_method_call(bus, &call, "com.tarvik.dictate", "/com/tarvik/dictate",
                                       "org.freedesktop.Application", method.name);
        sd_bus_message_set_sender(call, ":1.9");
        if (input_.ConsumeIntegralInRange(0, 3) == 0) {
            fuzz::appendValues(input_, call, 4);
        } else {
            if (method.types[0] != '\0') {
                fuzz::appendValue(input_, call, method.types);
            }
            if (method.types == std::string("s")) {
                fuzz::appendValue(input_, call, "av");
            }
            if (method.types != std::string("a{sv}")) {
                fuzz::appendValue(input_, call, "a{sv}");
            }
        }
        sd_bus_call_async(bus, nullptr, call, &Callers::onReply, this, 0);
        sd_bus_message_unref(call);
    }

    static int onReply(sd_bus_message*, void* self, sd_bus_error*) {
        ++static_cast<Callers*>(self)->replies_;
        return 0;
    }

    FuzzedDataProvider& input_;
    int count_ = 0;
    int replies_ = 0;
};

struct Counts {
    int reopened = 0;
    int acted = 0;
};

void play(MessageBus& bus, bool& isOver) {
    bus.call(bus.newCall({":1.7", "/"}, "a.b", "Next"), std::chrono::seconds(20),
             [&](sd_bus_message* reply) {
                 int over = 0;
                 promise(sd_bus_message_read(reply, "b", &over) > 0, "a reply");
                 if (over != 0) {
                     isOver = true;
                 } else {
                     play(bus, isOver);
                 }
             });
}

QCoreApplication& application() {
    static int count = 1;
    static char name[] = "fuzz";
    static char* arguments[] = {name, nullptr};
    static QCoreApplication instance(count, arguments);
    return instance;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    application();
    FuzzedDataProvider input(data, size);
    Callers callers(input);
    fuzz::FakeBus fake(
        [&callers](sd_bus* bus, sd_bus_message* call) { callers.handle(bus, call); });
    auto opened = MessageBus::open(fake.address());
    promise(bool(opened), "the bus can be joined");
    MessageBus& bus = *opened.value();
    const MonotonicClock clock;
    ShortLog log;
    Counts counts;
    {
        ApplicationObject object(
            std::move(opened).value(), clock, log,
            {[&](const std::string&) { ++counts.reopened; },
             [&](platform::ApplicationAction, const std::string&) { ++counts.acted; }});
        bool isOver = false;
        play(bus, isOver);
        while (!isOver) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }
    promise(counts.reopened + counts.acted + log.lines <= callers.calls(),
            "a call acts once at the most");
    return 0;
}
