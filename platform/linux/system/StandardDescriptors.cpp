// SPDX-License-Identifier: MIT

#include "platform/linux/system/StandardDescriptors.h"

#include <fcntl.h>
#include <unistd.h>

namespace tarvik::linuxdesktop {

void openStandardDescriptors() {
    // The system gives out the lowest free number. Started programs inherit the standard streams,
    // so the flag O_CLOEXEC is missing on purpose.
    int descriptor = open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) {
        descriptor = open("/dev/null", O_RDWR);
    }
    if (descriptor >= 0) {
        close(descriptor);
    }
}

}  // namespace tarvik::linuxdesktop
