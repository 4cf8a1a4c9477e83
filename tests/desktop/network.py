# SPDX-License-Identifier: MIT

"""A network of the test process's own, where every packet is seen. Loopback takes the packets to all
addresses, and one name server knows one name."""

import collections
import contextlib
import ctypes
import os
import pathlib
import socket
import struct
import subprocess
import tempfile
import threading

from desktop import wait_for

CLONE_NEWNS = 0x00020000
CLONE_NEWUSER = 0x10000000
CLONE_NEWNET = 0x40000000

X_SOCKETS = "/tmp/.X11-unix"

SERVICE_NAME = "speech.example"
# Addresses of this network alone.
SERVICE_ADDRESS = "192.0.2.1"
NAME_SERVER = "192.0.2.53"

TCP, UDP, HOP_BY_HOP, ICMP6 = 6, 17, 0, 58
# A type of ICMP6.
UNREACHABLE = 1

Packet = collections.namedtuple("Packet", "protocol source source_port destination destination_port")


def enter():
    """Moves this process, and whatever it starts, into the network. Before any thread is started."""
    flags = CLONE_NEWNET | CLONE_NEWNS
    user, group = os.geteuid(), os.getegid()
    if user != 0:
        flags |= CLONE_NEWUSER
    if ctypes.CDLL(None, use_errno=True).unshare(flags) != 0:
        raise OSError(ctypes.get_errno(), "no network namespace")
    if user != 0:
        for name, text in (("setgroups", "deny"), ("uid_map", f"0 {user} 1"), ("gid_map", f"0 {group} 1")):
            with open(f"/proc/self/{name}", "w", encoding="ascii") as file:
                file.write(text)
    _run("mount", "--make-rprivate", "/")
    _hide_x_servers()
    _replace("/etc/resolv.conf", f"nameserver {NAME_SERVER}\noptions timeout:1 attempts:1\n")
    _replace("/etc/nsswitch.conf", "passwd: files\ngroup: files\nhosts: files dns\n")
    _run("ip", "link", "set", "lo", "up")
    for address in (SERVICE_ADDRESS, NAME_SERVER):
        _run("ip", "address", "add", f"{address}/32", "dev", "lo")
    _run("ip", "-6", "address", "add", "2001:db8::1/128", "dev", "lo")
    # Without a route, an attempt to reach another address would be an error and no packet.
    _run("ip", "route", "add", "default", "dev", "lo")
    _run("ip", "-6", "route", "add", "default", "dev", "lo")


def _hide_x_servers():
    """Gives the network a folder of its own for the sockets of X servers. A server finds out by an
    abstract socket, which belongs to the network, whether its number is taken. So a server in here
    would replace the other socket, which is a file, of a server outside."""
    pathlib.Path(X_SOCKETS).mkdir(mode=0o1777, exist_ok=True)
    _run("mount", "-t", "tmpfs", "-o", "mode=1777", "tmpfs", X_SOCKETS)


def _run(*command):
    subprocess.run(command, check=True, capture_output=True)


def _replace(path, text):
    with tempfile.NamedTemporaryFile("w", delete=False) as file:
        file.write(text)
    os.chmod(file.name, 0o644)
    _run("mount", "--bind", file.name, path)
    os.unlink(file.name)


class Capture:
    """Records every packet that a process sends, whichever interface the packet takes."""

    def __init__(self):
        every_protocol = socket.htons(0x0003)
        self._socket = socket.socket(socket.AF_PACKET, socket.SOCK_DGRAM, every_protocol)
        self._packets = []
        self._marks = set()
        threading.Thread(target=self._read, daemon=True).start()

    def packets(self):
        """What has been sent so far."""
        # A packet of this process comes after everything that was sent before.
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as mark:
            mark.bind(("127.0.0.1", 0))
            port = mark.getsockname()[1]
            own = Packet(UDP, "127.0.0.1", port, "127.0.0.1", port)
            self._marks.add(own)
            mark.sendto(b"", ("127.0.0.1", port))
            wait_for(lambda: own in self._packets, "the capture of a packet")
        return [packet for packet in list(self._packets) if packet not in self._marks]

    def _read(self):
        with contextlib.suppress(OSError):
            while True:
                data, (_, kind, packet_type, _, _) = self._socket.recvfrom(65536)
                if packet_type == socket.PACKET_OUTGOING:
                    self._add(kind, data)

    def _add(self, kind, data):
        if kind == 0x0800:
            header = (data[0] & 0xF) * 4
            protocol, addresses = data[9], (data[12:16], data[16:20])
            family = socket.AF_INET
        elif kind == 0x86DD:
            header = 40
            protocol, addresses = data[6], (data[8:24], data[24:40])
            family = socket.AF_INET6
        else:
            self._packets.append(Packet(kind, "", 0, "", 0))
            return
        if protocol == ICMP6 and family == socket.AF_INET6 and data[header] == UNREACHABLE:
            # In place of a packet that loopback does not take, the kernel sends this error about it.
            self._add(kind, data[header + 8:])
            return
        if protocol in (HOP_BY_HOP, ICMP6) and family == socket.AF_INET6:
            return  # The kernel's own, for every interface.
        ports = struct.unpack_from("!HH", data, header) if protocol in (TCP, UDP) else (0, 0)
        source, destination = (socket.inet_ntop(family, address) for address in addresses)
        self._packets.append(Packet(protocol, source, ports[0], destination, ports[1]))

    def close(self):
        self._socket.close()


class NameServer:
    """Knows SERVICE_NAME alone, and remembers which names it was asked for."""

    def __init__(self):
        self.names = []
        self._socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self._socket.bind((NAME_SERVER, 53))
        threading.Thread(target=self._serve, daemon=True).start()

    def _serve(self):
        with contextlib.suppress(OSError):
            while True:
                query, client = self._socket.recvfrom(4096)
                self._socket.sendto(self._answer(query), client)

    def _answer(self, query):
        labels, at = [], 12
        while query[at]:
            labels.append(query[at + 1:at + 1 + query[at]].decode("ascii", "replace"))
            at += 1 + query[at]
        name, (kind,) = ".".join(labels), struct.unpack_from("!H", query, at + 1)
        self.names.append(name)
        question = query[12:at + 5]
        has_address = name == SERVICE_NAME and kind == 1
        flags = 0x8180 if name == SERVICE_NAME else 0x8183
        answer = query[:2] + struct.pack("!HHHHH", flags, 1, int(has_address), 0, 0) + question
        if has_address:
            answer += b"\xc0\x0c" + struct.pack("!HHIH", 1, 1, 60, 4) + socket.inet_aton(SERVICE_ADDRESS)
        return answer

    def close(self):
        self._socket.close()
