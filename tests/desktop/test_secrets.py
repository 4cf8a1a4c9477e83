#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What leaves the application: to the network, to files, and to a core file."""

import contextlib
import os
import pathlib
import resource
import stat
import unittest

from desktop import wait_for
from dictation_test import DictationTest

# The folders that a program may keep files of its own in.
FOLDERS = ("HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME")
SETTINGS = "Tarvik/Tarvik Dictate.conf"
AUTOSTART = "autostart/com.tarvik.dictate.desktop"


def sockets(process):
    """The numbers of a process's sockets."""
    numbers = set()
    for descriptor in pathlib.Path(f"/proc/{process}/fd").iterdir():
        # The descriptor may be closed in the meantime.
        with contextlib.suppress(OSError):
            name = os.readlink(descriptor)
            if name.startswith("socket:["):
                numbers.add(name[len("socket:["):-1])
    return numbers


def network_ports(process):
    """The remote ports of a process's sockets of the internet protocols; 0 where there is none."""
    own = sockets(process)
    ports = set()
    for table in ("tcp", "tcp6", "udp", "udp6", "raw", "raw6"):
        for line in pathlib.Path(f"/proc/{process}/net/{table}").read_text().splitlines()[1:]:
            fields = line.split()
            if fields[9] in own:
                ports.add(int(fields[2].rpartition(":")[2], 16))
    return ports


class Secrets(DictationTest):
    def files(self):
        """The files in the user's folders, with their modes."""
        found = {}
        for name in FOLDERS:
            for path in pathlib.Path(self.desktop.environment[name]).rglob("*"):
                if path.is_file():
                    found[path] = stat.S_IMODE(path.stat().st_mode)
        return found

    def test_the_network_is_used_for_the_service_and_only_during_a_recording(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        port = int(service.host.rpartition(":")[2])
        self.assertEqual(network_ports(application.pid), set())
        self.dictate(service, "Words.")
        self.assertEqual(network_ports(application.pid), {port})
        self.keyboard.release()
        wait_for(lambda: network_ports(application.pid) == set(), "an unused network", 20)

    def test_nothing_is_written_but_the_settings(self):
        service = self.start_scripted_service()
        before = set(self.files())
        self.start_application(service)
        target = self.start_target("gtk3")
        self.dictate(service, "Secret words.")
        target.wait_for_text("Secret words.")
        self.keyboard.release()
        self.tray.wait_for_icon(recording=False)
        target.close()
        config = pathlib.Path(self.desktop.environment["XDG_CONFIG_HOME"])
        written = self.files()
        allowed = {config / SETTINGS, config / AUTOSTART}
        self.assertEqual(set(written) - before - allowed, set())
        self.assertEqual(written[config / SETTINGS], 0o600)
        for path in written:
            self.assertNotIn(b"Secret words", path.read_bytes(), path)

    def test_a_crash_writes_no_memory_to_disk(self):
        soft, hard = resource.getrlimit(resource.RLIMIT_CORE)
        if hard == 0:
            self.skipTest("no process here can write a core file")
        self.addCleanup(resource.setrlimit, resource.RLIMIT_CORE, (soft, hard))
        resource.setrlimit(resource.RLIMIT_CORE, (hard, hard))
        application = self.start_application(self.start_scripted_service())
        limits = pathlib.Path(f"/proc/{application.pid}/limits").read_text().splitlines()
        (core,) = [line for line in limits if line.startswith("Max core file size")]
        self.assertEqual(core.split()[4], "0")


if __name__ == "__main__":
    unittest.main()
