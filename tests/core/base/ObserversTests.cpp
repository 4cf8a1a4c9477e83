// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "base/Observers.h"

namespace tarvik {
namespace {

struct Observation {
    virtual ~Observation() = default;
};

class ObserversTest : public testing::Test {
  protected:
    std::unique_ptr<Observation> add(const std::string& name) {
        return observers.add([this, name] { called += name; });
    }

    Observers<Observation> observers;
    std::string called;
};

TEST_F(ObserversTest, AreCalledInTheOrderOfTheirAddition) {
    const auto first = add("a");
    const auto second = add("b");
    observers.call();
    observers.call();
    EXPECT_EQ(called, "abab");
}

TEST_F(ObserversTest, DroppedHandlerIsNotCalled) {
    auto first = add("a");
    const auto second = add("b");
    first.reset();
    observers.call();
    EXPECT_EQ(called, "b");
    EXPECT_EQ(observers.count(), 1U);
}

TEST_F(ObserversTest, HandlerMayDropItselfAndLaterOnes) {
    std::unique_ptr<Observation> second;
    std::unique_ptr<Observation> first;
    const auto held = std::make_shared<std::string>("a");
    first = observers.add([&, held] {
        second.reset();
        first.reset();
        called += *held;
    });
    second = add("b");
    const auto third = add("c");
    observers.call();
    EXPECT_EQ(called, "ac");
}

TEST_F(ObserversTest, HandlerAddedDuringACallWaitsForTheNextCall) {
    std::unique_ptr<Observation> second;
    const auto first = observers.add([&] { second = second ? std::move(second) : add("b"); });
    observers.call();
    EXPECT_EQ(called, "");
    observers.call();
    EXPECT_EQ(called, "b");
}

TEST_F(ObserversTest, MayEndBeforeTheirObservationsAndInsideACall) {
    auto ending = std::make_unique<Observers<Observation>>();
    const auto first = ending->add([&] { ending.reset(); });
    const auto second = ending->add([&] { called += "b"; });
    ending->call();
    EXPECT_EQ(called, "b");
}

}  // namespace
}  // namespace tarvik
