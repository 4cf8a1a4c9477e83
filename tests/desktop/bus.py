"""Calls over the buses of a private desktop."""

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

PROPERTIES = "org.freedesktop.DBus.Properties"
ANSWER_DEADLINE = 5000


class Bus:
    def __init__(self, address):
        self._connection = Gio.DBusConnection.new_for_address_sync(
            address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)

    def call(self, name, path, interface, method, signature="()", *arguments):
        """The values of the answer; an error when there is none."""
        return self._connection.call_sync(
            name, path, interface, method, GLib.Variant(signature, arguments), None,
            Gio.DBusCallFlags.NONE, ANSWER_DEADLINE, None).unpack()

    def get(self, name, path, interface, key):
        return self.call(name, path, PROPERTIES, "Get", "(ss)", interface, key)[0]

    def set(self, name, path, interface, key, signature, value):
        self.call(name, path, PROPERTIES, "Set", "(ssv)", interface, key,
                  GLib.Variant(signature, value))

    def close(self):
        self._connection.close_sync(None)


class NoAnswer(Exception):
    """Whoever was asked has gone away."""


def asked(question):
    """The answer to `question`, a call; NoAnswer when its receiver is not there any more."""
    try:
        return question()
    except GLib.Error as error:
        raise NoAnswer(error.message) from None


def boolean(value):
    """A truth value for a list of values of any type."""
    return GLib.Variant("b", value)
