# SPDX-License-Identifier: MIT

"""Certificates and TLS connections."""

import socket
import ssl
import struct

from authority import Authority
from cell import Cell, nothing
from fault_test import FaultTest, add_cells
from peers import free_port, over_tls, raw, sends, start_server
from scripted_service import ScriptedService

UNVERIFIED = "Deepgram error: The certificate of localhost does not verify: "
INSECURE = "Deepgram error: No secure connection to localhost"
TIMEOUT = "Deepgram WS open timeout (5s) — connect failed"
# The openssl of Debian refuses what is too old by the level of its default settings.
ANYTHING = "ALL:@SECLEVEL=0"


def certificate(make):
    """A fault: the service has another certificate. `make` gets the authority and the folder."""
    def before(world):
        key, chain = make(world.authority, world.desktop.folder)
        world.other = ScriptedService(key, chain)
        world.addCleanup(world.other.close)
        world.board.peer = world.other.port
    return before


def refused(name, make, reason, **options):
    """A cell: the certificate is refused for this reason. The service hears no request."""
    def fault(world):
        world.wait_for_lines(UNVERIFIED)
        world.assertEqual(world.other.streams, [])
    return Cell(name, fault, (UNVERIFIED + reason,), before=certificate(make), opens=False, **options)


def other_authority(_authority, folder):
    return Authority(folder / "other-authority").certificate("other")


def self_signed(_authority, folder):
    other = Authority(folder / "self-signed")
    return folder / "self-signed" / "root.key", other.root


def intermediate(authority, is_authority=True, with_chain=True):
    middle = authority.certificate("middle", names="", subject="Middle", is_authority=is_authority)
    key, leaf = authority.certificate("leaf", issuer=middle)
    return key, authority.chain("leaf", leaf, middle[1]) if with_chain else leaf


def s_server(*options):
    """A fault: openssl s_server answers with status 200 to everything."""
    def before(world):
        port, (key, chain) = free_port(), world.certificate
        world.server = start_server(
            world.desktop, ["openssl", "s_server", "-accept", port, "-key", key, "-cert", chain, "-www",
                            *options], port)
        world.board.peer = port
    return before


def weak(name, **options):
    """A cell: the certificate is too weak."""
    def before(world):
        world.certificate, world.strong = world.authority.certificate("weak", **options), world.certificate
        s_server("-cipher", ANYTHING)(world)
        world.certificate = world.strong
    return Cell(name, log=(UNVERIFIED,), before=before, heal=end_server, opens=False,
                parts=("openssl s_server",))


def stunnel(world):
    """A fault: stunnel ends TLS before the service, and begins it anew."""
    port, (key, chain) = free_port(), world.certificate
    middle = free_port()
    config = world.desktop.folder / "stunnel.conf"
    config.write_text(
        f"foreground = yes\npid =\n[in]\naccept = 127.0.0.1:{port}\nconnect = 127.0.0.1:{middle}\n"
        f"cert = {chain}\nkey = {key}\n[out]\nclient = yes\naccept = 127.0.0.1:{middle}\n"
        f"connect = 127.0.0.1:{world.service.port}\n")
    world.server = start_server(world.desktop, ["stunnel4", config], port)
    world.board.peer = port


def killed_stunnel(world):
    end_server(world)
    world.wait_for_lines("Deepgram error: ")


def end_server(world):
    world.desktop.end(world.server)


def answers(*chunks):
    def before(world):
        world.board.answer = raw(*chunks)
    return before


def hangs(world):
    """A fault: TCP connects, and TLS never begins."""
    def answer(near):
        while near.recv(65536):
            pass
    world.board.answer = answer


def resets(world):
    def answer(near):
        near.recv(1)
        near.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    world.board.answer = answer


def closes_notified(world):
    """A fault: the service ends TLS in order before it answers the request."""
    world.board.answer = over_tls(world.certificate, sends(b""))


def tls_version(version):
    """A fault: the service speaks this version alone."""
    def before(world):
        world.other = ScriptedService(*world.certificate, tls_version=version)
        world.addCleanup(world.other.close)
        world.service, world.usual = world.other, world.service
        world.board.peer = world.other.port
    return before


def usual_service(world):
    world.service = world.usual


def broken(name, *chunks, log=(INSECURE,), **options):
    return Cell(name, log=log, before=answers(*chunks), opens=False, **options)


def at_server(name, *options, log, **more):
    return Cell(name, log=log, before=s_server(*options), heal=end_server, opens=False,
                parts=("openssl s_server",), **more)


CELLS = [
    refused("an authority that nobody trusts", other_authority, "unable to get local issuer certificate",
            is_fast=True),
    refused("a certificate that signs itself", self_signed, "self-signed certificate"),
    refused("a certificate for another name", lambda a, _: a.certificate("name", "DNS:elsewhere.example"),
            "hostname mismatch", is_fast=True),
    refused("a certificate for an address alone",
            lambda a, _: a.certificate("address", "IP:127.0.0.1", subject="elsewhere"),
            "hostname mismatch"),
    refused("a certificate for a part of the name", lambda a, _: a.certificate("part", "DNS:local*"),
            "hostname mismatch"),
    refused("a certificate that has expired",
            lambda a, _: a.dated_certificate("old", "20200101000000Z", "20200201000000Z"),
            "certificate has expired", is_fast=True),
    refused("a certificate of the future",
            lambda a, _: a.dated_certificate("future", "20900101000000Z", "20910101000000Z"),
            "certificate is not yet valid"),
    refused("a chain without its middle", lambda a, _: intermediate(a, with_chain=False),
            "unable to get local issuer certificate"),
    refused("a middle that is no authority", lambda a, _: intermediate(a, is_authority=False),
            "invalid CA certificate"),
    refused("a certificate for clients alone", lambda a, _: a.certificate("client", usage="clientAuth"),
            "unsuitable certificate purpose"),
    weak("a weak key", kind="1024"),
    weak("a signature with SHA-1", digest="sha1"),
    Cell("TLS 1.2 alone", before=tls_version(ssl.TLSVersion.TLSv1_2), heal=usual_service, is_fast=True),
    Cell("TLS 1.3 alone", before=tls_version(ssl.TLSVersion.TLSv1_3), heal=usual_service),
    at_server("TLS 1.0 alone", "-tls1", "-cipher", ANYTHING, log=(INSECURE,)),
    at_server("TLS 1.1 alone", "-tls1_1", "-cipher", ANYTHING, log=(INSECURE,)),
    at_server("no cipher in common", "-tls1_2", "-cipher", "aNULL:@SECLEVEL=0", log=(INSECURE,)),
    at_server("a demand for a certificate of ours", "-Verify", "1", "-tls1_2", log=(INSECURE,)),
    at_server("an answer that is a page", log=(
        "Deepgram error: The service refused the web socket: HTTP 200",)),
    Cell("stunnel between", before=stunnel, heal=end_server, parts=("stunnel",)),
    Cell("stunnel that is killed", killed_stunnel,
         ("Deepgram error: The connection to the service was lost",
          "Deepgram error: A message could not be sent: "), before=stunnel, parts=("stunnel",)),
    broken("HTTP without TLS", b"HTTP/1.1 400 Bad Request\r\n\r\n", is_fast=True),
    broken("another protocol", b"SSH-2.0-OpenSSH_9.2p1\r\n"),
    broken("an end before the first byte"),
    broken("an alert", b"\x15\x03\x03\x00\x02\x02\x28", is_fast=True),
    broken("a record beyond the limit", b"\x16\x03\x03\xff\xff" + b"x" * 0xFFFF),
    broken("a warning without end", b"\x15\x03\x03\x00\x02\x01\x5a" * 200),
    Cell("a reset in the handshake", log=(INSECURE,), before=resets, opens=False, is_fast=True),
    Cell("an end of TLS instead of an answer", before=closes_notified, opens=False,
         log=("Deepgram error: The service broke the opening of the web socket off",)),
    Cell("no handshake for five seconds", nothing, (TIMEOUT,), before=hangs, opens=False),
]


class Tls(FaultTest):
    pass


add_cells(Tls, CELLS)
