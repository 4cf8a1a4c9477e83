# SPDX-License-Identifier: MIT

"""A private Wayland desktop: KWin without a screen."""

import pathlib
import shutil

from desktop import Desktop, wait_for

# KWin finds no desktop files without a menu. KWin 5 looks for the first name, KWin 6 for the second.
MENUS = ("kf5-applications.menu", "applications.menu")
MENU = """<!DOCTYPE Menu PUBLIC "-//freedesktop//DTD Menu 1.0//EN"
 "http://www.freedesktop.org/standards/menu-spec/1.0/menu.dtd">
<Menu>
  <Name>Applications</Name>
  <DefaultAppDirs/>
  <DefaultDirectoryDirs/>
  <Include><All/></Include>
</Menu>
"""

# KWin runs it when its X server is ready.
TELL = """#!/bin/sh
printf '%s\\n' "$DISPLAY" "$XAUTHORITY" > {displays}.new && mv {displays}.new {displays}
"""

# What a test of KWin returns where there is no KWin, for CTest's SKIP_RETURN_CODE.
SKIPPED = 77


def kwin_version():
    """The first number of KWin's version; None where KWin is not installed."""
    if shutil.which("kwin_wayland") is None:
        return None
    # The installed program has a file capability, and tells nothing where that is not allowed.
    return 6 if list(pathlib.Path("/usr/lib").glob("*/libkwin.so.6*")) else 5


class KWinDesktop(Desktop):
    """With `trusts_all`, KWin shows its windows to every program and takes keys from every program.
    Otherwise it asks the programs' desktop files. `xwayland` is whether X programs can run."""

    def __init__(self, trusts_all=True, xwayland=False, **options):
        super().__init__(x11=False, **options)
        self.trusts_all = trusts_all
        self.xwayland = xwayland

    # KWin needs the bus.
    def _start_session_bus(self):
        super()._start_session_bus()
        menus = self.folder / "system" / "menus"
        menus.mkdir()
        for name in MENUS:
            (menus / name).write_text(MENU)
        self.start_kwin()

    def start_kwin(self):
        """Starts KWin, also again after its end."""
        # The file capability of the installed program would keep KWin from starting here.
        program = shutil.copy(shutil.which("kwin_wayland"), self.folder / "kwin_wayland")
        options = ["--no-kactivities"] if kwin_version() < 6 else []
        displays = self.folder / "displays"
        if self.xwayland:
            tell = self.folder / "tell"
            tell.write_text(TELL.format(displays=displays))
            tell.chmod(0o755)
            options += ["--xwayland", str(tell)]
        trust = {"KWIN_WAYLAND_NO_PERMISSION_CHECKS": "1"} if self.trusts_all else {}
        socket = self.folder / "runtime" / "wayland-kwin"
        socket.unlink(missing_ok=True)
        self.kwin = self.spawn(
            [program, "--virtual", "--width", "1280", "--height", "800", "--no-lockscreen",
             "--socket", socket.name, *options],
            env=self.environment | {"KWIN_COMPOSE": "Q", "LIBGL_ALWAYS_SOFTWARE": "1"} | trust)
        wait_for(socket.exists, "KWin", process=self.kwin)
        wait_for(lambda: self.has_name("org.kde.kglobalaccel") and self.has_name("org.kde.KWin"),
                 "KWin's shortcuts", process=self.kwin)
        if self.xwayland:
            wait_for(displays.exists, "KWin's X server", process=self.kwin)
            self.environment |= dict(zip(("DISPLAY", "XAUTHORITY"),
                                         displays.read_text().splitlines()))
        # Programs take text from KWin's input method.
        self.environment.pop("QT_IM_MODULE", None)
        self.environment |= {"WAYLAND_DISPLAY": socket.name, "XDG_SESSION_TYPE": "wayland",
                             "XDG_CURRENT_DESKTOP": "KDE", "GTK_IM_MODULE": "wayland"}

    def has_name(self, name):
        """Whether a program on the session bus has a name."""
        return "true" in self.run(
            ["dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus",
             "/org/freedesktop/DBus", "org.freedesktop.DBus.NameHasOwner", f"string:{name}"])
