// SPDX-License-Identifier: MIT
// Replies of other programs to an accessibility write. A text is inserted at most once; where the
// write says no, the text is typed, so nothing of the text may stay in the field.

#include <fuzzer/FuzzedDataProvider.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "fuzz/BusValues.h"
#include "fuzz/FakeBus.h"
#include "fuzz/FuzzedWidget.h"
#include "fuzz/Promise.h"
#include "platform/linux/accessibility/TextWrite.h"

namespace {

using namespace tarvik;
using namespace tarvik::linuxdesktop;
using fuzz::promise;
using std::chrono::steady_clock;

// Short, so that many inputs are tried. A silent program uses all of it.
constexpr std::chrono::milliseconds timeout{40};
constexpr std::chrono::milliseconds lateTimeout{100'000};
constexpr const char* dictated[] = {"Q", " QWERTZ", "QÄ日", "Q😀Z", "Q\u0301 Q"};

/// What the program on the bus does.
class Program {
  public:
    Program(FuzzedDataProvider& input, std::string dictation)
        : input_(input), dictation_(std::move(dictation)), widget_(input) {
        isTrue_ = input.ConsumeBool();
    }

    /// Whether every reply is the widget's own.
    bool isTrue() const { return isTrue_; }
    const fuzz::FuzzedWidget& widget() const { return widget_; }
    int insertions() const { return insertions_; }
    bool hasDeletedSince() const { return hasDeletedSince_; }

    void handle(sd_bus_message* call) {
        const std::string member = sd_bus_message_get_member(call);
        note(call, member);
        if (isTrue_ || input_.ConsumeIntegralInRange(0, 3) > 0) {
            if (!widget_.handle(call, member)) {
                sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_METHOD, "none");
            }
            return;
        }
        switch (input_.ConsumeIntegralInRange(0, 5)) {
            case 0:
                break;  // No reply at all.
            case 1:
                sd_bus_reply_method_errorf(call, SD_BUS_ERROR_FAILED, "no");
                break;
            default:
                replyWithAnything(call);
        }
    }

  private:
    void note(sd_bus_message* call, const std::string& member) {
        if (member == "InsertText") {
            const char* text = "";
            sd_bus_message_skip(call, "i");
            sd_bus_message_read(call, "s", &text);
            sd_bus_message_rewind(call, 1);
            insertions_ += text == dictation_ ? 1 : 0;
            hasDeletedSince_ = false;
        } else if (member == "DeleteText") {
            hasDeletedSince_ = true;
        }
    }

    void replyWithAnything(sd_bus_message* call) {
        sd_bus_message* reply = nullptr;
        if (sd_bus_message_new_method_return(call, &reply) < 0) {
            return;
        }
        fuzz::appendValues(input_, reply, 3);
        sd_bus_send(nullptr, reply, nullptr);
        sd_bus_message_unref(reply);
    }

    FuzzedDataProvider& input_;
    const std::string dictation_;
    fuzz::FuzzedWidget widget_;
    bool isTrue_ = false;
    std::atomic<int> insertions_ = 0;
    std::atomic<bool> hasDeletedSince_ = false;
};

void checkTruthful(const fuzz::FuzzedWidget& widget, const std::string& original, bool isWritten,
                   const std::string& text) {
    const std::string without = widget.before() + widget.behind();
    if (isWritten) {
        promise(widget.text() == widget.before() + text + widget.behind(),
                "a written text stands in the place of the selection");
    } else {
        promise(widget.text() == original || widget.text() == without,
                "a text that will be typed leaves nothing behind");
    }
}

// Nobody awaits the messages that undo a change, so one that is answered follows.
void settle(MessageBus& bus, const AtspiElement& element) {
    bool isSettled = false;
    bus.call(bus.newCall(element.object(), "a.b", "GetNSelections"), lateTimeout,
             [&](sd_bus_message*) { isSettled = true; });
    bus.dispatchUntil([&] { return isSettled; }, steady_clock::now() + lateTimeout);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const std::string text = input.PickValueInArray(dictated);
    const bool isUndone = input.ConsumeBool();
    Program program(input, text);
    const std::string original = program.widget().text();
    fuzz::FakeBus bus([&program](sd_bus*, sd_bus_message* call) { program.handle(call); });
    auto opened = MessageBus::open(bus.address());
    promise(bool(opened), "the bus can be joined");
    const auto application = std::make_shared<AtspiApplication>(":1.7");
    const auto element = std::make_shared<AtspiElement>(application, "/widget");

    // A text that arrives late is typed by then, and not wanted any more.
    std::deque<std::function<void()>> deferred;
    const auto write = std::make_shared<TextWrite>(
        *opened.value(), element, text,
        TextWrite::Handlers{
            [](const std::string&) {}, [](bool) { return false; },
            [&](std::function<void()> task) { deferred.push_back(std::move(task)); }});
    const bool hasTime = program.isTrue() && program.widget().cutsItsEnd();
    const auto deadline = steady_clock::now() + (hasTime ? lateTimeout : timeout);
    const bool isWritten = write->run(deadline) == platform::axErrorSuccess;
    promise(program.insertions() <= 1, "a text is inserted once at most");
    if (isWritten) {
        promise(program.insertions() == 1, "a written text was inserted");
        promise(!program.hasDeletedSince(), "a written text is not taken back");
    }
    if (program.isTrue()) {
        // A slow machine: the late replies undo what was not in time.
        opened.value()->dispatchUntil(
            [&] { return !deferred.empty() || application->lateReplies.expired(); },
            steady_clock::now() + lateTimeout);
        for (const auto& task : std::exchange(deferred, {})) {
            task();
        }
        settle(*opened.value(), *element);
        checkTruthful(program.widget(), original, isWritten, text);
        if (isWritten && isUndone) {
            write->undo();
            settle(*opened.value(), *element);
            checkTruthful(program.widget(), original, false, text);
        }
    }
    return 0;
}
