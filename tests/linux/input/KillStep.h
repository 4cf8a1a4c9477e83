// SPDX-License-Identifier: MIT
#pragma once

namespace tarvik::tests {

/// Which steps of the process count.
enum class Steps {
    /// A file takes its place, or is removed.
    files,
    /// The same, and a message goes to a socket.
    filesAndMessages
};

/// Has the process killed before step `number`, from 1 on. With 0 the process lives.
void killBeforeStep(int number, Steps steps);

}  // namespace tarvik::tests
