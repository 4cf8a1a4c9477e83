// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include "platform/linux/x11/InputMethods.h"
#include "platform/linux/x11/ServerFence.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Tells from outside how far a program of this machine is with the server's events, for programs
/// that answer no pings. Input thread only.
class ProgramProbe {
  public:
    enum class Finding {
        /// The program is not one of this machine and this user, or the system does not tell.
        unknown,
        /// Events wait for the program, or the program is stopped.
        behind,
        /// No event waits. The program may still be handling those that it has read.
        busy,
        /// The program has handled every event that the server had for it, and waits for more.
        idle,
    };

    struct Sight {
        Finding finding = Finding::unknown;
        /// How often the threads of the program have given up the processor, all in all. A program
        /// that sleeps all along keeps the number.
        std::uint64_t switches = 0;
        int threads = 0;
    };

    explicit ProgramProbe(XcbConnection& connection);

    /// Waits for the server, for a few milliseconds at the most where the server is busy with other
    /// clients. Never waits for the program.
    Sight look(std::int32_t process);
    /// The same for a program that may ask an input method about its keys. `isPinged` is whether
    /// its windows announce answers to pings.
    Sight look(std::int32_t process, const InputMethod& method, bool isPinged);

  private:
    XcbConnection& connection_;
    ServerFence fence_;
    const std::string server_;
};

}  // namespace tarvik::linuxdesktop
