// SPDX-License-Identifier: MIT

#include "platform/linux/audio/ServerSocketWatch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// The path of one entry of PULSE_SERVER. An entry is an optional "{machine}", an optional "unix:"
/// and the path; an entry of another form has no path.
std::optional<std::filesystem::path> pathOfServer(std::string server) {
    if (server.starts_with('{')) {
        const auto end = server.find('}');
        server.erase(0, end == std::string::npos ? server.size() : end + 1);
    }
    if (server.starts_with("unix:")) {
        server.erase(0, std::strlen("unix:"));
    }
    if (!server.starts_with('/')) {
        return std::nullopt;
    }
    return server;
}

}  // namespace

std::optional<std::filesystem::path> ServerSocketWatch::pathFromEnvironment() {
    if (const std::string servers = environment("PULSE_SERVER"); !servers.empty()) {
        std::istringstream entries(servers);
        for (std::string entry; entries >> entry;) {
            if (auto path = pathOfServer(entry)) {
                return path;
            }
        }
        return std::nullopt;
    }
    if (const std::string runtime = environment("PULSE_RUNTIME_PATH"); !runtime.empty()) {
        return std::filesystem::path(runtime) / "native";
    }
    if (const std::string runtime = environment("XDG_RUNTIME_DIR"); !runtime.empty()) {
        return std::filesystem::path(runtime) / "pulse" / "native";
    }
    return std::nullopt;
}

ServerSocketWatch::ServerSocketWatch(pa_mainloop_api* api, std::filesystem::path socket,
                                     std::function<void()> onAppear)
    : api_(api),
      socket_(std::move(socket)),
      onAppear_(std::move(onAppear)),
      inotify_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (inotify_) {
        watchDirectories();
        event_ = api_->io_new(api_, inotify_.number(), PA_IO_EVENT_INPUT,
                              &ServerSocketWatch::readable, this);
    }
}

ServerSocketWatch::~ServerSocketWatch() {
    if (event_ != nullptr) {
        api_->io_free(event_);
    }
}

void ServerSocketWatch::watchDirectories() {
    // A server that ends removes its socket's directory, and the next server makes the directory
    // again. The parent's watch reports the new directory, which is then watched in its turn.
    for (const auto& directory : {socket_.parent_path(), socket_.parent_path().parent_path()}) {
        inotify_add_watch(inotify_.number(), directory.c_str(),
                          IN_CREATE | IN_MOVED_TO | IN_ONLYDIR);
    }
}

bool ServerSocketWatch::readEvents() {
    bool hasAppeared = false;
    alignas(inotify_event) std::array<char, 4096> buffer{};
    for (;;) {
        const ssize_t length = read(inotify_.number(), buffer.data(), buffer.size());
        if (length <= 0) {
            return hasAppeared;
        }
        for (std::size_t offset = 0; offset < static_cast<std::size_t>(length);) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + offset, sizeof event);
            const char* name = buffer.data() + offset + sizeof event;
            if (event.len > 0) {
                hasAppeared = hasAppeared || name == socket_.filename() ||
                              name == socket_.parent_path().filename();
            }
            offset += sizeof event + event.len;
        }
    }
}

void ServerSocketWatch::readable(pa_mainloop_api*, pa_io_event*, int, pa_io_event_flags_t,
                                 void* self) {
    auto& watch = *static_cast<ServerSocketWatch*>(self);
    if (watch.readEvents()) {
        watch.watchDirectories();
        watch.onAppear_();
    }
}

}  // namespace tarvik::linuxdesktop
