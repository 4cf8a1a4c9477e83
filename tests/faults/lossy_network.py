# SPDX-License-Identifier: MIT

"""A network of two hosts, a client and a service, that loses, repeats, delays and spoils packets. Needs
root.

usage: lossy_network.py

Each host is a network namespace with one TUN device, as in bench/delayed_network.py. Lines on standard
input set what happens to the packets: "loss 0.1", "duplicate 0.1", "corrupt 0.1", "reorder 0.2",
"delay 0.05" (seconds, each way), "rate 8000" (bytes a second from the client), "heal".
"""

import heapq
import os
import pathlib
import random
import select
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parents[2] / "bench"))

import delayed_network  # noqa: E402

HEALTHY = {"loss": 0.0, "duplicate": 0.0, "corrupt": 0.0, "reorder": 0.0, "delay": 0.0, "rate": 0.0}
# In seconds: how much later than its successors a reordered packet comes.
REORDER_DELAY = 0.02
# In seconds of the rate: a packet that would wait longer in the queue of the link is lost.
MAX_QUEUE = 1.0
# The bytes of the headers of IP and TCP, which stay whole.
HEADERS = 60


class LossyNetwork(delayed_network.DelayedNetwork):
    """A context manager that runs the network."""

    def __init__(self, folder):
        super().__init__(folder, 0)

    def command(self):
        return [sys.executable, "-B", __file__]

    def set(self, **what):
        for name, value in what.items():
            self.tell(f"{name} {value}")

    def heal(self):
        self.tell("heal")

    def tell(self, line):
        self._process.stdin.write(line + "\n")
        self._process.stdin.flush()


class Carrier:
    """Carries packets between two devices."""

    def __init__(self, client, service):
        self._target = {client: service, service: client}
        self._client = client
        self._link = dict(HEALTHY)
        self._waiting = []
        self._count = 0
        self._random = random.Random(1)
        self._link_is_free = 0.0

    def run(self):
        while True:
            timeout = max(0, self._waiting[0][0] - time.monotonic()) if self._waiting else None
            ready, _, _ = select.select([sys.stdin, *self._target], [], [], timeout)
            for source in ready:
                if source is not sys.stdin:
                    self._take(source, os.read(source, delayed_network.MAX_PACKET))
                elif not self._obey(sys.stdin.readline()):
                    return
            now = time.monotonic()
            while self._waiting and self._waiting[0][0] <= now:
                _, _, device, packet = heapq.heappop(self._waiting)
                os.write(device, packet)

    def _obey(self, line):
        if not line:
            return False
        name, *value = line.split()
        if name == "heal":
            self._link = dict(HEALTHY)
        else:
            self._link[name] = float(value[0])
        return True

    def _happens(self, what):
        return self._random.random() < self._link[what]

    def _take(self, source, packet):
        if self._happens("loss"):
            return
        now = time.monotonic()
        due = now + self._link["delay"]
        if self._link["rate"] and source == self._client:
            self._link_is_free = max(now, self._link_is_free)
            if self._link_is_free - now > MAX_QUEUE:
                return
            self._link_is_free += len(packet) / self._link["rate"]
            due += self._link_is_free - now
        if self._happens("reorder"):
            due += REORDER_DELAY
        if self._happens("corrupt") and len(packet) > HEADERS:
            place = self._random.randrange(HEADERS, len(packet))
            packet = packet[:place] + bytes([packet[place] ^ 0x55]) + packet[place + 1:]
        for _ in range(2 if self._happens("duplicate") else 1):
            self._count += 1
            heapq.heappush(self._waiting, (due, self._count, self._target[source], packet))


def main():
    service, service_device = delayed_network.make_host("service", delayed_network.SERVICE_ADDRESS)
    client, client_device = delayed_network.make_host("client", delayed_network.CLIENT_ADDRESS)
    print(service, client, flush=True)
    Carrier(client_device, service_device).run()


if __name__ == "__main__":
    main()
