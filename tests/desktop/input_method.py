# SPDX-License-Identifier: MIT

"""Input methods: one that composes Korean syllables, and one that composes nothing."""

import pathlib

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from desktop import wait_for  # noqa: E402

NAME = "org.fcitx.Fcitx5"
# The programs that are started afterwards use the input method.
VARIABLES = {"GTK_IM_MODULE": "fcitx", "QT_IM_MODULE": "fcitx", "XMODIFIERS": "@im=fcitx"}
PROFILE = """[Groups/0]
Name=Default
Default Layout=us
DefaultIM=hangul

[Groups/0/Items/0]
Name=keyboard-us

[Groups/0/Items/1]
Name=hangul

[GroupOrder]
0=Default
"""
CONFIG = """[Behavior]
ActiveByDefault=True
"""


class Fcitx:
    """Fcitx 5 with Hangul, which is on in every window from the start."""

    def __init__(self, desktop):
        folder = desktop.folder / "config" / "fcitx5"
        folder.mkdir()
        (folder / "profile").write_text(PROFILE)
        (folder / "config").write_text(CONFIG)
        desktop.environment.update(VARIABLES)
        self._bus = Gio.DBusConnection.new_for_address_sync(
            desktop.environment["DBUS_SESSION_BUS_ADDRESS"],
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
        process = desktop.spawn(["fcitx5", "--disable=wayland,waylandim,notifications"])
        wait_for(lambda: "@server=fcitx" in desktop.run(["xprop", "-root", "XIM_SERVERS"])
                 and self._is_on_the_bus(), "the input method", process=process)

    def _is_on_the_bus(self):
        return self._call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                          "NameHasOwner", GLib.Variant("(s)", (NAME,)))

    def _call(self, owner, path, interface, method, arguments=None):
        return self._bus.call_sync(owner, path, interface, method, arguments, None,
                                   Gio.DBusCallFlags.NONE, 5000, None).unpack()[0]

    @property
    def is_composing(self):
        """Whether the input method composes in the window that has the focus."""
        return self._call(NAME, "/controller", "org.fcitx.Fcitx.Controller1", "State") == 2

    def close(self):
        self._bus.close_sync(None)


class IBus:
    """IBus with one engine, in every window from the start. Programs ask it about each key."""

    # A keyboard layout alone, as many desktops start IBus.
    IDLE = "xkb:us::eng"
    # Composes Chinese from Latin letters.
    PINYIN = "libpinyin"
    VARIABLES = {"GTK_IM_MODULE": "ibus", "QT_IM_MODULE": "ibus", "XMODIFIERS": "@im=ibus"}

    def __init__(self, desktop, engine):
        self._desktop = desktop
        self._engine = engine
        desktop.environment.update(self.VARIABLES)
        # An engine that composes does not start without a service for its settings.
        self.process = desktop.spawn(["ibus-daemon", "--xim", "--panel", "disable", "--config",
                                      "/usr/libexec/ibus-memconf", "--cache", "none"])
        wait_for(lambda: "@server=ibus" in desktop.run(["xprop", "-root", "XIM_SERVERS"])
                 and self._choose(), "the input method", process=self.process)

    def _choose(self):
        self._desktop.run(["ibus", "engine", self._engine], check=False)
        return self.is_composing

    @property
    def is_composing(self):
        """Whether the engine is the chosen one."""
        return self._engine in self._desktop.run(["ibus", "engine"], check=False)


# The engine of late_engine.py, which ibus-daemon starts by itself.
LATE_COMPONENT = """<?xml version="1.0" encoding="utf-8"?>
<component>
  <name>org.freedesktop.IBus.Late</name>
  <description>answers late</description>
  <exec>/usr/bin/python3 -B {script} {delay}</exec>
  <engines>
    <engine>
      <name>late</name>
      <longname>late</longname>
      <language>en</language>
      <layout>us</layout>
      <rank>1</rank>
    </engine>
  </engines>
</component>
"""


class LateIBus(IBus):
    """IBus with an engine that composes nothing, and answers each key after a delay in seconds."""

    def __init__(self, desktop, delay):
        folder = desktop.folder / "late-engine"
        folder.mkdir()
        (folder / "late.xml").write_text(LATE_COMPONENT.format(
            script=pathlib.Path(__file__).with_name("late_engine.py"),
            delay=round(1000 * delay)))
        desktop.environment["IBUS_COMPONENT_PATH"] = f"/usr/share/ibus/component:{folder}"
        super().__init__(desktop, "late")
