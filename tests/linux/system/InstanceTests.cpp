// SPDX-License-Identifier: MIT

#include <poll.h>
#include <signal.h>

#include <utility>
#include <vector>

#include "platform/linux/loop/MainLoop.h"
#include "platform/linux/system/ApplicationObject.h"
#include "platform/linux/system/InstanceClaim.h"
#include "tests/linux/system/SessionBusTest.h"
#include "tests/linux/system/SilentBus.h"
#include "tests/support/Attempts.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::claimInstance;
using linuxdesktop::InstanceClaim;
using platform::ApplicationAction;
using Role = InstanceClaim::Role;

constexpr Seconds timeout(5);
constexpr Seconds shortTimeout(0.3);

class InstanceTest : public SessionBusTest {
  protected:
    linuxdesktop::ApplicationObject& startFirst() {
        InstanceClaim claim = claimInstance({}, timeout);
        EXPECT_EQ(claim.role, Role::first);
        return start(std::move(claim));
    }
    linuxdesktop::ApplicationObject& start(InstanceClaim claim) {
        first.emplace(std::move(claim.bus), clock, log,
                      linuxdesktop::ApplicationObject::Handlers{
                          [this](const std::string& id) { reopenings.push_back(id); },
                          [this](ApplicationAction action, const std::string& id) {
                              actions.emplace_back(action, id);
                          }});
        return *first;
    }

    std::string call(const char* member, std::function<void(sd_bus_message*)> fill) {
        return callFromOutside(linuxdesktop::instanceName, linuxdesktop::instancePath,
                               linuxdesktop::instanceInterface, member, std::move(fill));
    }

    std::string callAction(const char* name) {
        return call("ActivateAction", [name](sd_bus_message* message) {
            sd_bus_message_append(message, "sava{sv}", name, 1, "s", "ignored", 1,
                                  "desktop-startup-id", "s", "id");
        });
    }

    std::vector<std::string> reopenings;
    std::vector<std::pair<ApplicationAction, std::string>> actions;
    std::optional<linuxdesktop::ApplicationObject> first;
};

TEST_F(InstanceTest, TheFirstOneGetsTheNameInMilliseconds) {
    EXPECT_TRUE(isWithin(Seconds(0.25), [this] {
        const TimePoint start = clock.now();
        EXPECT_EQ(claimInstance({}, timeout).role, Role::first);
        return clock.now() - start;
    }));
}

TEST_F(InstanceTest, ASecondStartBringsTheFirstForwardAndHandsOverItsIds) {
    startFirst();
    const auto claimed = [&](linuxdesktop::StartupIds ids) {
        return meanwhile([ids] { return claimInstance(ids, timeout).role; });
    };
    EXPECT_EQ(claimed({"launcher_TIME12", "token"}), Role::second);
    EXPECT_EQ(claimed({"", "token"}), Role::second);
    EXPECT_EQ(claimed({"", ""}), Role::second);
    EXPECT_EQ(claimed({"\xff", ""}), Role::second);
    EXPECT_EQ(reopenings, (std::vector<std::string>{"launcher_TIME12", "token", "", ""}));
}

TEST_F(InstanceTest, OpeningBringsItForwardToo) {
    startFirst();
    EXPECT_EQ(call("Open",
                   [](sd_bus_message* message) {
                       sd_bus_message_append(message, "asa{sv}", 1, "file:///etc/passwd", 2,
                                             "other", "u", 1, "activation-token", "s", "token");
                   }),
              "");
    EXPECT_EQ(reopenings, std::vector<std::string>{"token"});
}

TEST_F(InstanceTest, ActionsAreCarriedOutByNameAndUnknownOnesRefused) {
    startFirst();
    EXPECT_EQ(callAction("toggle"), "");
    EXPECT_EQ(callAction("press"), "");
    EXPECT_EQ(callAction("release"), "");
    EXPECT_EQ(callAction("setup"), "");
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(callAction("quit"), SD_BUS_ERROR_INVALID_ARGS);
    EXPECT_EQ(actions, (std::vector<std::pair<ApplicationAction, std::string>>{
                           {ApplicationAction::toggle, "id"},
                           {ApplicationAction::press, "id"},
                           {ApplicationAction::release, "id"},
                           {ApplicationAction::setup, "id"}}));
    EXPECT_EQ(log.linesWith("no action called quit").size(), 1U);
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST_F(InstanceTest, ALongNameOfAnUnknownActionIsCutInTheLog) {
    startFirst();
    EXPECT_EQ(callAction(std::string(5000, 'a').c_str()), SD_BUS_ERROR_INVALID_ARGS);
    EXPECT_EQ(log.lines(), std::vector<std::string>{"TarvikDictate: there is no action called " +
                                                    std::string(99, 'a') + "…"});
}

TEST_F(InstanceTest, WithoutASessionBusThereIsNothingToClaim) {
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus", 1);
    const InstanceClaim claim = claimInstance({}, timeout);
    EXPECT_EQ(claim.role, Role::unknown);
    EXPECT_FALSE(claim.reason.empty());
}

TEST_F(InstanceTest, ABusThatNeverAnswersIsWaitedForNoLongerThanAllowed) {
    const SilentBus silent(folder / "silent");
    setenv("DBUS_SESSION_BUS_ADDRESS", silent.address().c_str(), 1);
    const TimePoint start = clock.now();
    EXPECT_EQ(claimInstance({}, shortTimeout).role, Role::unanswered);
    EXPECT_LT((clock.now() - start).count(), 2.0);
}

TEST_F(InstanceTest, ABusThatAnswersLateGetsTheNameThen) {
    kill(bus->identifier(), SIGSTOP);
    InstanceClaim claim = claimInstance({}, shortTimeout);
    ASSERT_EQ(claim.role, Role::unanswered);
    start(std::move(claim));
    kill(bus->identifier(), SIGCONT);
    EXPECT_TRUE(runUntil([&] { return !log.linesWith("the session bus is back").empty(); }));
    EXPECT_EQ(meanwhile([] { return claimInstance({}, timeout).role; }), Role::second);
    EXPECT_EQ(callAction("press"), "");
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST_F(InstanceTest, AnOwnerThatHangsIsReportedAfterAWhile) {
    // Nobody looks at what comes in here.
    const InstanceClaim owner = claimInstance({}, timeout);
    const TimePoint start = clock.now();
    const InstanceClaim claim = claimInstance({}, shortTimeout);
    EXPECT_EQ(claim.role, Role::refused);
    EXPECT_FALSE(claim.reason.empty());
    EXPECT_GE((clock.now() - start).count(), shortTimeout.count());
    EXPECT_LT((clock.now() - start).count(), 2.0);
}

TEST_F(InstanceTest, AnOwnerThatIsSomethingElseIsReportedAtOnce) {
    linuxdesktop::MainLoop loop(clock);
    const auto owner = claimInstance({}, timeout).bus;
    // A connection that replies to what it does not know with an error.
    owner->attach(loop, [](const Error&) {});
    EXPECT_EQ(meanwhile([] { return claimInstance({}, timeout).role; }), Role::refused);
}

TEST_F(InstanceTest, AnOwnerThatEndsInsteadOfAnsweringIsReplaced) {
    sd_bus* opened = nullptr;
    ASSERT_GE(sd_bus_open_user(&opened), 0);
    linuxdesktop::BusHandle owner(opened);
    ASSERT_GE(sd_bus_request_name(owner.get(), linuxdesktop::instanceName, 0), 0);
    // What the bus itself told the owner is out of the way first.
    while (sd_bus_process(owner.get(), nullptr) > 0) {
    }
    auto claim = std::async(std::launch::async, [] { return claimInstance({}, timeout); });
    pollfd waited{sd_bus_get_fd(owner.get()), POLLIN, 0};
    ASSERT_EQ(poll(&waited, 1, 10000), 1);
    owner.reset();
    EXPECT_EQ(claim.get().role, Role::first);
}

TEST_F(InstanceTest, WhoeverResignsIsReplacedThoughItStillRuns) {
    startFirst().resign();
    EXPECT_EQ(meanwhile([] { return claimInstance({}, timeout).role; }), Role::first);
    EXPECT_TRUE(reopenings.empty());
}

TEST_F(InstanceTest, ABusThatGoesAwayCostsOneLine) {
    startFirst();
    bus.reset();
    EXPECT_TRUE(runUntil([&] { return !log.lines().empty(); }));
    EXPECT_EQ(log.linesWith("a second start goes unnoticed").size(), 1U);
}

TEST_F(InstanceTest, ABusThatComesBackIsJoinedAgain) {
    startFirst();
    for (std::size_t time = 1; time <= 2; ++time) {
        bus.reset();
        EXPECT_TRUE(runUntil(
            [&] { return log.linesWith("a second start goes unnoticed").size() == time; }));
        restartBus();
        EXPECT_TRUE(
            runUntil([&] { return log.linesWith("the session bus is back").size() == time; }));
        EXPECT_EQ(meanwhile([] { return claimInstance({}, timeout).role; }), Role::second);
        EXPECT_EQ(callAction("toggle"), "");
        EXPECT_EQ(reopenings.size(), time);
        EXPECT_EQ(actions.size(), time);
    }
    EXPECT_EQ(log.lines().size(), 4U);
}

TEST_F(InstanceTest, ABusThatComesBackIsLeftToAnInstanceThatWasFaster) {
    startFirst();
    bus.reset();
    EXPECT_TRUE(runUntil([&] { return !log.lines().empty(); }));
    restartBus();
    const InstanceClaim faster = claimInstance({}, timeout);
    ASSERT_EQ(faster.role, Role::first);
    EXPECT_TRUE(runUntil([&] { return !log.linesWith("another instance has the name").empty(); }));
}

}  // namespace

}  // namespace tarvik::tests
