// SPDX-License-Identifier: MIT

#include "platform/linux/x11/ProgramProbe.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/linux/input/SocketBacklog.h"

namespace tarvik::linuxdesktop {

namespace {

using Finding = ProgramProbe::Finding;

constexpr std::chrono::milliseconds fenceTimeout{5};

// What one look at a program tells.
struct Sight {
    Finding finding = Finding::unknown;
    // How often the threads have given up the processor, all in all.
    std::uint64_t switches = 0;
};

struct Thread {
    char state = '?';
    std::uint64_t switches = 0;
};

Thread readThread(const std::filesystem::path& folder) {
    constexpr std::string_view stateLabel = "State:";
    constexpr std::string_view switchesLabel = "voluntary_ctxt_switches:";
    Thread thread;
    std::ifstream status(folder / "status");
    for (std::string label; status >> label;) {
        if (label == stateLabel) {
            status >> thread.state;
        } else if (label.ends_with(switchesLabel)) {
            std::uint64_t count = 0;
            status >> count;
            thread.switches += count;
        }
        status.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    }
    return thread;
}

// An event loop sleeps in one of these functions of the kernel. A main thread that sleeps
// elsewhere, for a time or for another process, is in the middle of handling something.
bool waitsForEvents(const std::filesystem::path& process) {
    constexpr std::array<std::string_view, 4> waits{"poll", "select", "ep_", "futex"};
    std::ifstream file(process / "wchan");
    std::string function;
    file >> function;
    return std::ranges::any_of(
        waits, [&](std::string_view wait) { return function.find(wait) != std::string::npos; });
}

std::filesystem::path folderOf(std::int32_t process) {
    return "/proc/" + std::to_string(process);
}

std::vector<Thread> threadsOf(std::int32_t process) {
    std::vector<Thread> threads;
    std::error_code error;
    for (auto entry = std::filesystem::directory_iterator(folderOf(process) / "task", error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        threads.push_back(readThread(entry->path()));
    }
    return threads;
}

Sight look(std::int32_t process, const std::string& server) {
    const auto backlog = backlogOf(process, server);
    if (!backlog) {
        return {};
    }
    const bool isWaiting = waitsForEvents(folderOf(process)) && backlog->toServer == 0;
    Sight sight{isWaiting ? Finding::idle : Finding::busy};
    for (const Thread& thread : threadsOf(process)) {
        sight.switches += thread.switches;
        if (thread.state == 'T' || thread.state == 't') {
            sight.finding = Finding::behind;
        } else if (thread.state != 'S' && sight.finding == Finding::idle) {
            sight.finding = Finding::busy;
        }
    }
    if (backlog->toProgram != 0) {
        sight.finding = Finding::behind;
    }
    return sight;
}

}  // namespace

ProgramProbe::ProgramProbe(XcbConnection& connection)
    : connection_(connection), server_(addressOfServer(connection.descriptor())) {}

// A program also sleeps while it waits for an answer of the server, in the middle of handling a
// key. The server may have read the program's requests, and serve other clients before it handles
// them. Once the fence is passed, such a program has its answer and wakes up.
ProgramProbe::Finding ProgramProbe::find(std::int32_t process) {
    connection_.synchronise();
    const Sight first = look(process, server_);
    if (first.finding != Finding::idle) {
        return first.finding;
    }
    if (!fence_.isPassed(fenceTimeout)) {
        return Finding::busy;
    }
    const Sight second = look(process, server_);
    const bool hasSlept = second.finding != Finding::idle || second.switches == first.switches;
    return hasSlept ? second.finding : Finding::busy;
}

std::uint64_t ProgramProbe::switchesOf(std::int32_t process) {
    std::uint64_t switches = 0;
    for (const Thread& thread : threadsOf(process)) {
        switches += thread.switches;
    }
    return switches;
}

}  // namespace tarvik::linuxdesktop
