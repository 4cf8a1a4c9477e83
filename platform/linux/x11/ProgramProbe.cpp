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

#include "platform/linux/input/SocketBacklog.h"

namespace tarvik::linuxdesktop {

namespace {

using Finding = ProgramProbe::Finding;
using Sight = ProgramProbe::Sight;

constexpr std::chrono::milliseconds fenceTimeout{5};

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

Sight lookOnce(std::int32_t process, const std::string& server) {
    const auto backlog = backlogOf(process, server);
    if (!backlog) {
        return {};
    }
    const std::filesystem::path folder = "/proc/" + std::to_string(process);
    Sight sight{waitsForEvents(folder) && backlog->toServer == 0 ? Finding::idle : Finding::busy};
    std::error_code error;
    for (auto entry = std::filesystem::directory_iterator(folder / "task", error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const Thread thread = readThread(entry->path());
        sight.switches += thread.switches;
        ++sight.threads;
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
ProgramProbe::Sight ProgramProbe::look(std::int32_t process) {
    connection_.synchronise();
    const Sight first = lookOnce(process, server_);
    if (first.finding != Finding::idle) {
        return first;
    }
    if (!fence_.isPassed(fenceTimeout)) {
        return {Finding::busy, first.switches, first.threads};
    }
    Sight second = lookOnce(process, server_);
    if (second.finding == Finding::idle && second.switches != first.switches) {
        second.finding = Finding::busy;
    }
    return second;
}

// The program and the input method may ask each other by the server. Nothing is on its way between
// them where both sleep and the input method has not run meanwhile.
Sight ProgramProbe::look(std::int32_t process, const InputMethod& method, bool isPinged) {
    if (method.process == 0) {
        return look(process);
    }
    const Sight before = look(method.process);
    Sight sight = look(process);
    const Sight after = look(method.process);
    const bool isResting = before.finding == after.finding && after.finding == Finding::idle &&
                           before.switches == after.switches;
    sight.switches += after.switches;
    if (sight.finding == Finding::unknown || before.finding == Finding::unknown || isResting) {
        return sight;
    }
    // A stopped input method has keys left, and one that is only busy may have none. Most programs
    // that answer pings ask IBus without the process that is looked at.
    const bool isBehind = method.kind == InputMethod::Kind::unobserved &&
                          (before.finding == Finding::behind || after.finding == Finding::behind);
    sight.finding = isBehind || !isPinged ? Finding::behind : Finding::busy;
    return sight;
}

}  // namespace tarvik::linuxdesktop
