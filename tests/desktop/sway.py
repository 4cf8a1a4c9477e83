# SPDX-License-Identifier: MIT

"""A private Wayland desktop: Sway without a screen, and its X server for X programs."""

import os
import pwd
import sys

from desktop import Desktop, wait_for

CONFIG = """
xwayland force
seat seat0 fallback true
exec printf '%s\\n' "$DISPLAY" "$WAYLAND_DISPLAY" > {names}.new && mv {names}.new {names}
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
    def _start_x_server(self):
        config = self.folder / "sway.conf"
        names = self.folder / "displays"
        config.write_text(CONFIG.format(names=names))
        sway = self.spawn(
            ["sway", "-c", str(config)],
            env=self.environment | {"WLR_BACKENDS": "headless", "WLR_LIBINPUT_NO_DEVICES": "1",
                                    "WLR_RENDERER": "pixman"})
        wait_for(names.exists, "Sway", process=sway)
        display, wayland_display = names.read_text().splitlines()
        self.environment |= {"DISPLAY": display, "WAYLAND_DISPLAY": wayland_display,
                             "XDG_SESSION_TYPE": "wayland"}
