#include "platform/linux/accessibility/AccessibilityWorker.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "platform/linux/accessibility/TextWrite.h"
#include "platform/linux/accessibility/WriteTicket.h"

namespace tarvik::linuxdesktop {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

constexpr milliseconds patienceOfMainThread{500};
// The worker is done a little earlier, so that its answer still counts.
constexpr milliseconds patienceOfWorker{460};

FileDescriptor makeWakeUp() {
    FileDescriptor wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!wakeUp) {
        // Nobody could ask the worker for anything, and every write would wait in vain.
        std::abort();
    }
    return wakeUp;
}

// Signals are for the main thread.
std::thread startWithoutSignals(std::function<void()> body) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::thread thread(std::move(body));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    pthread_setname_np(thread.native_handle(), "accessibility");
    return thread;
}

}  // namespace

AccessibilityWorker::AccessibilityWorker(platform::Log& log)
    : log_(log), wakeUp_(makeWakeUp()), thread_(startWithoutSignals([this] { run(); })) {}

AccessibilityWorker::~AccessibilityWorker() {
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    eventfd_write(wakeUp_.number(), 1);
    thread_.join();
}

platform::AXError AccessibilityWorker::write(const std::shared_ptr<AtspiElement>& element,
                                             const std::string& text) {
    const auto start = steady_clock::now();
    const auto ticket = std::make_shared<WriteTicket>();
    submit(
        [this, ticket, element, text, deadline = start + patienceOfWorker](AtspiDesktop& desktop) {
            MessageBus* bus = desktop.accessibilityBus();
            if (!bus || !ticket->isAwaited()) {
                ticket->answer(platform::axErrorAPIDisabled);
                return;
            }
            TextWrite write(*bus, *element, text, [this](const std::string& trouble) {
                log_.write("TarvikDictate: accessibility — " + trouble);
            });
            const platform::AXError status = write.run(deadline);
            if (!ticket->answer(status) && status == platform::axErrorSuccess) {
                write.takeBack();
            }
        });
    return ticket->await(start + patienceOfMainThread);
}

void AccessibilityWorker::whenFirstKnown(std::function<void()> handler) {
    submit(
        [handler = std::move(handler)](AtspiDesktop& desktop) { desktop.whenFirstKnown(handler); });
}

void AccessibilityWorker::connect() {
    submit([](AtspiDesktop& desktop) { desktop.connect(); });
}

void AccessibilityWorker::enable() {
    submit([](AtspiDesktop& desktop) { desktop.enable(); });
}

void AccessibilityWorker::scan(platform::ProcessIdentifier process) {
    submit([process](AtspiDesktop& desktop) { desktop.scan(process); });
}

void AccessibilityWorker::submit(Job job) {
    {
        const std::lock_guard lock(mutex_);
        jobs_.push_back(std::move(job));
    }
    eventfd_write(wakeUp_.number(), 1);
}

void AccessibilityWorker::run() {
    AtspiDesktop desktop(log_, state_);
    while (true) {
        runJobs(desktop);
        desktop.dispatch();
        {
            const std::lock_guard lock(mutex_);
            if (isEnding_) {
                return;
            }
        }
        waitForMore(desktop);
    }
}

void AccessibilityWorker::runJobs(AtspiDesktop& desktop) {
    std::vector<Job> jobs;
    {
        const std::lock_guard lock(mutex_);
        jobs.swap(jobs_);
    }
    for (const Job& job : jobs) {
        job(desktop);
    }
}

void AccessibilityWorker::waitForMore(AtspiDesktop& desktop) {
    std::vector<pollfd> waited{{wakeUp_.number(), POLLIN, 0}};
    std::optional<MessageBus::Moment> next;
    for (const MessageBus* bus : desktop.buses()) {
        waited.push_back({bus->fileDescriptor(), bus->events(), 0});
        if (const auto moment = bus->moment()) {
            next = std::min(next.value_or(*moment), *moment);
        }
    }
    int limit = -1;
    if (next) {
        const auto left = std::chrono::ceil<milliseconds>(*next - steady_clock::now());
        limit = static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 60'000));
    }
    poll(waited.data(), waited.size(), limit);
    eventfd_t count = 0;
    eventfd_read(wakeUp_.number(), &count);
}

}  // namespace tarvik::linuxdesktop
