// SPDX-License-Identifier: MIT

#include "tests/linux/x11/ForkedWindow.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::tests {

namespace {

[[noreturn]] void showWindow(int output) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const auto connection = linuxdesktop::XcbConnection::open().value();
    const xcb_window_t window = xcb_generate_id(connection->get());
    xcb_create_window(connection->get(), XCB_COPY_FROM_PARENT, window, connection->root(), 0, 0,
                      100, 100, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_map_window(connection->get(), window);
    connection->synchronise();
    if (write(output, &window, sizeof window) == sizeof window) {
        pause();
    }
    _exit(1);
}

}  // namespace

ForkedWindow::ForkedWindow() {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0 || (process_ = fork()) < 0) {
        throw std::runtime_error("no process for a window");
    }
    if (process_ == 0) {
        showWindow(ends[1]);
    }
    close(ends[1]);
    const auto length = read(ends[0], &window_, sizeof window_);
    close(ends[0]);
    if (length != sizeof window_) {
        throw std::runtime_error("no window of another process");
    }
}

ForkedWindow::~ForkedWindow() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}

}  // namespace tarvik::tests
