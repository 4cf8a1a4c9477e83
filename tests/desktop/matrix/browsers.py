# SPDX-License-Identifier: MIT

"""Browsers with a page of a server on loopback. The page keeps the journal."""

import http.server
import json
import pathlib
import queue
import threading
import time

from matrix.rows import Row, utf16_units

PAGE = pathlib.Path(__file__).with_name("page.html")
TIMEOUT = 60


class PageServer:
    """Serves the page, writes its journal and hands it commands."""

    def __init__(self, journal):
        self._journal = journal
        self._commands = queue.Queue()
        self._answers = queue.Queue()
        self._number = 0
        server = self

        class Handler(http.server.BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def do_GET(self):
                self._reply(server.command() if self.path == "/command" else PAGE.read_bytes())

            def do_POST(self):
                body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
                server.take(self.path, body)
                self._reply(b"")

            def _reply(self, body):
                self.send_response(200)
                self.send_header("Content-Type", "text/html; charset=utf-8")
                self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body)

            def log_message(self, *_):
                pass

        class Server(http.server.ThreadingHTTPServer):
            def handle_error(self, *_):
                pass  # A browser that ends resets its connections.

        self._server = Server(("127.0.0.1", 0), Handler)
        self._server.daemon_threads = True
        threading.Thread(target=self._server.serve_forever, daemon=True).start()
        self.address = f"http://127.0.0.1:{self._server.server_port}"

    def command(self):
        return self._commands.get().encode()

    def take(self, path, body):
        if path == "/events":
            self._write(json.loads(body))
        elif path == f"/done/{self._number}":
            # A browser may send an answer twice, and the second one must not count as the next.
            self._answers.put(body.decode("utf-8", "replace"))

    def _write(self, events):
        # The page knows the time of day alone.
        offset = time.time_ns() - time.monotonic_ns()
        lines = "".join(f"{kind} {int(stamp * 1e6) - offset} {length}\n"
                        for kind, stamp, length in events)
        with open(self._journal, "a", encoding="ascii") as file:
            file.write(lines)

    def wait_until_ready(self):
        self._answers.get(timeout=60)

    def tell(self, command):
        """Has the page carry a command out; returns the text that it has then, or the number of its
        sizes so far if that was the command."""
        self._number += 1
        self._commands.put(f"{self._number} {command}")
        return self._answers.get(timeout=TIMEOUT)

    def close(self):
        self._server.shutdown()
        self._server.server_close()


class Browser(Row):
    page = "field"
    paints = True
    length = staticmethod(utf16_units)
    stamped = "inside the page, by its input event; the browser rounds the time to 0.1 ms or 1 ms"

    def __init__(self, desktop):
        super().__init__(desktop)
        self._server = PageServer(self.path)
        self.target = self.program_target(desktop, "browser-target.*",
                                          self.command(f"{self._server.address}/{self.page}"))
        self._server.wait_until_ready()

    def command(self, address):
        raise NotImplementedError

    @property
    def text(self):
        return self._server.tell("publish")

    def clear(self):
        self._server.tell("clear")

    def close(self):
        super().close()
        self._server.close()


# No page of the browser's own, no question, no network.
FIREFOX_SETTINGS = {
    "app.normandy.enabled": False, "app.update.enabled": False,
    "browser.aboutwelcome.enabled": False, "browser.shell.checkDefaultBrowser": False,
    "browser.startup.homepage_override.mstone": "ignore", "browser.tabs.warnOnClose": False,
    "datareporting.policy.dataSubmissionEnabled": False, "extensions.update.enabled": False,
    "network.captive-portal-service.enabled": False, "network.connectivity-service.enabled": False,
    "privacy.reduceTimerPrecision": False, "services.settings.server": "http://127.0.0.1:1",
    "toolkit.telemetry.reportingpolicy.firstRun": False, "termsofuse.bypassNotification": True,
}


def firefox_command(desktop, address):
    profile = desktop.folder / "firefox"
    profile.mkdir()
    (profile / "user.js").write_text("".join(
        f"user_pref({json.dumps(name)}, {json.dumps(value)});\n"
        for name, value in FIREFOX_SETTINGS.items()))
    return ["firefox-esr", "--no-remote", "--profile", str(profile), address]


def chromium_command(desktop, address, *options):
    # The sandbox refuses to run as root.
    return ["chromium", "--no-sandbox", "--no-first-run", "--disable-background-networking",
            "--disable-component-update", "--password-store=basic", *options,
            f"--user-data-dir={desktop.folder / 'chromium'}", f"--app={address}"]


class Firefox(Browser):
    program = "firefox-esr"

    def command(self, address):
        return firefox_command(self.desktop, address)


class FirefoxEditable(Firefox):
    page = "contenteditable"


class Chromium(Browser):
    program = "chromium"
    options = ()

    def command(self, address):
        return chromium_command(self.desktop, address, *self.options)


class ChromiumAccessible(Chromium):
    options = ("--force-renderer-accessibility",)
