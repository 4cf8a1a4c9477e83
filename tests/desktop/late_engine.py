#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""An engine of IBus that takes no key, and says so late. The argument is the delay in milliseconds."""

import sys

import gi

gi.require_version("IBus", "1.0")
from gi.repository import Gio, GLib, IBus  # noqa: E402

NAME = "late"
SERVICE = "org.freedesktop.IBus.Late"
ENGINE_PATH = "/org/freedesktop/IBus/Engine/1"
INTERFACES = Gio.DBusNodeInfo.new_for_xml("""<node>
  <interface name="org.freedesktop.IBus.Factory">
    <method name="CreateEngine"><arg type="s" direction="in"/><arg type="o" direction="out"/></method>
  </interface>
  <interface name="org.freedesktop.IBus.Engine">
    <method name="ProcessKeyEvent">
      <arg type="u" direction="in"/><arg type="u" direction="in"/><arg type="u" direction="in"/>
      <arg type="b" direction="out"/>
    </method>
    <method name="FocusIn"/><method name="FocusOut"/><method name="Reset"/>
    <method name="Enable"/><method name="Disable"/>
    <method name="SetCapabilities"><arg type="u" direction="in"/></method>
    <method name="SetCursorLocation">
      <arg type="i" direction="in"/><arg type="i" direction="in"/>
      <arg type="i" direction="in"/><arg type="i" direction="in"/>
    </method>
    <method name="SetSurroundingText">
      <arg type="v" direction="in"/><arg type="u" direction="in"/><arg type="u" direction="in"/>
    </method>
    <property name="ContentType" type="(uu)" access="write"/>
  </interface>
</node>""")


def main():
    delay = int(sys.argv[1])
    bus = IBus.Bus()
    connection = bus.get_connection()

    def handle(_connection, _sender, _path, _interface, method, _arguments, invocation):
        if method == "CreateEngine":
            invocation.return_value(GLib.Variant("(o)", (ENGINE_PATH,)))
        elif method == "ProcessKeyEvent":
            GLib.timeout_add(delay, lambda: invocation.return_value(
                GLib.Variant("(b)", (False,))) or False)
        else:
            invocation.return_value(None)

    for path, interface in zip(("/org/freedesktop/IBus/Factory", ENGINE_PATH), INTERFACES.interfaces):
        connection.register_object(path, interface, handle, None, lambda *_: True)
    bus.request_name(SERVICE, 0)
    loop = GLib.MainLoop()
    bus.connect("disconnected", lambda *_: loop.quit())
    loop.run()


if __name__ == "__main__":
    main()
