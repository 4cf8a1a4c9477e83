# SPDX-License-Identifier: MIT

"""A private system bus with a mock of logind, which announces sleep and wake."""

from bus import Bus, boolean
from desktop import accepts_connections, wait_for

NAME, PATH, INTERFACE = ("org.freedesktop.login1", "/org/freedesktop/login1",
                         "org.freedesktop.login1.Manager")
CONFIG = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


class MockLogind:
    """Runs until the desktop ends. Processes with `environment` use its bus."""

    def __init__(self, desktop):
        socket = desktop.folder / "runtime" / "system-bus"
        config = desktop.folder / "system-bus.conf"
        config.write_text(CONFIG.format(socket=socket))
        bus = desktop.spawn(["dbus-daemon", f"--config-file={config}", "--nofork", "--nopidfile"])
        wait_for(lambda: accepts_connections(socket), "the system bus", process=bus)
        self.environment = {"DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={socket}"}
        desktop.spawn(["/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind"],
                      env=desktop.environment | self.environment)
        self._bus = Bus(self.environment["DBUS_SYSTEM_BUS_ADDRESS"])
        wait_for(lambda: self._bus.call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                        "org.freedesktop.DBus", "NameHasOwner", "(s)", NAME)[0],
                 "the sleep service")

    def _announce(self, is_going_to_sleep):
        self._bus.call(NAME, PATH, "org.freedesktop.DBus.Mock", "EmitSignal", "(sssav)", INTERFACE,
                       "PrepareForSleep", "b", [boolean(is_going_to_sleep)])

    def sleep_and_wake(self):
        """Announces that the machine goes to sleep, and then that it has woken."""
        self._announce(True)
        self._announce(False)

    def close(self):
        self._bus.close()
