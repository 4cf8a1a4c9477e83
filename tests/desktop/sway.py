# SPDX-License-Identifier: MIT

"""Private Wayland desktops: Sway without a screen, and its X server for X programs; labwc."""

import os
import pwd
import sys

from desktop import Desktop, wait_for

CONFIG = """
xwayland {xwayland}
seat seat0 fallback true
focus_on_window_activation focus
exec {tell}
"""
# Bindings of the user's own.
BINDINGS = """
bindsym --no-repeat Mod1+space exec {dictate} press
bindsym --release Mod1+space exec {dictate} release
"""
LABWC_CONFIG = """<?xml version="1.0"?>
<labwc_config>
  <keyboard>
    <keybind key="A-space" onRelease="yes">
      <action name="Execute" command="{dictate} toggle"/>
    </keybind>
  </keyboard>
</labwc_config>
"""
DICTATE = """#!/bin/sh
exec gdbus call --address unix:path={bus} --dest com.tarvik.dictate \\
    --object-path /com/tarvik/dictate \\
    --method org.freedesktop.Application.ActivateAction "$1" [] {{}}
"""
# What a compositor runs when it is ready.
TELL = """printf '%s\\n' "$DISPLAY" "$WAYLAND_DISPLAY" "$SWAYSOCK" > {names}.new && mv {names}.new {names}"""
HEADLESS = {"WLR_BACKENDS": "headless", "WLR_LIBINPUT_NO_DEVICES": "1", "WLR_RENDERER": "pixman"}


def drop_rights():
    """Goes on as a user without rights, since compositors refuse to serve root."""
    if os.geteuid() == 0:
        nobody = pwd.getpwnam("nobody")
        os.setgroups([])
        os.setgid(nobody.pw_gid)
        os.setuid(nobody.pw_uid)


def become_ordinary_user():
    """Starts this script again as a user without rights."""
    if os.geteuid() == 0:
        drop_rights()
        os.execv(sys.executable, [sys.executable, "-B", *sys.argv])


class SwayDesktop(Desktop):
    """`tells` is whether programs are told where to reach Sway itself, as those that Sway starts are. If
    they are not, bindings of the user's own call the application.
    `xwayland` is a value of Sway's command of the same name."""

    def __init__(self, tells=True, xwayland="disable", **options):
        super().__init__(**options)
        self.tells = tells
        self.xwayland = xwayland

    def _start_x_server(self):
        self.environment |= self.start_sway("sway")[1]

    def start_sway(self, name):
        """Starts Sway with its configuration in a file of that name; returns its process and the
        variables of its programs."""
        config = self.folder / f"{name}.conf"
        names = self.folder / f"{name}.displays"
        bindings = "" if self.tells else BINDINGS.format(dictate=self._make_dictate_script())
        config.write_text(
            CONFIG.format(tell=TELL.format(names=names), xwayland=self.xwayland) + bindings)
        compositor, variables, socket = self._start_compositor(["sway", "-c", str(config)], names)
        if self.tells:
            variables |= {"SWAYSOCK": socket, "TARVIK_SWAY_CONFIG": str(config)}
        return compositor, variables

    def _make_dictate_script(self):
        """Makes the program `dictate`, which calls an action of the application."""
        self.dictate = self.folder / "dictate"
        self.dictate.write_text(DICTATE.format(bus=self.folder / "runtime" / "bus"))
        self.dictate.chmod(0o755)
        return self.dictate

    def _start_compositor(self, command, names):
        """Starts a compositor that writes its displays into the file `names`; returns its process, the
        variables of its programs, and the path of its own socket, which is empty without one."""
        # A test before may have started one of the same name.
        names.unlink(missing_ok=True)
        compositor = self.spawn(command, env=self.environment | HEADLESS)
        wait_for(names.exists, command[0], process=compositor)
        display, wayland_display, socket = names.read_text().splitlines()
        variables = {"WAYLAND_DISPLAY": wayland_display, "XDG_SESSION_TYPE": "wayland",
                     "XDG_CURRENT_DESKTOP": command[0]}
        if display:
            variables["DISPLAY"] = display
        return compositor, variables, socket


class LabwcDesktop(SwayDesktop):
    """labwc, a compositor with the protocols of wlroots and without a socket of its own."""

    def _start_x_server(self):
        names = self.folder / "displays"
        tell = self.folder / "tell"
        tell.write_text("#!/bin/sh\n" + TELL.format(names=names) + "\n")
        tell.chmod(0o755)
        config = self.folder / "config" / "labwc" / "rc.xml"
        config.parent.mkdir()
        config.write_text(LABWC_CONFIG.format(dictate=self._make_dictate_script()))
        self.environment |= self._start_compositor(["labwc", "-s", str(tell)], names)[1]
