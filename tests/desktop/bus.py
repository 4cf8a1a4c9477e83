# SPDX-License-Identifier: MIT

"""Calls over the D-Bus buses of a private desktop."""

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

PROPERTIES = "org.freedesktop.DBus.Properties"
REPLY_TIMEOUT_MS = 5000


class Bus:
    """A connection to one bus."""

    def __init__(self, address):
        self._connection = Gio.DBusConnection.new_for_address_sync(
            address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)

    def call(self, name, path, interface, method, signature="()", *arguments):
        """Calls a method; returns the values of its reply. Raises GLib.Error without a reply."""
        return self._connection.call_sync(
            name, path, interface, method, GLib.Variant(signature, arguments), None,
            Gio.DBusCallFlags.NONE, REPLY_TIMEOUT_MS, None).unpack()

    def get(self, name, path, interface, key):
        return self.call(name, path, PROPERTIES, "Get", "(ss)", interface, key)[0]

    def set(self, name, path, interface, key, signature, value):
        self.call(name, path, PROPERTIES, "Set", "(ssv)", interface, key,
                  GLib.Variant(signature, value))

    def close(self):
        self._connection.close_sync(None)


class NoReply(Exception):
    """The receiver of a call has ended."""


def checked_call(call):
    """The result of `call`, a function that makes a D-Bus call. An error becomes NoReply."""
    try:
        return call()
    except GLib.Error as error:
        raise NoReply(error.message) from None


def boolean(value):
    """A truth value as an element of a list of variants."""
    return GLib.Variant("b", value)
