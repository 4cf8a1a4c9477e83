// SPDX-License-Identifier: MIT

#include "platform/linux/x11/FrontWindow.h"

#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <span>
#include <string>
#include <vector>

namespace tarvik::linuxdesktop {

namespace {

constexpr std::size_t maxHistory = 64;

std::string hostName() {
    std::array<char, HOST_NAME_MAX + 1> name{};
    gethostname(name.data(), name.size() - 1);
    return name.data();
}

}  // namespace

FrontWindow::FrontWindow(XcbConnection& connection, std::atomic<Known>& front, XProgramHost* host)
    : connection_(connection),
      activeWindow_(connection.atom("_NET_ACTIVE_WINDOW")),
      currentWorkspace_(connection.atom("_NET_CURRENT_DESKTOP")),
      windowWorkspace_(connection.atom("_NET_WM_DESKTOP")),
      clientList_(connection.atom("_NET_CLIENT_LIST_STACKING")),
      managerCheck_(connection.atom("_NET_SUPPORTING_WM_CHECK")),
      windowProcess_(connection.atom("_NET_WM_PID")),
      clientMachine_(connection.atom("WM_CLIENT_MACHINE")),
      front_(front),
      host_(host) {}

FrontWindow::~FrontWindow() {
    for (const xcb_window_t window : borrowers_) {
        host_->giveKeyboardBack(window);
    }
    front_ = Known();
}

bool FrontWindow::handleProperty(const xcb_property_notify_event_t& event) {
    if (event.atom != activeWindow_ && event.atom != managerCheck_) {
        return false;
    }
    if (event.atom == activeWindow_) {
        activeSince_ = event.time;
    }
    refresh();
    return true;
}

void FrontWindow::refreshUnannounced() {
    if (!hasManager()) {
        refresh();
    }
}

void FrontWindow::remember(xcb_window_t window) {
    const auto process = window == XCB_NONE ? std::nullopt : processOf(window);
    if (!process) {
        front_ = Known();
        return;
    }
    front_ = Known{window, *process};
    std::erase_if(history_, [&](const Known& known) { return known.window == window; });
    history_.push_front({window, *process});
    if (history_.size() > maxHistory) {
        history_.pop_back();
    }
}

// The root window's properties outlive a window manager that has crashed; its own window does not.
bool FrontWindow::hasManager() {
    const auto check =
        connection_.firstOfProperty(connection_.root(), managerCheck_, XCB_ATOM_WINDOW);
    return check && connection_.firstOfProperty(*check, managerCheck_, XCB_ATOM_WINDOW) == check;
}

std::optional<FrontWindow::Focus> FrontWindow::focus() {
    const XcbReply<xcb_get_input_focus_reply_t> reply(xcb_get_input_focus_reply(
        connection_.get(), xcb_get_input_focus(connection_.get()), nullptr));
    return reply ? std::optional(Focus{reply->focus, reply->revert_to}) : std::nullopt;
}

xcb_window_t FrontWindow::focusedWindow() {
    const auto focused = focus();
    return !focused || focused->window == XCB_INPUT_FOCUS_POINTER_ROOT ? XCB_NONE : focused->window;
}

xcb_window_t FrontWindow::parentOf(xcb_window_t window) {
    const XcbReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(
        connection_.get(), xcb_query_tree(connection_.get(), window), nullptr));
    return tree ? tree->parent : xcb_window_t{XCB_NONE};
}

xcb_window_t FrontWindow::topLevelOf(xcb_window_t window) {
    while (window != XCB_NONE && window != connection_.root()) {
        const xcb_window_t parent = parentOf(window);
        if (parent == connection_.root()) {
            return window;
        }
        window = parent;
    }
    return XCB_NONE;
}

// Some programs have the focus on a window that stands alone.
bool FrontWindow::isInAnotherWindow(xcb_window_t focused, xcb_window_t window) {
    if (focused == window) {
        return false;
    }
    const std::vector<xcb_window_t> windows = this->windows();
    for (; focused != XCB_NONE && focused != window; focused = parentOf(focused)) {
        if (std::ranges::find(windows, focused) != windows.end()) {
            return true;
        }
    }
    return false;
}

xcb_window_t FrontWindow::window() {
    if (!hasManager()) {
        return topLevelOf(focusedWindow());
    }
    const xcb_window_t active =
        connection_.firstOfProperty(connection_.root(), activeWindow_, XCB_ATOM_WINDOW)
            .value_or(XCB_NONE);
    return isPlaceholder(active) ? xcb_window_t{XCB_NONE} : active;
}

// A compositor may give the focus to a window of its own while a program of Wayland has the keys.
bool FrontWindow::isPlaceholder(xcb_window_t window) {
    const auto manager =
        connection_.firstOfProperty(connection_.root(), managerCheck_, XCB_ATOM_WINDOW);
    return manager && connection_.sameClient(window, *manager) && !isViewable(window);
}

// A program that runs in a process namespace of its own, or on another machine, announces a number
// that means another process here. The server knows the number of the process that is connected.
std::optional<platform::ProcessIdentifier> FrontWindow::processOf(xcb_window_t window) {
    auto process = connection_.processOfClient(window);
    if (!process && connection_.textOfProperty(window, clientMachine_) == hostName()) {
        process = connection_.firstOfProperty(window, windowProcess_, XCB_ATOM_CARDINAL);
    }
    return process > 0 ? process : std::nullopt;
}

// The focus is often on a window inside the one that names the process, made by the same client. An
// embedded window may belong to another process, which would then get the keys. A window manager
// moves the focus before it says which window is in front.
xcb_window_t FrontWindow::focusIn(platform::ProcessIdentifier process, xcb_window_t window) {
    const xcb_window_t front = this->window();
    const xcb_window_t focused = focusedWindow();
    if (front == XCB_NONE || focused == XCB_NONE || processOf(front) != process ||
        (window != XCB_NONE && (front != window || isInAnotherWindow(focused, window)))) {
        return XCB_NONE;
    }
    const bool isOfProcess =
        connection_.sameClient(front, focused) || processOf(focused) == process;
    return isOfProcess ? focused : xcb_window_t{XCB_NONE};
}

bool FrontWindow::isViewable(xcb_window_t window) {
    const XcbReply<xcb_get_window_attributes_reply_t> reply(xcb_get_window_attributes_reply(
        connection_.get(), xcb_get_window_attributes(connection_.get(), window), nullptr));
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE &&
           reply->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT && reply->override_redirect == 0;
}

std::vector<xcb_window_t> FrontWindow::windows() {
    if (hasManager()) {
        return connection_.property(connection_.root(), clientList_, XCB_ATOM_WINDOW);
    }
    std::vector<xcb_window_t> windows;
    const XcbReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(
        connection_.get(), xcb_query_tree(connection_.get(), connection_.root()), nullptr));
    if (tree) {
        const std::span children(xcb_query_tree_children(tree.get()), tree->children_len);
        std::ranges::copy_if(children, std::back_inserter(windows),
                             [this](xcb_window_t child) { return isViewable(child); });
    }
    return windows;
}

xcb_window_t FrontWindow::windowOf(platform::ProcessIdentifier process, xcb_window_t wanted) {
    const std::vector<xcb_window_t> windows = this->windows();
    if (std::ranges::find(windows, wanted) != windows.end() && processOf(wanted) == process) {
        return wanted;
    }
    // The number of a window that is gone may be that of another program's window by now.
    for (const Known& known : history_) {
        if (known.process == process && std::ranges::find(windows, known.window) != windows.end() &&
            processOf(known.window) == process) {
            return known.window;
        }
    }
    const auto topmost =
        std::find_if(windows.rbegin(), windows.rend(),
                     [&](xcb_window_t candidate) { return processOf(candidate) == process; });
    return topmost == windows.rend() ? xcb_window_t{XCB_NONE} : *topmost;
}

bool FrontWindow::canBeGivenFocus(xcb_window_t window) {
    if (host_ != nullptr) {
        return false;
    }
    // ICCCM 4.1.2.4: the flag that the hint is there, and the hint.
    constexpr std::uint32_t hasInputHint = 1;
    const auto hints = connection_.property(window, XCB_ATOM_WM_HINTS, XCB_ATOM_WM_HINTS);
    const bool isAsked = hints.size() > 1 && (hints[0] & hasInputHint) != 0 && hints[1] == 0;
    return !isAsked && isViewable(window);
}

// The server ignores a request with an earlier time than that of the last change. A window manager
// sets the focus with the time at which the user asked for a window, which may be before this. So
// the change gets the earliest time that the server may accept.
bool FrontWindow::setFocus(const Focus& focus) {
    const auto set = [&](xcb_timestamp_t time) {
        xcb_set_input_focus(connection_.get(), focus.revertTo, focus.window, time);
        const auto now = this->focus();
        return now && now->window == focus.window;
    };
    return set(activeSince_) || set(XCB_CURRENT_TIME);
}

void FrontWindow::activate(xcb_window_t window) {
    if (host_ != nullptr) {
        borrowers_.insert(window);
        host_->lendKeyboard(window);
        return;
    }
    if (!hasManager()) {
        setFocus({window});
        return;
    }
    showWorkspaceOf(window);
    // Pagers act for the user. Window managers refuse requests of others, to keep the focus.
    constexpr std::uint32_t fromPager = 2;
    request(window, activeWindow_, fromPager, XCB_CURRENT_TIME);
}

bool FrontWindow::endLoan(xcb_window_t window) {
    if (borrowers_.erase(window) == 0) {
        return false;
    }
    host_->giveKeyboardBack(window);
    return true;
}

// Some window managers ignore the request for a window on another workspace. Which workspace is
// shown when the window manager gets to the request, nobody knows yet.
void FrontWindow::showWorkspaceOf(xcb_window_t window) {
    constexpr std::uint32_t everyWorkspace = 0xFFFFFFFF;
    const auto workspace = connection_.firstOfProperty(window, windowWorkspace_, XCB_ATOM_CARDINAL);
    if (workspace && *workspace != everyWorkspace) {
        request(connection_.root(), currentWorkspace_, *workspace, XCB_CURRENT_TIME);
    }
}

void FrontWindow::request(xcb_window_t window, xcb_atom_t type, std::uint32_t first,
                          std::uint32_t second) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = type;
    message.data.data32[0] = first;
    message.data.data32[1] = second;
    xcb_send_event(connection_.get(), 0, connection_.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
}

}  // namespace tarvik::linuxdesktop
