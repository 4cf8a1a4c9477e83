# SPDX-License-Identifier: MIT

"""A private GNOME desktop on Wayland, without a screen."""

import os
import re
import shutil

from bus import Bus
from desktop import Desktop, wait_for
from mock_logind import NAME as LOGIND, PATH as LOGIND_PATH, MockLogind

SHELL = "org.gnome.Shell"
MEDIA_KEYS = "org.gnome.SettingsDaemon.MediaKeys"
MEDIA_KEYS_PROGRAM = "/usr/libexec/gsd-media-keys"
SHELL_TIMEOUT = 60.0
# The shell's own word once it heeds shortcuts.
STARTED = "GNOME Shell started at"


def missing():
    """Why this machine cannot have the desktop; empty where it can."""
    if not shutil.which("gnome-shell"):
        return "gnome-shell is not installed"
    if not os.path.exists(MEDIA_KEYS_PROGRAM):
        return "gnome-settings-daemon is not installed"
    return ""


class GnomeDesktop(Desktop):
    """`window_menu` is what opens the menu of windows, in GNOME's notation. `xwayland` is whether X
    programs can run, and `shows_screen` whether every program may take pictures of the screen."""

    def __init__(self, window_menu="[]", xwayland=False, shows_screen=False, **options):
        super().__init__(**options)
        self._shows_screen = shows_screen
        self._window_menu = window_menu
        self._xwayland = xwayland

    def _make_environment(self):
        super()._make_environment()
        # GNOME's own choice of input methods.
        for name in ("GTK_IM_MODULE", "XMODIFIERS"):
            del self.environment[name]
        self.environment |= {
            "QT_IM_MODULE": "ibus", "XDG_CURRENT_DESKTOP": "GNOME", "XDG_SESSION_TYPE": "wayland",
            "XDG_SESSION_DESKTOP": "gnome", "XDG_SESSION_ID": "c1", "LIBGL_ALWAYS_SOFTWARE": "1",
            # A file that all programs of the desktop share.
            "GSETTINGS_BACKEND": "keyfile",
            "QT_QPA_PLATFORM": "wayland", "GDK_BACKEND": "wayland",
        }

    # The shell needs the session bus, which comes after the server.
    def _start_x_server(self):
        pass

    def _start_session_bus(self):
        super()._start_session_bus()
        logind = MockLogind(self)
        system = Bus(logind.environment["DBUS_SYSTEM_BUS_ADDRESS"])
        mock = "org.freedesktop.DBus.Mock"
        system.call(LOGIND, LOGIND_PATH, mock, "AddSeat", "(s)", "seat0")
        system.call(LOGIND, LOGIND_PATH, mock, "AddSession", "(ssusb)", "c1", "seat0", os.getuid(),
                    "user", True)
        system.close()
        self.set("org.gnome.desktop.wm.keybindings", "activate-window-menu", self._window_menu)
        self.set("org.gnome.desktop.interface", "enable-animations", "false")
        self.set("org.gnome.desktop.interface", "toolkit-accessibility", "true")
        self.set("org.gnome.shell", "welcome-dialog-last-shown-version", "'999'")
        for program in ("pipewire", "wireplumber"):
            self.spawn([program])
        display = "wayland-gnome"
        self.shell = self.spawn(["gnome-shell", "--headless", "--virtual-monitor", self.size,
                                 "--wayland", "--wayland-display", display,
                                 *([] if self._xwayland else ["--no-x11"]),
                                 *(["--unsafe-mode"] if self._shows_screen else [])])
        self.environment["WAYLAND_DISPLAY"] = display
        self.bus = Bus(self.environment["DBUS_SESSION_BUS_ADDRESS"])
        # While the shell starts, it opens its overview. If that is closed too early, the start never ends,
        # and the shell heeds no shortcut.
        wait_for(lambda: STARTED in self.services_log(), "GNOME Shell", SHELL_TIMEOUT, self.shell)
        self.bus.set(SHELL, "/org/gnome/Shell", SHELL, "OverviewActive", "b", False)
        if self._xwayland:
            self._find_x_server()
        self.media_keys = self.spawn([MEDIA_KEYS_PROGRAM])
        wait_for(lambda: self.owns(MEDIA_KEYS), "the media keys", process=self.media_keys)
        wait_for(lambda: "xkb:" in self.run(["ibus", "engine"], check=False), "IBus", SHELL_TIMEOUT)

    def _find_x_server(self):
        """GNOME Shell tells its display to the session's manager, which is not there, and to its log."""
        display = re.search(r"Using public X11 display (:[0-9]+)", self.services_log())
        (authority,) = (self.folder / "runtime").glob(".mutter-Xwaylandauth.*")
        self.environment |= {"DISPLAY": display.group(1), "XAUTHORITY": str(authority)}

    def owns(self, name):
        """Whether somebody owns a name on the session bus."""
        return self.bus.call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                             "org.freedesktop.DBus", "NameHasOwner", "(s)", name)[0]

    def set(self, schema, key, value):
        """Sets a setting of the desktop; `value` is in GNOME's notation."""
        self.run(["gsettings", "set", schema, key, value])

    def get(self, schema, key):
        return self.run(["gsettings", "get", schema, key]).strip()

    def close(self):
        if hasattr(self, "bus"):
            self.bus.close()
        super().close()
