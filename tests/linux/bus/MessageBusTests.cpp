// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/bus/BusReplies.h"
#include "platform/linux/bus/MessageBus.h"
#include "tests/linux/loop/LoopDriver.h"
#include "tests/support/BusDaemon.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::BusMessage;
using linuxdesktop::BusObject;
using linuxdesktop::integerPropertyIn;
using linuxdesktop::isError;
using linuxdesktop::isNoReply;
using linuxdesktop::MessageBus;
using linuxdesktop::textIn;
using linuxdesktop::textPropertyIn;
using std::chrono::steady_clock;

const BusObject daemonObject{"org.freedesktop.DBus", "/org/freedesktop/DBus"};
constexpr const char* daemonInterface = "org.freedesktop.DBus";
constexpr const char* interfaceName = "tarvik.Test";
constexpr const char* objectPath = "/tarvik/test";
constexpr const char* ownedName = "tarvik.test.Owned";

/// The name that the bus has given to a connection that no loop drives.
std::string uniqueNameOf(MessageBus& bus) {
    std::optional<std::string> name;
    EXPECT_TRUE(
        bus.call(bus.newCall(daemonObject, daemonInterface, "GetId"), 10s,
                 [&](sd_bus_message* reply) { name = sd_bus_message_get_destination(reply); }));
    EXPECT_TRUE(bus.dispatchUntil([&] { return name.has_value(); }, steady_clock::now() + 10s));
    return name.value_or("");
}

/// A bus of the test's own, and the connection that the loop drives.
class MessageBusTest : public testing::TestWithParam<LoopKind> {
  protected:
    MessageBusTest() {
        address = daemon.readLine().value_or("");
        bus = connect();
        bus->attach(driver->loop(), [this](const Error& error) {
            losses.push_back(error);
            repliesBeforeLoss = replies.size();
        });
    }

    std::unique_ptr<MessageBus> connect() {
        auto opened = MessageBus::open(address);
        EXPECT_TRUE(opened);
        return std::move(opened).value();
    }

    /// Sends a call; what comes back is kept in `replies`: the text of it, or the error's name.
    bool call(BusMessage message, std::chrono::microseconds timeout = 10s) {
        return bus->call(std::move(message), timeout, [this](sd_bus_message* reply) {
            const sd_bus_error* error = sd_bus_message_get_error(reply);
            replies.push_back(error ? error->name : textIn(reply).value_or("(no text)"));
        });
    }

    BusMessage newNameQuery(const char* name) {
        return bus->newCall(daemonObject, daemonInterface, "GetNameOwner", "s", name);
    }

    bool awaitReplies(std::size_t count) {
        return driver->runUntil([&] { return replies.size() >= count; });
    }

    /// Runs the loop until the daemon has handled all that was sent before.
    void runUntilHandled() {
        bool isHandled = false;
        EXPECT_TRUE(bus->call(bus->newCall(daemonObject, daemonInterface, "GetId"), 10s,
                              [&](sd_bus_message*) { isHandled = true; }));
        EXPECT_TRUE(driver->runUntil([&] { return isHandled; }));
    }

    TestProcess daemon{busDaemonAt("unix:tmpdir=/tmp")};
    std::string address;
    std::unique_ptr<LoopDriver> driver = GetParam().make();
    std::unique_ptr<MessageBus> bus;
    std::vector<std::string> replies;
    std::vector<Error> losses;
    std::size_t repliesBeforeLoss = 0;
};

TEST_P(MessageBusTest, EachCallGetsItsReplyOnceAndInOrder) {
    EXPECT_TRUE(call(newNameQuery("org.freedesktop.DBus")));
    EXPECT_TRUE(call(bus->newCall(daemonObject, daemonInterface, "GetId")));
    EXPECT_TRUE(replies.empty());
    EXPECT_TRUE(awaitReplies(2));
    runUntilHandled();
    ASSERT_EQ(replies.size(), 2U);
    EXPECT_EQ(replies[0], "org.freedesktop.DBus");
    EXPECT_EQ(replies[1].size(), 32U);
    EXPECT_TRUE(losses.empty());
}

TEST_P(MessageBusTest, AnErrorComesInPlaceOfTheReplyAndHoldsNoValue) {
    std::optional<std::string> text = "as it was";
    EXPECT_TRUE(bus->call(newNameQuery("tarvik.nobody"), 10s, [&](sd_bus_message* reply) {
        text = textIn(reply);
        EXPECT_TRUE(isError(reply));
        EXPECT_FALSE(isNoReply(reply));
        replies.emplace_back(sd_bus_message_get_error(reply)->name);
    }));
    EXPECT_TRUE(awaitReplies(1));
    EXPECT_EQ(replies, std::vector<std::string>{SD_BUS_ERROR_NAME_HAS_NO_OWNER});
    EXPECT_EQ(text, std::nullopt);
}

TEST_P(MessageBusTest, ACallThatCannotBeMadeOrSentIsRefusedAtOnce) {
    EXPECT_FALSE(call(newNameQuery("\xC3(")));
    EXPECT_FALSE(call(nullptr));
    runUntilHandled();
    EXPECT_TRUE(replies.empty());
}

TEST_P(MessageBusTest, AReceiverThatDoesNotReplyCostsTheTimeoutOnly) {
    const auto silent = connect();
    const std::string name = uniqueNameOf(*silent);
    const auto start = steady_clock::now();
    EXPECT_TRUE(call(bus->newCall({name, objectPath}, interfaceName, "Never"), 50ms));
    EXPECT_TRUE(awaitReplies(1));
    EXPECT_EQ(replies, std::vector<std::string>{SD_BUS_ERROR_NO_REPLY});
    EXPECT_GE(steady_clock::now() - start, 50ms);
}

TEST_P(MessageBusTest, ACallWithoutATimeoutEndsWhenItsReceiverLeaves) {
    auto leaving = connect();
    const std::string name = uniqueNameOf(*leaving);
    EXPECT_TRUE(
        call(bus->newCall({name, objectPath}, interfaceName, "Never"), MessageBus::noTimeout));
    runUntilHandled();
    EXPECT_TRUE(replies.empty());
    leaving.reset();
    EXPECT_TRUE(awaitReplies(1));
    EXPECT_EQ(replies, std::vector<std::string>{SD_BUS_ERROR_NO_REPLY});
}

TEST_P(MessageBusTest, SignalsThatMatchAreSeenFromTheTakenRuleOn) {
    bool isObserving = false;
    std::vector<std::string> names;
    bus->observe(
        "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg2=''",
        [&](sd_bus_message* signal) { names.push_back(textIn(signal).value_or("")); },
        [&] { isObserving = true; });
    EXPECT_FALSE(isObserving);
    EXPECT_TRUE(driver->runUntil([&] { return isObserving; }));
    auto leaving = connect();
    const std::string name = uniqueNameOf(*leaving);
    leaving.reset();
    EXPECT_TRUE(driver->runUntil([&] { return !names.empty(); }));
    EXPECT_EQ(names, std::vector<std::string>{name});
}

TEST_P(MessageBusTest, ARefusedRuleEndsNothing) {
    bool isObserving = false;
    bus->observe(
        "type='signal',path='/a',path_namespace='/b'", [](sd_bus_message*) { FAIL(); },
        [&] { isObserving = true; });
    runUntilHandled();
    EXPECT_FALSE(isObserving);
    EXPECT_TRUE(bus->isOpen());
    EXPECT_TRUE(losses.empty());
}

/// An object with one method, which replies with its argument, and one property.
struct Echo {
    int calls = 0;

    static int onEcho(sd_bus_message* call, void* self, sd_bus_error*) {
        ++static_cast<Echo*>(self)->calls;
        const char* text = "";
        sd_bus_message_read(call, "s", &text);
        return sd_bus_reply_method_return(call, "s", text);
    }
    static int getNumber(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply,
                         void*, sd_bus_error*) {
        return sd_bus_message_append(reply, "i", 42);
    }
    static const sd_bus_vtable methods[];
};

const sd_bus_vtable Echo::methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Echo", "s", "s", &Echo::onEcho, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("Number", "i", &Echo::getNumber, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_VTABLE_END};

TEST_P(MessageBusTest, AnObjectRepliesToCallsAndSoDoItsProperties) {
    Echo echo;
    bus->addObject(objectPath, interfaceName, Echo::methods, &echo);
    const BusObject self{uniqueNameOf(*bus), objectPath};
    EXPECT_TRUE(call(bus->newCall(self, interfaceName, "Echo", "s", "text")));
    EXPECT_TRUE(awaitReplies(1));
    EXPECT_TRUE(call(bus->newCall(self, interfaceName, "Missing")));
    EXPECT_TRUE(awaitReplies(2));
    EXPECT_EQ(replies, (std::vector<std::string>{"text", SD_BUS_ERROR_UNKNOWN_METHOD}));
    EXPECT_EQ(echo.calls, 1);
    std::optional<std::int32_t> number;
    std::optional<std::string> text = "as it was";
    bus->call(bus->newPropertyCall(self, interfaceName, "Number"), 10s,
              [&](sd_bus_message* reply) { number = integerPropertyIn(reply); });
    bus->call(bus->newPropertyCall(self, interfaceName, "Number"), 10s,
              [&](sd_bus_message* reply) { text = textPropertyIn(reply); });
    EXPECT_TRUE(driver->runUntil([&] { return number && !text; }));
    EXPECT_EQ(number, 42);
}

TEST_P(MessageBusTest, ManyObjectsReplyByTheSameMethods) {
    Echo echo;
    bus->addObjects(objectPath, interfaceName, Echo::methods, &echo);
    for (const char* path : {"/tarvik/test/1", "/tarvik/test/2"}) {
        EXPECT_TRUE(
            call(bus->newCall({uniqueNameOf(*bus), path}, interfaceName, "Echo", "s", path)));
    }
    EXPECT_TRUE(awaitReplies(2));
    EXPECT_EQ(replies, (std::vector<std::string>{"/tarvik/test/1", "/tarvik/test/2"}));
}

TEST_P(MessageBusTest, AnOwnSignalIsSeenByWhoeverListens) {
    std::string seen;
    bool isObserving = false;
    bus->observe(
        "type='signal',interface='tarvik.Test',member='Changed'",
        [&](sd_bus_message* signal) {
            seen = std::string(sd_bus_message_get_path(signal)) + " " + textIn(signal).value_or("");
        },
        [&] { isObserving = true; });
    ASSERT_TRUE(driver->runUntil([&] { return isObserving; }));
    BusMessage signal = bus->newSignal(objectPath, interfaceName, "Changed");
    ASSERT_GE(sd_bus_message_append(signal.get(), "s", "news"), 0);
    bus->send(std::move(signal));
    EXPECT_TRUE(driver->runUntil([&] { return !seen.empty(); }));
    EXPECT_EQ(seen, "/tarvik/test news");
}

TEST_P(MessageBusTest, AMessageThatIsSentIsDeliveredAndItsReplyIsNot) {
    Echo echo;
    bus->addObject(objectPath, interfaceName, Echo::methods, &echo);
    bus->send(bus->newCall({uniqueNameOf(*bus), objectPath}, interfaceName, "Echo", "s", "text"));
    EXPECT_TRUE(driver->runUntil([&] { return echo.calls == 1; }));
    runUntilHandled();
    EXPECT_TRUE(replies.empty());
}

TEST_P(MessageBusTest, AReleasedNameHasNoOwner) {
    bool isOwned = false;
    bus->call(bus->newCall(daemonObject, daemonInterface, "RequestName", "su", ownedName, 0U), 10s,
              [&](sd_bus_message* reply) { isOwned = !isError(reply); });
    EXPECT_TRUE(driver->runUntil([&] { return isOwned; }));
    EXPECT_TRUE(call(newNameQuery(ownedName)));
    EXPECT_TRUE(awaitReplies(1));
    bus->releaseName(ownedName);
    EXPECT_TRUE(call(newNameQuery(ownedName)));
    EXPECT_TRUE(awaitReplies(2));
    EXPECT_EQ(replies,
              (std::vector<std::string>{uniqueNameOf(*bus), SD_BUS_ERROR_NAME_HAS_NO_OWNER}));
}

TEST_P(MessageBusTest, ALostBusAnswersWhatIsPendingAndIsReportedOnceAfterThat) {
    runUntilHandled();
    daemon.send(SIGSTOP);
    EXPECT_TRUE(call(newNameQuery("org.freedesktop.DBus"), MessageBus::noTimeout));
    EXPECT_TRUE(call(newNameQuery("org.freedesktop.DBus")));
    daemon.kill();
    EXPECT_TRUE(driver->runUntil([&] { return !losses.empty(); }));
    EXPECT_EQ(replies, std::vector<std::string>(2, SD_BUS_ERROR_NO_REPLY));
    EXPECT_EQ(repliesBeforeLoss, 2U);
    EXPECT_NE(losses.at(0).code, 0);
    EXPECT_FALSE(losses.at(0).localizedDescription.empty());
    EXPECT_FALSE(bus->isOpen());
    EXPECT_FALSE(call(newNameQuery("org.freedesktop.DBus")));
    driver->runTurn();
    EXPECT_EQ(losses.size(), 1U);
    EXPECT_EQ(replies.size(), 2U);
}

TEST_P(MessageBusTest, TheLossMayEndTheConnection) {
    auto other = connect();
    bool isLost = false;
    other->attach(driver->loop(), [&](const Error&) {
        other.reset();
        isLost = true;
    });
    daemon.kill();
    EXPECT_TRUE(driver->runUntil([&] { return isLost && !losses.empty(); }));
}

TEST_P(MessageBusTest, AnEndedConnectionCallsNobody) {
    EXPECT_TRUE(call(newNameQuery("org.freedesktop.DBus")));
    bus.reset();
    bus = connect();
    bus->attach(driver->loop(), [](const Error&) { FAIL(); });
    runUntilHandled();
    EXPECT_TRUE(replies.empty());
    EXPECT_TRUE(losses.empty());
}

TEST_P(MessageBusTest, AWaitEndsWithItsConditionOrItsDeadlineAndLeavesTheRestToTheLoop) {
    EXPECT_TRUE(call(newNameQuery("org.freedesktop.DBus")));
    EXPECT_TRUE(bus->dispatchUntil([&] { return replies.size() == 1; }, steady_clock::now() + 10s));
    const auto start = steady_clock::now();
    EXPECT_FALSE(bus->dispatchUntil([] { return false; }, start + 50ms));
    EXPECT_GE(steady_clock::now() - start, 50ms);
    EXPECT_TRUE(call(newNameQuery("org.freedesktop.DBus")));
    EXPECT_TRUE(call(newNameQuery("org.freedesktop.DBus")));
    EXPECT_TRUE(bus->dispatchUntil([&] { return replies.size() == 2; }, steady_clock::now() + 10s));
    EXPECT_TRUE(awaitReplies(3));
}

TEST_P(MessageBusTest, AWaitDoesNotOutliveTheBusAndTheLoopReportsTheLoss) {
    runUntilHandled();
    daemon.kill();
    const auto start = steady_clock::now();
    EXPECT_FALSE(bus->dispatchUntil([] { return false; }, start + 10s));
    EXPECT_LT(steady_clock::now() - start, 5s);
    EXPECT_TRUE(losses.empty());
    EXPECT_TRUE(driver->runUntil([&] { return !losses.empty(); }));
}

INSTANTIATE_TEST_SUITE_P(Over, MessageBusTest, testing::ValuesIn(everyLoop()), nameOf);

// A service that the machine has installed would answer in the place of a test's own.
TEST(BusOfATest, StartsNoProgramOfTheMachine) {
    TestProcess daemon{busDaemonAt("unix:tmpdir=/tmp")};
    const auto bus = MessageBus::open(daemon.readLine().value_or(""));
    ASSERT_TRUE(bus);
    std::vector<std::string> startable;
    bool isAnswered = false;
    EXPECT_TRUE(bus.value()->call(
        bus.value()->newCall(daemonObject, daemonInterface, "ListActivatableNames"), 10s,
        [&](sd_bus_message* reply) {
            isAnswered = true;
            const char* name = nullptr;
            ASSERT_GT(sd_bus_message_enter_container(reply, 'a', "s"), 0);
            while (sd_bus_message_read(reply, "s", &name) > 0) {
                startable.emplace_back(name);
            }
        }));
    EXPECT_TRUE(bus.value()->dispatchUntil([&] { return isAnswered; }, steady_clock::now() + 10s));
    EXPECT_EQ(startable, std::vector<std::string>{daemonObject.owner});
}

TEST(MessageBus, AnAddressWithoutABusIsAnError) {
    for (const char* address : {"unix:path=/nowhere/bus", "nonsense"}) {
        const auto opened = MessageBus::open(address);
        ASSERT_FALSE(opened);
        EXPECT_NE(opened.error().code, 0);
        EXPECT_FALSE(opened.error().localizedDescription.empty());
    }
}

}  // namespace

}  // namespace tarvik::tests
