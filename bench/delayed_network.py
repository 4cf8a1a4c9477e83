# SPDX-License-Identifier: MIT

"""A network of two hosts, a client and a service, with a delay between them. Needs root.

usage: delayed_network.py ROUND_TRIP

Each host is a network namespace with one TUN device. This program carries every packet from one device
to the other and holds each packet for half of ROUND_TRIP, in seconds. So all traffic is delayed, also
that of the name lookup and of the TCP handshake. Prints the descriptors of the two namespaces, those of
the service and of the client. The namespaces end with the program.
"""

import collections
import contextlib
import ctypes
import fcntl
import os
import select
import socket
import struct
import subprocess
import sys
import threading
import time

SERVICE_ADDRESS = "10.99.0.1"
CLIENT_ADDRESS = "10.99.0.2"
DOMAIN_PORT = 53
# The whole name in a query, an answer's reference to that name, and the record types of an address.
NAME_OFFSET = 12
NAME_REFERENCE = 0xC00C
TYPE_A = 1
CLASS_IN = 1

CLONE_NEWNET = 0x40000000
TUNSETIFF = 0x400454CA
IFF_TUN = 0x0001
IFF_NO_PI = 0x1000
MAX_PACKET = 65536

libc = ctypes.CDLL(None, use_errno=True)


def check(status):
    if status != 0:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))


@contextlib.contextmanager
def inside(namespace):
    """Moves this thread into a network namespace, given by the path of its file. A socket stays in the
    namespace in which it was made."""
    with open("/proc/thread-self/ns/net", "rb") as own, open(namespace, "rb") as other:
        check(libc.setns(other.fileno(), CLONE_NEWNET))
        try:
            yield
        finally:
            check(libc.setns(own.fileno(), CLONE_NEWNET))


class DelayedNetwork:
    """A context manager that runs the network."""

    def __init__(self, folder, round_trip):
        self._folder = folder
        self._round_trip = round_trip

    def __enter__(self):
        self._process = subprocess.Popen(
            self.command(), stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        numbers = self._process.stdout.readline().split()
        if not numbers:
            raise RuntimeError("the delayed network did not start; it needs root")
        self._service, self._client = (f"/proc/{self._process.pid}/fd/{n}" for n in numbers)
        names = self._bound_socket(socket.SOCK_DGRAM, socket.IPPROTO_UDP, DOMAIN_PORT)
        threading.Thread(target=self._answer_lookups, args=(names,), daemon=True).start()
        return self

    def __exit__(self, *_):
        self._process.stdin.close()
        self._process.stdout.close()
        self._process.wait()

    def command(self):
        """The command of the program that carries the packets."""
        return [sys.executable, "-B", __file__, str(self._round_trip)]

    def listener(self):
        """A socket for a server on the service's host."""
        # Asyncio turns Nagle's algorithm off only for a socket that names its protocol.
        return self._bound_socket(socket.SOCK_STREAM, socket.IPPROTO_TCP, 0)

    def client_command(self):
        """The beginning of a command that runs a program on the client's host. Every name is that of
        the service there."""
        resolver = self._folder / "resolv.conf"
        resolver.write_text(f"nameserver {SERVICE_ADDRESS}\n")
        mount = f'mount --bind "{resolver}" /etc/resolv.conf && exec "$@"'
        return ["nsenter", f"--net={self._client}", "unshare", "--mount", "sh", "-c", mount, "sh"]

    def connection_time(self, port):
        """The seconds that a TCP connection to the service takes."""
        with inside(self._client), socket.socket() as probe:
            begin = time.monotonic()
            probe.connect((SERVICE_ADDRESS, port))
            return time.monotonic() - begin

    def _bound_socket(self, kind, protocol, port):
        with inside(self._service):
            bound = socket.socket(socket.AF_INET, kind, protocol)
        bound.bind((SERVICE_ADDRESS, port))
        return bound

    @staticmethod
    def _answer_lookups(names):
        while True:
            query, sender = names.recvfrom(512)
            names.sendto(answer(query), sender)


def answer(query):
    """The answer to a DNS query: the address of the service, or nothing for another record type."""
    end = query.index(b"\0", NAME_OFFSET) + 1
    question = query[NAME_OFFSET:end + 4]
    wanted, = struct.unpack("!H", query[end:end + 2])
    records = b""
    if wanted == TYPE_A:
        records = struct.pack("!HHHIH4s", NAME_REFERENCE, TYPE_A, CLASS_IN, 60, 4,
                              socket.inet_aton(SERVICE_ADDRESS))
    # A recursive answer without an error.
    header = query[:2] + struct.pack("!HHHHH", 0x8180, 1, 1 if records else 0, 0, 0)
    return header + question + records


def make_host(name, address):
    """Moves this process into a new namespace; returns the namespace's file and its device."""
    check(libc.unshare(CLONE_NEWNET))
    device = os.open("/dev/net/tun", os.O_RDWR | os.O_NONBLOCK)
    fcntl.ioctl(device, TUNSETIFF, struct.pack("16sH22x", name.encode(), IFF_TUN | IFF_NO_PI))
    for command in (["addr", "add", f"{address}/24", "dev", name], ["link", "set", name, "up"],
                    ["link", "set", "lo", "up"]):
        subprocess.run(["ip", *command], check=True)
    return os.open("/proc/self/ns/net", os.O_RDONLY), device


def carry(devices, delay):
    """Carries packets between the two devices until standard input ends."""
    target = dict(zip(devices, reversed(devices)))
    waiting = collections.deque()
    while True:
        timeout = max(0, waiting[0][0] - time.monotonic()) if waiting else None
        ready, _, _ = select.select([sys.stdin, *devices], [], [], timeout)
        now = time.monotonic()
        for device in ready:
            if device is sys.stdin:
                return
            waiting.append((now + delay, target[device], os.read(device, MAX_PACKET)))
        while waiting and waiting[0][0] <= now:
            _, device, packet = waiting.popleft()
            os.write(device, packet)


def main():
    service, service_device = make_host("service", SERVICE_ADDRESS)
    client, client_device = make_host("client", CLIENT_ADDRESS)
    print(service, client, flush=True)
    carry([service_device, client_device], float(sys.argv[1]) / 2)


if __name__ == "__main__":
    main()
