// SPDX-License-Identifier: MIT

#include "platform/linux/x11/UnreadKeys.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

// A program of which nobody tells anything has looked up its keys after the delay. One that says
// that it answers pings has the timeout for its first answer.
constexpr milliseconds lookUpDelay = 200ms;
constexpr milliseconds firstAnswerTimeout = 1s;
// Where one thread of a program reads the server's messages for another one, the other one may
// sleep until the next message. Firefox was seen so for 20 s.
constexpr milliseconds pingInterval = 500ms;

constexpr milliseconds firstProbeInterval = 1ms;
constexpr milliseconds maxProbeInterval = 100ms;
// The next key waits for a program that has answered a ping.
constexpr milliseconds maxPingedProbeInterval = 10ms;
// A program that is idle at every look and never rests, such as a clock, has its answers by then.
constexpr milliseconds maxMethodDelay = 3s;
// An input method may need so long for each of the keys.
constexpr milliseconds maxMethodTime = 150ms;
// Nobody waits for a program that has read nothing for 30 s.
constexpr milliseconds expiredProbeInterval = 1s;

}  // namespace

UnreadKeys::UnreadKeys(XcbConnection& connection, PollLoop& loop, WindowPing& ping,
                       IbusAnswers& answers, Events events, milliseconds timeout, milliseconds rest)
    : connection_(connection),
      ping_(ping),
      answers_(answers),
      questions_(answers),
      probe_(connection),
      markers_(connection),
      events_(std::move(events)),
      timeout_(timeout),
      rest_(rest),
      deadline_(loop) {}

std::optional<xcb_window_t> UnreadKeys::anyWindow() const {
    const auto found =
        std::ranges::find_if(windows_, [](const auto& entry) { return !entry.second.isDoubtful; });
    return found == windows_.end() ? std::nullopt : std::optional(found->first);
}

bool UnreadKeys::contains(xcb_window_t window) const {
    const auto found = windows_.find(window);
    return found != windows_.end() && !found->second.isDoubtful;
}

std::optional<xcb_window_t> UnreadKeys::windowTypedInto(milliseconds time) const {
    const auto now = std::chrono::steady_clock::now();
    const auto found = std::ranges::find_if(windows_, [&](const auto& entry) {
        const Keys& keys = entry.second;
        return !keys.isDoubtful && !keys.characters.empty() && keys.typed > now - time;
    });
    return found == windows_.end() ? std::nullopt : std::optional(found->first);
}

bool UnreadKeys::isPinged(xcb_window_t window) const {
    const auto found = windows_.find(window);
    return found != windows_.end() && found->second.isPinged;
}

void UnreadKeys::add(xcb_window_t window, std::u32string_view characters, InputMethod method) {
    if (window != XCB_NONE) {
        // The end of the window is reported from here on.
        connection_.selectEvents(window, XCB_EVENT_MASK_STRUCTURE_NOTIFY, this);
    }
    Keys& keys = windows_[window];
    const auto serial = ping_.send(window);
    keys.isPinged = serial.has_value();
    keys.serial = serial.value_or(0);
    keys.isKnownToAnswer = keys.isPinged && ping_.hasAnswered(window);
    keys.typed = std::chrono::steady_clock::now();
    keys.nextPing = keys.isKnownToAnswer ? keys.typed + pingInterval : SteadyTime::max();
    if (method.kind != InputMethod::Kind::none) {
        keys.method = method;
    }
    if (keys.characters.empty()) {
        // The questions about these keys cannot have been heard yet.
        keys.questions = questions_.begin();
    }
    keys.number = ++number_;
    keys.characters += characters;
    keys.isDoubtful = keys.hasExpired && keys.characters.empty();
    if (keys.isDoubtful) {
        keys.deadline = SteadyTime::max();
    } else if (keys.characters.empty()) {
        keys.deadline = keys.typed + (keys.isPinged ? firstAnswerTimeout : 0ms);
    } else {
        keys.deadline = keys.typed + timeout_;
        keys.probed = std::nullopt;
        if (!keys.isKnownToAnswer) {
            startProbing(window, keys,
                         keys.typed + (keys.isPinged ? firstAnswerTimeout : firstProbeInterval));
        }
    }
    setDeadline();
}

void UnreadKeys::startProbing(xcb_window_t window, Keys& keys, SteadyTime time) {
    keys.probed = connection_.processOfClient(window).value_or(0);
    keys.probeInterval = firstProbeInterval;
    keys.nextProbe = time;
    const bool isIbus = keys.method.kind == InputMethod::Kind::ibus;
    keys.lookDeadline = time + (isIbus ? questions_.lookTime(window) : KeyQuestions::firstLookTime);
    keys.resting = keys.typed;
    keys.markers = {};
}

std::set<char32_t> UnreadKeys::characters() const {
    std::set<char32_t> all;
    for (const auto& [window, keys] : windows_) {
        if (!keys.isDoubtful) {
            all.insert(keys.characters.begin(), keys.characters.end());
        }
    }
    return all;
}

void UnreadKeys::whenRead(xcb_window_t window, std::function<void()> action) {
    if (const auto found = windows_.find(window);
        found != windows_.end() && !found->second.isDoubtful) {
        found->second.onRead.push_back(std::move(action));
    } else {
        action();
    }
}

void UnreadKeys::handleAnswer(const WindowPing::Answer& answer) {
    const auto found = windows_.find(answer.window);
    if (found == windows_.end() || !found->second.isPinged) {
        return;
    }
    if (answer.serial >= found->second.serial) {
        found->second.nextPing = SteadyTime::max();
        if (Keys& keys = found->second;
            keys.method.kind != InputMethod::Kind::none && !keys.characters.empty()) {
            // The question to the input method may not have left the program yet.
            keys.isKnownToAnswer = true;
            if (keys.method.kind == InputMethod::Kind::ibus && questions_.asks(answer.window)) {
                // The look is better spent after the answers.
                keys.hasLooked = false;
                awaitAnswers(answer.window, keys);
            } else {
                startProbing(answer.window, keys, std::chrono::steady_clock::now());
            }
        } else {
            remove(answer.window);
        }
        setDeadline();
        events_.onChange();
    } else if (!found->second.isDoubtful) {
        // The program is slow and reads on.
        found->second.deadline = std::chrono::steady_clock::now() + timeout_;
        setDeadline();
    }
}

void UnreadKeys::handleDestroyed(xcb_window_t window) {
    connection_.forgetEvents(window);
    questions_.handleDestroyed(window);
    if (const auto found = windows_.find(window); found != windows_.end()) {
        const std::size_t lost = found->second.isDoubtful ? 0 : found->second.characters.size();
        finish(window);
        if (lost > 0) {
            events_.onDestroyed(lost);
        }
        setDeadline();
        events_.onChange();
    }
}

void UnreadKeys::clear() {
    while (!windows_.empty()) {
        remove(windows_.begin()->first);
    }
    deadline_.clear();
}

void UnreadKeys::setDeadline() {
    if (windows_.empty()) {
        deadline_.clear();
        return;
    }
    SteadyTime next = SteadyTime::max();
    for (const auto& [window, keys] : windows_) {
        next = std::min(
            {next, keys.deadline, keys.nextPing, keys.probed ? keys.nextProbe : keys.deadline});
    }
    if (next == SteadyTime::max()) {
        deadline_.clear();
    } else {
        deadline_.set(next, [this] { handleDeadline(); });
    }
}

void UnreadKeys::handleDeadline() {
    const auto now = std::chrono::steady_clock::now();
    std::vector<xcb_window_t> expired;
    std::vector<xcb_window_t> read;
    std::vector<std::function<void()>> onRead;
    for (auto& [window, keys] : windows_) {
        if (keys.nextPing <= now) {
            pingAgain(window, keys, now);
        }
        if (keys.method.kind == InputMethod::Kind::ibus && !keys.isDoubtful) {
            // IBus is slow, and the program reads on.
            keys.deadline = std::max(keys.deadline, answers_.lastAnswer() + timeout_);
        }
        if (keys.deadline <= now) {
            expired.push_back(window);
        } else if (keys.probed && keys.nextProbe <= now && probe(window, keys)) {
            read.push_back(window);
        }
        if (keys.isDoubtful) {
            std::ranges::move(std::exchange(keys.onRead, {}), std::back_inserter(onRead));
        }
    }
    for (const xcb_window_t window : expired) {
        expire(window);
    }
    for (const xcb_window_t window : read) {
        finishLook(window);
    }
    for (const auto& action : onRead) {
        action();
    }
    setDeadline();
    events_.onChange();
}

void UnreadKeys::pingAgain(xcb_window_t window, Keys& keys, SteadyTime now) {
    keys.nextPing = ping_.send(window) ? now + pingInterval : SteadyTime::max();
}

// Answers whether the keys are known to be read.
bool UnreadKeys::probe(xcb_window_t window, Keys& keys) {
    const auto [finding, switches, threads] = probe_.look(*keys.probed, keys.method, keys.isPinged);
    const auto now = std::chrono::steady_clock::now();
    const bool hasAnsweredPing =
        keys.isPinged && keys.method.kind != InputMethod::Kind::none && ping_.hasAnswered(window);
    if (hasAnsweredPing && (finding == ProgramProbe::Finding::unknown ||
                            (finding == ProgramProbe::Finding::busy && now >= keys.lookDeadline))) {
        return true;
    }
    if (finding == ProgramProbe::Finding::unknown) {
        keys.nextProbe = keys.typed + lookUpDelay;
        if (keys.nextProbe <= now) {
            keys.probed = std::nullopt;
            keys.isDoubtful = true;
        }
        return false;
    }
    if (finding != ProgramProbe::Finding::behind) {
        handleSwitches(keys, switches);
    }
    // A program that waits for its input method has markers and keys in a queue of its own.
    const bool mayHaveHandled = now >= handledTime(keys);
    // Some toolkits that answer pings read events in one thread and handle them in another.
    if ((finding == ProgramProbe::Finding::idle &&
         (keys.isPinged || keys.method.kind != InputMethod::Kind::unobserved || hasRested(keys))) ||
        (finding == ProgramProbe::Finding::busy && !keys.isPinged && mayHaveHandled &&
         markers_.prove(window, keys.markers, keys.probeInterval, threads))) {
        return true;
    }
    keys.nextProbe = now + (keys.isDoubtful ? expiredProbeInterval : keys.probeInterval);
    keys.probeInterval = std::min(2 * keys.probeInterval,
                                  hasAnsweredPing ? maxPingedProbeInterval : maxProbeInterval);
    return false;
}

SteadyTime UnreadKeys::handledTime(const Keys& keys) {
    const bool isUnobserved = keys.method.kind == InputMethod::Kind::unobserved;
    const auto count = static_cast<std::int64_t>(isUnobserved ? keys.characters.size() : 0);
    return keys.typed + count * maxMethodTime;
}

// A program that has run and leaves no event to the server reads on.
void UnreadKeys::handleSwitches(Keys& keys, std::uint64_t switches) const {
    const auto now = std::chrono::steady_clock::now();
    if (std::exchange(keys.switches, switches) != switches) {
        keys.resting = now;
        if (keys.method.kind == InputMethod::Kind::unobserved && !keys.isDoubtful) {
            keys.deadline = std::max(keys.deadline, std::min(now, handledTime(keys)) + timeout_);
        }
    }
}

// The answer to each key wakes the program up.
bool UnreadKeys::hasRested(const Keys& keys) const {
    const auto now = std::chrono::steady_clock::now();
    return now >=
           std::min(keys.resting + rest_, handledTime(keys) + std::max(rest_, maxMethodDelay));
}

void UnreadKeys::finishLook(xcb_window_t window) {
    const auto found = windows_.find(window);
    if (found != windows_.end() && found->second.method.kind == InputMethod::Kind::ibus) {
        found->second.hasLooked = true;
        awaitAnswers(window, found->second);
    } else if (found != windows_.end()) {
        remove(window);
    }
}

// The program sleeps or has answered a ping, and has asked about every key that it has read, or
// about the first of them alone.
void UnreadKeys::awaitAnswers(xcb_window_t window, Keys& keys) {
    keys.probed = std::nullopt;
    answers_.whenAnswered([this, window, number = keys.number] { handleAnswers(window, number); });
}

void UnreadKeys::handleAnswers(xcb_window_t window, std::uint64_t number) {
    const auto found = windows_.find(window);
    if (found == windows_.end() || found->second.number != number) {
        return;
    }
    Keys& keys = found->second;
    if (keys.hasLooked &&
        !questions_.areLeft(window, keys.questions, keys.characters.size(), keys.typed)) {
        questions_.remember(window, keys.questions);
        remove(window);
    } else {
        questions_.note(keys.questions);
        lookAgain(window, keys);
    }
    setDeadline();
    events_.onChange();
}

// The program has got an answer, and may have to handle it. It has answered a ping already where
// nobody has looked yet.
void UnreadKeys::lookAgain(xcb_window_t window, Keys& keys) {
    const auto serial = keys.isKnownToAnswer && keys.hasLooked ? ping_.send(window) : std::nullopt;
    if (serial) {
        keys.serial = *serial;
        keys.nextPing = std::chrono::steady_clock::now() + pingInterval;
    } else {
        startProbing(window, keys, std::chrono::steady_clock::now());
    }
}

void UnreadKeys::expire(xcb_window_t window) {
    Keys& keys = windows_[window];
    // Keys that went to no window are no program's to read.
    if (keys.isDoubtful || keys.characters.empty() || window == XCB_NONE) {
        remove(window);
        return;
    }
    keys.hasExpired = true;
    keys.isDoubtful = true;
    keys.deadline = keys.nextPing = SteadyTime::max();
    const std::size_t lost = std::exchange(keys.characters, {}).size();
    const auto onRead = std::exchange(keys.onRead, {});
    events_.onTimeout(window, lost);
    for (const auto& action : onRead) {
        action();
    }
}

void UnreadKeys::remove(xcb_window_t window) {
    if (window != XCB_NONE) {
        connection_.selectEvents(window, XCB_EVENT_MASK_NO_EVENT, this);
    }
    finish(window);
}

void UnreadKeys::finish(xcb_window_t window) {
    const auto keys = windows_.extract(window);
    for (const auto& onRead : keys.mapped().onRead) {
        onRead();
    }
}

}  // namespace tarvik::linuxdesktop
