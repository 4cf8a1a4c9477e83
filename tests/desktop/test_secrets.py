#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What leaves the application, seen from outside: every packet in a network of its own, every file that
a whole session opens for writing or changes, and a core file."""

import contextlib
import os
import pathlib
import re
import resource
import socket
import stat
import time
import unittest

import network
from application import READY, Application, write_settings
from desktop import wait_for
from dictation_test import BINARIES, DictationTest
from scripted_service import ScriptedService, make_certificate
from windows import wait_for_window

# In seconds. Longer than every timer of the application that is not a retry: a session holds its
# connection for ten seconds after the end.
IDLE = 12

# What changes a file, a folder or a name, beside openat(2) with one of these flags.
CHANGES = ("creat,truncate,rename,renameat,renameat2,link,linkat,symlink,symlinkat,unlink,unlinkat,"
           "mkdir,mkdirat,rmdir,mknod,mknodat,chmod,fchmodat,chown,lchown,fchownat,utimensat,setxattr,"
           "lsetxattr,removexattr,mount")
WRITING = re.compile(r"O_WRONLY|O_RDWR|O_CREAT|O_TRUNC|O_TMPFILE")


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


def changed_paths(trace):
    """The paths in the calls that open a file for writing, or that change a file or a name."""
    paths = set()
    for line in trace.splitlines():
        call = re.match(r"\d+ +(\w+)\((.*)", line)
        if not call or call[1] in ("open", "openat") and not WRITING.search(call[2]):
            continue
        for folder, path in re.findall(r'(?:<([^>]*)>, )?"((?:[^"\\]|\\.)*)"', call[2]):
            paths.add(os.path.join(folder, path))
    return paths


class Secrets(DictationTest):
    @classmethod
    def setUpClass(cls):
        try:
            network.enter()
        except PermissionError as error:
            raise unittest.SkipTest("a network of its own is not allowed here") from error
        cls.names = network.NameServer()
        cls.addClassCleanup(cls.names.close)
        cls.capture = network.Capture()
        cls.addClassCleanup(cls.capture.close)
        super().setUpClass()

    def start_service(self):
        """A service that only the network's name server knows."""
        key, certificate = make_certificate(
            self.desktop.folder / "certificates", network.SERVICE_NAME, network.SERVICE_ADDRESS)
        listener = socket.create_server((network.SERVICE_ADDRESS, 0))
        service = ScriptedService(key, certificate, listener)
        service.authority = certificate
        self.addCleanup(service.close)
        return service

    def settings(self, service):
        return {"deepgramHost": f"{network.SERVICE_NAME}:{service.port}"}

    def end_recording(self, application, stream):
        self.keyboard.release()
        wait_for(lambda: stream.is_closed, "the end of the stream")
        wait_for(lambda: network_ports(application.pid) == set(), "an unused network", 20)

    def test_packets_go_to_the_service_and_its_name_server_and_only_during_a_recording(self):
        earlier = len(self.capture.packets())
        service = self.start_service()
        allowed = {(network.TCP, network.SERVICE_ADDRESS, service.port),
                   (network.UDP, network.NAME_SERVER, 53)}
        application = self.start_application(service, self.settings(service))
        for _ in range(2):
            time.sleep(IDLE)
            self.assertEqual(self.capture.packets()[earlier:], [], "packets of an idle application")
            stream = self.dictate(service, "Words.")
            self.end_recording(application, stream)
            sent = self.capture.packets()[earlier:]
            self.assertNotEqual(sent, [])
            for packet in sent:
                ends = {(packet.protocol, packet.source, packet.source_port),
                        (packet.protocol, packet.destination, packet.destination_port)}
                self.assertTrue(ends & allowed, packet)
            earlier += len(sent)
        self.assertEqual(set(self.names.names), {network.SERVICE_NAME})
        self.assertEqual(application.close(), 0)
        self.assertEqual(self.capture.packets()[earlier:], [], "packets at the end")

    def test_a_whole_session_changes_no_file_but_the_settings(self):
        service = self.start_service()
        trace = self.desktop.folder / "trace"
        settings = write_settings(self.desktop.environment,
                                  {"deepgramApiKey": "a-key"} | self.settings(service))
        # The tracer is a process apart, so that the end of the application is traced as well.
        application = Application(
            self.desktop, BINARIES,
            # A sanitizer that looks for leaks is a tracer too, and a process has one.
            {"SSL_CERT_FILE": str(service.authority), "ASAN_OPTIONS": "detect_leaks=0"}, ready=READY,
            command=("strace", "-DD", "-f", "-qq", "-y", "-s", "4096", "-o", str(trace),
                     "-e", f"trace=openat,open,{CHANGES}"))
        self.addCleanup(application.close)
        wait_for_window(self.desktop, timeout=30).close()
        for number, start in enumerate((self.start_target, self.start_terminal), 1):
            target = start()
            self.hold()
            service.stream(number).say("Secret words.")
            target.wait_for_text("Secret words.")
            self.keyboard.release()
            wait_for(lambda: service.streams[-1].is_closed, "the end of the stream")
            target.close()
        self.assertEqual(application.close(), 0)
        written = changed_paths(trace.read_text(encoding="utf-8"))
        folder = self.desktop.environment["XDG_CONFIG_HOME"]
        config = re.escape(folder)
        # The names before an atomic replacement have six letters more. The last three are no files:
        # the sound server's folder, which exists already, and the names of threads.
        allowed = re.compile(
            rf"{config}/Tarvik(/Tarvik Dictate\.conf(\.\w{{6}})?)?"
            rf"|{config}/autostart(/com\.tarvik\.dictate\.desktop(\.\w{{6}})?)?"
            rf"|{re.escape(self.desktop.environment['XDG_RUNTIME_DIR'])}"
            r"|/dev/null|/proc/self/task/\d+/comm")
        self.assertIn(str(settings), written)
        self.assertEqual({path for path in written if not allowed.fullmatch(path)}, set())
        files = [path for path in pathlib.Path(folder).rglob("*") if path.is_file()]
        self.assertIn(pathlib.Path(settings), files)
        for path in files:
            self.assertNotIn(b"Secret words", path.read_bytes(), path)
        self.assertEqual(stat.S_IMODE(os.stat(settings).st_mode), 0o600)

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
