// SPDX-License-Identifier: MIT

#include "platform/linux/system/CoreDumps.h"

#include <sys/resource.h>

namespace tarvik::linuxdesktop {

// PR_SET_DUMPABLE would hide the process from its own user in /proc. Portals look there for the
// program that asks them.
void preventCoreDumps() {
    rlimit limit{};
    if (getrlimit(RLIMIT_CORE, &limit) == 0) {
        limit.rlim_cur = 0;
        setrlimit(RLIMIT_CORE, &limit);
    }
}

}  // namespace tarvik::linuxdesktop
