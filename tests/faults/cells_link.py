# SPDX-License-Identifier: MIT

"""A network that loses, repeats, delays and spoils packets. Needs root."""

import os
import time
import unittest

from cell import Cell
from cells_network import (
    CANCELLED, LEFT, TIMEOUT, UNSENT, WAITED_IN_VAIN, WAITING, all_sound_arrives)
from delayed_network import SERVICE_ADDRESS
from fault_test import FaultTest, add_cells
from faults import expects, says, steps, stops, waits, waits_for
from lossy_network import LossyNetwork
from scripted_service import ScriptedService

HOST = "service.test"


@unittest.skipUnless(os.geteuid() == 0, "a network of its own needs root")
class Link(FaultTest):
    @classmethod
    def prepare(cls):
        cls.network = cls.enterClassContext(LossyNetwork(cls.desktop.folder))
        cls.certificate = cls.authority.certificate("link", f"DNS:{HOST},IP:{SERVICE_ADDRESS}")
        cls.service = ScriptedService(*cls.certificate, listener=cls.network.listener())
        cls.addClassCleanup(cls.service.close)

    @property
    def host(self):
        return f"{HOST}:{self.service.port}"

    def start_for(self, cell):
        super().start_for(Cell(cell.name, settings=cell.settings,
                               command=tuple(self.network.client_command())))


def link(**what):
    return lambda world: world.network.set(**what)


def heals(world):
    world.network.heal()


def poor(name, text="One two", **what):
    """A cell: the network is poor, and yet a piece arrives and all sound leaves."""
    return Cell(name, steps(link(**what), starts_counting, waits(1), says("two"), expects(text, timeout=20),
                            all_sound_arrives), text=text, heal=heals)


def starts_counting(world):
    world.stalled_at, world.heard_before = time.monotonic(), len(world.stream.audio)


CELLS = [
    poor("3 % of packets lost", loss=0.03),
    poor("15 % of packets lost", loss=0.15),
    poor("a fifth of packets twice", duplicate=0.2),
    poor("a fifth of packets out of order", reorder=0.2),
    poor("3 % of packets spoilt", corrupt=0.03),
    poor("a round trip of 400 ms", delay=0.2),
    poor("everything at once", loss=0.03, duplicate=0.1, reorder=0.1, corrupt=0.02, delay=0.02),
    Cell("two seconds without a network",
         steps(starts_counting, link(loss=1), waits(2), heals, says("two"), expects("One two", timeout=20),
               all_sound_arrives), text="One two", heal=heals),
    Cell("eight seconds without a network",
         steps(starts_counting, link(loss=1), waits_for(WAITING), heals,
               waits_for(LEFT, timeout=30), all_sound_arrives,
               says("two"), expects("One two", timeout=20)), (WAITING, LEFT), "One two", heal=heals),
    Cell("no network until the end",
         steps(link(loss=1), waits_for(WAITING), stops,
               waits_for(WAITED_IN_VAIN)),
         (WAITING, WAITED_IN_VAIN, UNSENT, CANCELLED), heal=heals, is_red=False),
    Cell("a network slower than the sound",
         steps(starts_counting, link(rate=12000), waits_for(WAITING, timeout=40), heals,
               waits_for(LEFT, timeout=30), all_sound_arrives),
         (WAITING, LEFT), heal=heals),
    # The resolver of the system gives up after ten seconds.
    Cell("no network at the start", before=link(loss=1), opens=False, heal=heals,
         log=(TIMEOUT, f"Deepgram error: The host {HOST} was not found")),
]

add_cells(Link, CELLS)
