#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The registry of an accessibility bus on a busy machine. It announces a program that joins, and
replies to the program a little later. It is as slow with the list of those who listen to events.

Prints "ready" once it owns the registry's name.
"""

import argparse
import time

import dbus
import dbus.service
from gi.repository import GLib

import accessibility_bus
import target_options

ACCESSIBLE = "org.a11y.atspi.Accessible"
OBJECT_EVENT = "org.a11y.atspi.Event.Object"
REGISTRY = "org.a11y.atspi.Registry"
SOCKET = "org.a11y.atspi.Socket"
ROOT = "/org/a11y/atspi/accessible/root"
DELAY = 0.2

parser = argparse.ArgumentParser(description=__doc__)
parser.add_argument("--out", help="unused")
parser.parse_args()

programs = []
listeners = []


class Registry(dbus.service.Object):
    @dbus.service.method(REGISTRY, in_signature="s", sender_keyword="sender")
    def RegisterEvent(self, event, sender):
        listeners.append((sender, event))

    @dbus.service.method(REGISTRY, out_signature="a(ss)")
    def GetRegisteredEvents(self):
        time.sleep(DELAY)
        return dbus.Array(listeners, signature="(ss)")


class Root(dbus.service.Object):
    @dbus.service.method(ACCESSIBLE, out_signature="a(so)")
    def GetChildren(self):
        return dbus.Array(programs, signature="(so)")

    @dbus.service.method(SOCKET, in_signature="(so)", out_signature="(so)")
    def Embed(self, program):
        programs.append(program)
        self.ChildrenChanged("add", len(programs) - 1, 0, program, {})
        bus.flush()
        time.sleep(DELAY)
        return (bus.get_unique_name(), dbus.ObjectPath(ROOT))

    @dbus.service.signal(OBJECT_EVENT, signature="siiva{sv}")
    def ChildrenChanged(self, change, position, unused, program, properties):
        pass


bus = accessibility_bus.connect()
registry = Registry(bus, "/org/a11y/atspi/registry")
root = Root(bus, ROOT)
name = dbus.service.BusName(REGISTRY, bus, do_not_queue=True)
target_options.announce("ready")
GLib.MainLoop().run()
