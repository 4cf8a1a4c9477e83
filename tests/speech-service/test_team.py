#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The server for a team, as docs/hosting.md describes it: the page's own configuration of nginx."""

import asyncio
import json
import os
import pathlib
import re
import shutil
import socket
import ssl
import subprocess
import tempfile
import textwrap
import time
import unittest

import websockets

TOP = pathlib.Path(__file__).resolve().parents[2]
SERVICE = pathlib.Path(os.environ["TARVIK_BINARIES"]) / "tarvik-speech-service"
QUERY = "?encoding=linear16&sample_rate=16000&punctuate=true"
NGINX = """daemon off; pid {folder}/nginx.pid; error_log stderr; worker_processes 2;
events {{ worker_connections 64; }}
http {{
    access_log off;
    client_body_temp_path {folder}/n1; proxy_temp_path {folder}/n2; fastcgi_temp_path {folder}/n3;
    uwsgi_temp_path {folder}/n4; scgi_temp_path {folder}/n5;
{servers}
}}
"""


def blocks_of_the_page():
    """The configurations of nginx in the page: a machine's proxy and the balancer."""
    page = (TOP / "docs/hosting.md").read_text()
    found = re.findall(r"(?m)^    (?:upstream|server) [a-z]* ?\{\n(?:    .*\n|\n(?=    ))*", page)
    return [textwrap.dedent(block) for block in found]


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as listener:
        return listener.getsockname()[1]


def wait_for(port):
    deadline = time.monotonic() + 30
    while time.monotonic() < deadline:
        try:
            socket.create_connection(("127.0.0.1", port)).close()
            return
        except ConnectionRefusedError:
            time.sleep(0.05)
    raise AssertionError(f"nobody listens on {port}")


def spoken(text):
    wave = subprocess.run(["flite", "-voice", "slt", "-t", text, "-o", "/dev/stdout"],
                          check=True, capture_output=True).stdout
    return wave[44:] + bytes(16000)


class Team(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        # The workers of nginx have another user.
        self.folder.chmod(0o755)
        subprocess.run(
            ["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "1",
             "-subj", "/CN=speech.example.org", "-addext", "subjectAltName=DNS:speech.example.org",
             "-keyout", self.folder / "speech.key", "-out", self.folder / "speech.pem"],
            check=True, capture_output=True)
        (self.folder / "keys").write_text("# the team\nalpha\nbeta\n")

    def start(self, *command):
        process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        self.addCleanup(process.wait)
        self.addCleanup(process.terminate)
        self.addCleanup(process.stdout.close)
        return process

    def start_service(self, name, streams):
        """Starts a service; returns its port and its authority."""
        state = self.folder / name
        service = self.start(SERVICE, "--port", "0", "--state-directory", state,
                             "--keys", self.folder / "keys", "--max-streams", str(streams))
        port = re.search(r":(\d+)/", service.stdout.readline())[1]
        return port, state / "ca.pem"

    def on_this_machine(self, block, port):
        """A block of the page, with this test's port and certificate."""
        return (block.replace("listen 443", f"listen 127.0.0.1:{port}")
                .replace("/etc/ssl/speech", str(self.folder / "speech")))

    def proxy(self, name, streams):
        """A machine of the team; returns its port and its block."""
        behind, authority = self.start_service(name, streams)
        port = free_port()
        block = (self.on_this_machine(blocks_of_the_page()[0], port)
                 .replace("127.0.0.1:8443", f"127.0.0.1:{behind}")
                 .replace("/var/lib/tarvik-speech-service/ca.pem", str(authority)))
        return port, block

    def start_nginx(self, *servers, port):
        config = self.folder / "nginx.conf"
        config.write_text(NGINX.format(folder=self.folder, servers="\n".join(servers)))
        self.start("nginx", "-c", config)
        wait_for(port)

    def open(self, port, key):
        trust = ssl.create_default_context(cafile=self.folder / "speech.pem")
        return websockets.connect(
            f"wss://speech.example.org:{port}/v1/listen{QUERY}", ssl=trust, host="127.0.0.1",
            server_hostname="speech.example.org", subprotocols=["token", key])

    async def refusal(self, port, key):
        with self.assertRaises(websockets.InvalidStatusCode) as refused:
            await self.open(port, key)
        return refused.exception

    async def dictate(self, port, key, sound):
        async with self.open(port, key) as stream:
            await stream.send(sound)
            await stream.send('{"type":"CloseStream"}')
            messages = [json.loads(text) async for text in stream]
        return " ".join(message["channel"]["alternatives"][0]["transcript"]
                        for message in messages if message["type"] == "Results")

    def test_the_proxy_serves_those_who_have_a_key(self):
        port, block = self.proxy("one", 4)
        self.start_nginx(block, port=port)
        heard = asyncio.run(self.dictate(port, "alpha", spoken("thank you for your letter")))
        self.assertEqual(heard, "Thank you for your letter.")
        refused = asyncio.run(self.refusal(port, "gamma"))
        self.assertEqual(refused.status_code, 401)
        self.assertEqual(refused.headers["dg-error"], "The key is not known here")

    def test_the_balancer_finds_the_machine_that_has_room(self):
        first, one = self.proxy("one", 1)
        second, two = self.proxy("two", 1)
        port = free_port()
        balancer = (self.on_this_machine(blocks_of_the_page()[1], port)
                    .replace("one.example.org:443", f"127.0.0.1:{first}")
                    .replace("two.example.org:443", f"127.0.0.1:{second}"))
        self.start_nginx(one, two, balancer, port=port)

        async def check():
            for _ in range(3):
                async with self.open(port, "alpha"), self.open(port, "beta"):
                    refused = await self.refusal(port, "alpha")
                    self.assertEqual(refused.status_code, 429)
                    self.assertIn("Too many streams", refused.headers["dg-error"])
                # Both machines notice that their streams have ended.
                deadline = time.monotonic() + 30
                while time.monotonic() < deadline:
                    try:
                        async with self.open(port, "alpha"), self.open(port, "beta"):
                            break
                    except websockets.InvalidStatusCode:
                        await asyncio.sleep(0.1)
                else:
                    self.fail("no machine has room again")

        asyncio.run(check())


if __name__ == "__main__":
    unittest.main()
