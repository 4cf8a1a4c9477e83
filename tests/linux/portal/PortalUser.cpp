// SPDX-License-Identifier: MIT

#include "tests/linux/portal/PortalUser.h"

#include <cstdlib>

#include "platform/EventManager.h"

namespace tarvik::tests {

namespace {

// The bus starts no program of the machine.
constexpr const char* busConfiguration = R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:tmpdir=/tmp</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

std::string writtenConfiguration(const std::filesystem::path& folder) {
    putFile(folder / "bus.conf", busConfiguration);
    return "--config-file=" + (folder / "bus.conf").string();
}

}  // namespace

PortalUser::PortalUser()
    : bus_({"dbus-daemon", writtenConfiguration(folder_.path()), "--nofork", "--nopidfile",
            "--print-address=1"}) {
    setenv("DBUS_SESSION_BUS_ADDRESS", bus_.readLine().value_or("").c_str(), 1);
    setenv("WAYLAND_DISPLAY", "/nowhere", 1);
    setenv("XDG_DATA_HOME", data().c_str(), 1);
    setenv("XDG_DATA_DIRS", (folder_ / "system").c_str(), 1);
    portal_.emplace();
}

PortalUser::~PortalUser() {
    // Its thread reads the environment.
    portal_.reset();
    for (const char* name :
         {"DBUS_SESSION_BUS_ADDRESS", "WAYLAND_DISPLAY", "XDG_DATA_HOME", "XDG_DATA_DIRS"}) {
        unsetenv(name);
    }
}

std::string PortalUser::nameOf(std::uint32_t modifiers) {
    return (modifiers & platform::shiftKeyMask) != 0 ? "alt-shift-space" : "alt-space";
}

void PortalUser::press(std::uint32_t key) {
    down_.insert(key);
    if (key == spaceKey && down_.contains(altKey) && portal_) {
        active_ = down_.contains(shiftKey) ? "alt-shift-space" : "alt-space";
        portal_->activate(active_);
    }
}

void PortalUser::release(std::uint32_t key) {
    down_.erase(key);
    if (!active_.empty() && portal_) {
        portal_->deactivate(active_);
    }
    active_.clear();
}

}  // namespace tarvik::tests
