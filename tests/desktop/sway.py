# SPDX-License-Identifier: MIT

"""A private Wayland desktop: Sway without a screen, and its X server for X programs."""

import os
import pwd
import sys

from desktop import Desktop, wait_for

CONFIG = """
xwayland {xwayland}
seat seat0 fallback true
focus_on_window_activation focus
exec printf '%s\\n' "$DISPLAY" "$WAYLAND_DISPLAY" "$SWAYSOCK" > {names}.new && mv {names}.new {names}
"""


def become_ordinary_user():
    """Starts this script again as a user without rights, since Sway refuses to serve root."""
    if os.geteuid() == 0:
        nobody = pwd.getpwnam("nobody")
        os.setgroups([])
        os.setgid(nobody.pw_gid)
        os.setuid(nobody.pw_uid)
        os.execv(sys.executable, [sys.executable, "-B", *sys.argv])


class SwayDesktop(Desktop):
    """`tells` is whether programs are told where to reach Sway itself, as those that Sway starts are.
    `xwayland` is a value of Sway's command of the same name."""

    def __init__(self, tells=True, xwayland="disable", **options):
        super().__init__(**options)
        self.tells = tells
        self.xwayland = xwayland

    def _start_x_server(self):
        self.config = self.folder / "sway.conf"
        names = self.folder / "displays"
        self.config.write_text(CONFIG.format(names=names, xwayland=self.xwayland))
        sway = self.spawn(
            ["sway", "-c", str(self.config)],
            env=self.environment | {"WLR_BACKENDS": "headless", "WLR_LIBINPUT_NO_DEVICES": "1",
                                    "WLR_RENDERER": "pixman"})
        wait_for(names.exists, "Sway", process=sway)
        display, wayland_display, socket = names.read_text().splitlines()
        self.environment |= {"WAYLAND_DISPLAY": wayland_display, "XDG_SESSION_TYPE": "wayland",
                             "XDG_CURRENT_DESKTOP": "sway"}
        if display:
            self.environment["DISPLAY"] = display
        if self.tells:
            self.environment |= {"SWAYSOCK": socket, "TARVIK_SWAY_CONFIG": str(self.config)}
