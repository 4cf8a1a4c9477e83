// SPDX-License-Identifier: MIT

#include "platform/linux/system/SystemLog.h"

#include <syslog.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>

namespace tarvik::linuxdesktop {

namespace {

constexpr int maxBacklog = 10000;
constexpr Seconds shutdownTimeout(1);

std::string harmless(std::string_view line) {
    std::string clean(line);
    std::replace_if(
        clean.begin(), clean.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }, ' ');
    return clean;
}

// The whole line goes out in one call, so that no other writer to the same terminal comes between.
void writeToStandardError(std::string line) {
    line += '\n';
    std::string_view rest = line;
    while (!rest.empty()) {
        const ssize_t written = ::write(STDERR_FILENO, rest.data(), rest.size());
        if (written < 0 && errno != EINTR) {
            // Standard error is closed or its reader is gone. The system log still gets the line.
            return;
        }
        rest.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
}

void deliver(const std::string& line) {
    writeToStandardError(line);
    syslog(LOG_INFO, "%s", line.c_str());
}

// The number of lines that are still to be written; a signal handler reaches static data only.
std::atomic<const std::atomic<int>*> unwritten = nullptr;

// The last line often holds the reason of an abort. Calls only functions that are safe in a signal
// handler.
void waitForLines(int) {
    constexpr timespec interval{0, 5'000'000};
    constexpr int maxIntervals = 200;
    for (int count = 0; count < maxIntervals; ++count) {
        const std::atomic<int>* lines = unwritten;
        if (lines == nullptr || *lines == 0) {
            return;
        }
        nanosleep(&interval, nullptr);
    }
}

}  // namespace

struct SystemLog::Backlog {
    std::atomic<int> lines = 0;
    std::atomic<int> dropped = 0;
};

SystemLog::SystemLog()
    : backlog_(std::make_shared<Backlog>()), worker_("tarvik-log", shutdownTimeout) {
    openlog("tarvik-dictate", LOG_PID, LOG_USER);
    unwritten = &backlog_->lines;
    std::signal(SIGABRT, waitForLines);
    if (const auto& error = worker_.error()) {
        write("TarvikDictate: no thread for the log, which is written at once: " +
              error->localizedDescription);
    }
}

SystemLog::~SystemLog() {
    unwritten = nullptr;
}

void SystemLog::write(std::string_view line) {
    if (backlog_->lines.fetch_add(1) >= maxBacklog) {
        backlog_->lines.fetch_sub(1);
        backlog_->dropped.fetch_add(1);
        return;
    }
    worker_.async([backlog = backlog_, line = harmless(line)] {
        deliver(line);
        backlog->lines.fetch_sub(1);
        if (const int dropped = backlog->dropped.exchange(0)) {
            deliver("TarvikDictate: " + std::to_string(dropped) +
                    " log lines were dropped because nobody took them");
        }
    });
}

}  // namespace tarvik::linuxdesktop
