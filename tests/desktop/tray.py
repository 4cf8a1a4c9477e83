# SPDX-License-Identifier: MIT

"""A system tray without a window: registers the status icon and reads what it shows."""

import threading

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from desktop import wait_for  # noqa: E402

WATCHER = "org.kde.StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"

INTERFACE = f"""<node><interface name="{WATCHER}">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
  <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
  <property name="ProtocolVersion" type="i" access="read"/>
  <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
  <signal name="StatusNotifierItemUnregistered"><arg type="s"/></signal>
  <signal name="StatusNotifierHostRegistered"/>
</interface></node>"""


def is_red(red, green, blue):
    return red > 180 and green < 110 and blue < 110


class Tray:
    """Serves org.kde.StatusNotifierWatcher on the desktop's session bus."""

    def __init__(self, desktop):
        self._items = []
        self._loop = GLib.MainLoop()
        self._bus = Gio.DBusConnection.new_for_address_sync(
            desktop.environment["DBUS_SESSION_BUS_ADDRESS"],
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
        self._bus.register_object(
            "/StatusNotifierWatcher", Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0],
            self._on_call, self._on_get, None)
        threading.Thread(target=self._loop.run, daemon=True).start()
        self._bus.call_sync(
            "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
            GLib.Variant("(su)", (WATCHER, 4)), None, Gio.DBusCallFlags.NONE, -1, None)

    def _on_call(self, _bus, sender, _path, _interface, method, parameters, invocation):
        if method == "RegisterStatusNotifierItem":
            # The argument is a bus name, or an object path on the sender's connection.
            (service,) = parameters.unpack()
            self._items.append((sender, service if service.startswith("/")
                                else "/StatusNotifierItem"))
        invocation.return_value(None)

    def _on_get(self, _bus, _sender, _path, _interface, name):
        return {
            "RegisteredStatusNotifierItems":
                GLib.Variant("as", [bus + path for bus, path in self._items]),
            "IsStatusNotifierHostRegistered": GLib.Variant("b", True),
            "ProtocolVersion": GLib.Variant("i", 0),
        }[name]

    @property
    def item(self):
        """Waits for an icon; returns the bus name and the path of the latest one."""
        return wait_for(
            lambda: [item for item in self._items if self._is_there(item[0])], "the status icon")[-1]

    def _is_there(self, name):
        return self._bus.call_sync(
            "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            "NameHasOwner", GLib.Variant("(s)", (name,)), None, Gio.DBusCallFlags.NONE, 5000, None,
        ).unpack()[0]

    @property
    def menu(self):
        """The bus name and the path of the icon's menu."""
        return self.item[0], self._property("Menu").unpack()

    def _property(self, name):
        bus, path = self.item
        return self._bus.call_sync(
            bus, path, "org.freedesktop.DBus.Properties", "Get",
            GLib.Variant("(ss)", (ITEM, name)), GLib.VariantType("(v)"), Gio.DBusCallFlags.NONE, 5000, None,
        ).get_child_value(0).get_variant()

    @property
    def tool_tip(self):
        """The title of the icon's tool tip."""
        return self._property("ToolTip").unpack()[2]

    @property
    def shows_recording(self):
        """Whether the icon is red."""
        icons = self._property("IconPixmap")
        largest = max((icons.get_child_value(i) for i in range(icons.n_children())),
                      key=lambda icon: icon.get_child_value(0).get_int32())
        # To unpack the bytes one by one takes longer than the application needs to change the icon.
        pixels = largest.get_child_value(2).get_data_as_bytes().get_data()
        # Four bytes per pixel: opacity, red, green, blue.
        drawn = [pixels[i + 1:i + 4] for i in range(0, len(pixels), 4) if pixels[i] > 200]
        if not drawn:
            raise AssertionError("the status icon is empty")
        return sum(is_red(*pixel) for pixel in drawn) > len(drawn) // 2

    def wait_for_icon(self, recording):
        wait_for(lambda: self.shows_recording == recording,
                 "the red icon" if recording else "the idle icon")

    def close(self):
        """Removes the tray. Allowed any number of times."""
        if not self._bus.is_closed():
            self._bus.close_sync(None)
            self._loop.quit()
