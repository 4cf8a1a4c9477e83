# SPDX-License-Identifier: MIT

"""What a running application holds: memory, descriptors, threads, X resources, sound streams."""

import collections
import ctypes
import pathlib
import re

Resources = collections.namedtuple(
    "Resources", "memory_kib descriptors threads x_resources x_pixmap_bytes sound_streams")


class XRes:
    """Asks an X server what its clients have made there."""

    class Client(ctypes.Structure):
        _fields_ = [("resource_base", ctypes.c_ulong), ("resource_mask", ctypes.c_ulong)]

    class Kind(ctypes.Structure):
        _fields_ = [("resource_type", ctypes.c_ulong), ("count", ctypes.c_uint)]

    class Spec(ctypes.Structure):
        _fields_ = [("client", ctypes.c_ulong), ("mask", ctypes.c_uint)]

    class Value(ctypes.Structure):
        pass

    # XResQueryClientIds() is asked for the process of each client.
    LOCAL_PROCESS = 1 << 1

    def __init__(self, display):
        self._x11 = ctypes.CDLL("libX11.so.6")
        self._xres = ctypes.CDLL("libXRes.so.1")
        self._x11.XOpenDisplay.restype = ctypes.c_void_p
        self._x11.XFree.argtypes = [ctypes.c_void_p]
        self._xres.XResGetClientPid.argtypes = [ctypes.c_void_p]
        self._display = ctypes.c_void_p(self._x11.XOpenDisplay(display.encode()))
        if not self._display:
            raise RuntimeError(f"no X server at {display}")
        # The struct of an answer: the client, the length of the value, the value.
        self.Value._fields_ = [("spec", self.Spec), ("length", ctypes.c_long),
                               ("value", ctypes.c_void_p)]

    def of_process(self, pid):
        """The number of X resources and the bytes of pixmaps of all connections of a process."""
        count, pixmap_bytes = 0, ctypes.c_ulong()
        total_bytes = 0
        for base in self._clients_of(pid):
            number, kinds = ctypes.c_int(), ctypes.POINTER(self.Kind)()
            self._xres.XResQueryClientResources(
                self._display, ctypes.c_ulong(base), ctypes.byref(number), ctypes.byref(kinds))
            count += sum(kinds[i].count for i in range(number.value))
            self._x11.XFree(kinds)
            self._xres.XResQueryClientPixmapBytes(
                self._display, ctypes.c_ulong(base), ctypes.byref(pixmap_bytes))
            total_bytes += pixmap_bytes.value
        return count, total_bytes

    def _clients_of(self, pid):
        spec = self.Spec(0, self.LOCAL_PROCESS)
        number, values = ctypes.c_long(), ctypes.POINTER(self.Value)()
        self._xres.XResQueryClientIds(self._display, ctypes.c_long(1), ctypes.byref(spec),
                                      ctypes.byref(number), ctypes.byref(values))
        found = [values[i].spec.client for i in range(number.value)
                 if self._xres.XResGetClientPid(ctypes.byref(values[i])) == pid]
        self._xres.XResClientIdsDestroy(number, values)
        return found


def resources(desktop, pid, x_server):
    """What the process holds now."""
    process = pathlib.Path(f"/proc/{pid}")
    # Memory that no file backs: what the process has allocated, whoever else maps its libraries.
    rollup = (process / "smaps_rollup").read_text()
    memory = int(re.search(r"^Anonymous:\s+(\d+) kB$", rollup, re.MULTILINE)[1])
    count, pixmap_bytes = x_server.of_process(pid)
    return Resources(
        memory, len(list((process / "fd").iterdir())), len(list((process / "task").iterdir())),
        count, pixmap_bytes,
        len(desktop.run(["pactl", "list", "short", "source-outputs"]).splitlines()))
