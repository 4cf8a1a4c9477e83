// SPDX-License-Identifier: MIT

#include "tests/core/app/SessionSchedule.h"

#include <algorithm>
#include <random>
#include <string_view>

#include "tests/core/app/SimulatedSession.h"

namespace tarvik {

namespace {

using Action = SessionStep::Action;

struct ActionChoice {
    Action action;
    std::string_view name;
    int weight;
};

constexpr ActionChoice actionChoices[] = {{Action::pressHold, "press hold", 14},
                                          {Action::releaseHold, "release hold", 9},
                                          {Action::tapToggle, "tap toggle", 6},
                                          {Action::wake, "wake", 3},
                                          {Action::storeKey, "store key", 2},
                                          {Action::removeKey, "remove key", 1},
                                          {Action::focus, "focus element", 3},
                                          {Action::bringToFront, "bring to front", 2},
                                          {Action::speak, "speak", 6},
                                          {Action::accept, "accept", 12},
                                          {Action::close, "close", 4},
                                          {Action::lose, "lose", 2},
                                          {Action::sayFinal, "say final", 12},
                                          {Action::sayInterim, "say interim", 3},
                                          {Action::sayNothing, "say nothing", 2},
                                          {Action::settle, "settle", 22},
                                          {Action::advance, "advance", 25}};

// Below and above each delay and deadline.
constexpr std::int64_t intervals[] = {100'000,    250'000,    310'000,    900'000,
                                      1'900'000,  2'100'000,  4'900'000,  5'100'000,
                                      10'100'000, 24'000'000, 31'000'000, 130'000'000};
constexpr const char* texts[] = {"one", "a second piece", "the third piece is long enough"};
constexpr std::size_t minSteps = 4;
constexpr std::size_t maxSteps = 60;
// One schedule of this many begins with a long dictation.
constexpr std::size_t longDictations = 20;

class Random {
  public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}
    std::size_t below(std::size_t limit) { return static_cast<std::size_t>(engine_() % limit); }

  private:
    std::mt19937_64 engine_;
};

Action randomAction(Random& random) {
    int total = 0;
    for (const ActionChoice& choice : actionChoices) {
        total += choice.weight;
    }
    int rest = static_cast<int>(random.below(static_cast<std::size_t>(total)));
    for (const ActionChoice& choice : actionChoices) {
        rest -= choice.weight;
        if (rest < 0) {
            return choice.action;
        }
    }
    return Action::settle;
}

bool isOfTheService(Action action) {
    return action >= Action::accept && action <= Action::sayNothing;
}

// The newest socket in most cases. Earlier sockets still get messages, too.
std::size_t randomAge(Random& random) {
    return random.below(4) != 0 ? 0 : random.below(3);
}

// The odd part keeps actions away from the time of a tick.
SessionStep advanceBy(std::int64_t microseconds, Random& random) {
    return {Action::advance, 0, microseconds + static_cast<std::int64_t>(random.below(1000))};
}

SessionStep randomStep(Random& random) {
    const Action action = randomAction(random);
    if (action == Action::advance) {
        return advanceBy(intervals[random.below(std::size(intervals))], random);
    }
    if (isOfTheService(action)) {
        const std::size_t age = randomAge(random);
        return {action, age, 0, random.below(std::size(texts))};
    }
    return {action, random.below(4), 0};
}

// Speech without a pause, beyond the maximum length of a recording; sometimes with another step.
void addLongDictation(SessionSchedule& schedule, Random& random) {
    constexpr std::int64_t pause = 22'000'000;
    constexpr int pieces = 30;
    schedule.push_back({Action::pressHold});
    schedule.push_back({Action::settle});
    schedule.push_back({Action::accept});
    for (int piece = 0; piece < pieces; ++piece) {
        schedule.push_back(advanceBy(pause, random));
        schedule.push_back({Action::sayFinal});
        if (random.below(longDictations) == 0) {
            schedule.push_back(randomStep(random));
        }
    }
}

std::optional<std::size_t> socketOf(const SessionStep& step, const SessionModel& model) {
    const std::size_t count = model.sockets();
    return step.number < count ? std::optional(count - 1 - step.number) : std::nullopt;
}

// The service's side of a step with a socket.
void serve(const SessionStep& step, std::size_t socket, const SessionModel& model,
           SessionWorld& world) {
    switch (step.action) {
        case Action::accept:
            if (model.canAccept(socket)) {
                world.accept(socket);
            }
            return;
        case Action::lose:
            if (model.canAccept(socket) || model.canSay(socket)) {
                world.lose(socket);
            }
            return;
        case Action::close:
            if (model.canAccept(socket) || model.canSay(socket)) {
                world.close(socket);
            }
            return;
        case Action::sayFinal:
        case Action::sayInterim:
            if (model.canSay(socket)) {
                world.say(socket, texts[step.text], step.action == Action::sayFinal);
            }
            return;
        case Action::sayNothing:
            if (model.canSay(socket)) {
                world.sayNothing(socket);
            }
            return;
        default:
            return;
    }
}

void act(const SessionStep& step, SessionWorld& world) {
    switch (step.action) {
        case Action::pressHold:
            return world.pressHold();
        case Action::releaseHold:
            return world.releaseHold();
        case Action::tapToggle:
            return world.tapToggle();
        case Action::wake:
            return world.wake();
        case Action::storeKey:
            return world.setKey(true);
        case Action::removeKey:
            return world.setKey(false);
        case Action::focus:
            return world.focus(step.number < SessionWorld::elements ? std::optional(step.number)
                                                                    : std::nullopt);
        case Action::bringToFront:
            return world.bringToFront(step.number < std::size(SessionWorld::processes)
                                          ? std::optional(SessionWorld::processes[step.number])
                                          : std::nullopt);
        case Action::speak:
            return world.speak();
        case Action::advance:
            return world.advance(Seconds(static_cast<double>(step.microseconds) / 1e6));
        default:
            return world.settle();
    }
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += "    " + line + "\n";
    }
    return text;
}

std::string difference(const std::vector<std::string>& expected,
                       const std::vector<std::string>& found) {
    return expected == found ? "" : "expected:\n" + joined(expected) + "found:\n" + joined(found);
}

}  // namespace

std::string SessionStep::description() const {
    const auto* const choice =
        std::find_if(std::begin(actionChoices), std::end(actionChoices),
                     [this](const ActionChoice& each) { return each.action == action; });
    std::string line(choice->name);
    if (action == Action::advance) {
        return line + " " + std::to_string(microseconds) + " µs";
    }
    if (isOfTheService(action)) {
        line += " on socket -" + std::to_string(number);
    }
    if (action == Action::sayFinal || action == Action::sayInterim) {
        return line + ": " + texts[text];
    }
    const bool isChoice = action == Action::focus || action == Action::bringToFront;
    return isChoice ? line + " " + std::to_string(number) : line;
}

SessionSchedule randomSchedule(std::uint64_t seed) {
    Random random(seed);
    SessionSchedule schedule;
    if (random.below(longDictations) == 0) {
        addLongDictation(schedule, random);
    }
    for (std::size_t count = minSteps + random.below(maxSteps - minSteps); count > 0; --count) {
        schedule.push_back(randomStep(random));
    }
    return schedule;
}

void perform(const SessionStep& step, SessionModel& model, SessionWorld& world) {
    if (!isOfTheService(step.action)) {
        act(step, world);
        act(step, model);
        return;
    }
    if (const std::optional<std::size_t> socket = socketOf(step, model)) {
        // The world first: the model's answer to canSay() changes with the model.
        serve(step, *socket, model, world);
        serve(step, *socket, model, model);
    }
}

std::string firstDifference(const SessionSchedule& schedule) {
    SessionModel model;
    SimulatedSession session;
    const auto compare = [&]() -> std::string {
        const std::string text = difference(model.takeEvents(), session.takeEvents());
        return text.empty() ? difference(model.state(), session.state()) : text;
    };
    for (const SessionStep& step : schedule) {
        perform(step, model, session);
        if (step.action == Action::settle || step.action == Action::advance) {
            if (std::string text = compare(); !text.empty()) {
                return text;
            }
        }
    }
    // Long enough for every deadline and limit.
    perform({Action::advance, 0, 45'000'123}, model, session);
    return compare();
}

SessionSchedule minimized(SessionSchedule schedule) {
    for (std::size_t length = schedule.size(); length > 0; length /= 2) {
        for (std::size_t first = 0; first + length <= schedule.size();) {
            SessionSchedule shorter = schedule;
            const auto begin = shorter.begin() + static_cast<std::ptrdiff_t>(first);
            shorter.erase(begin, begin + static_cast<std::ptrdiff_t>(length));
            if (firstDifference(shorter).empty()) {
                first += length;
            } else {
                schedule = std::move(shorter);
            }
        }
    }
    return schedule;
}

std::string describe(const SessionSchedule& schedule) {
    std::string text;
    for (const SessionStep& step : schedule) {
        text += "    " + step.description() + "\n";
    }
    return text;
}

}  // namespace tarvik
