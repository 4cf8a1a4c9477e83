# SPDX-License-Identifier: MIT

"""Answers to the request that opens the web socket."""

from cell import Cell
from fault_test import FaultTest, add_cells
from faults import steps, waits
from peers import free_port, over_tls, sends, start_server

REFUSED = "Deepgram error: The service refused the web socket: HTTP "
BROKEN = "Deepgram error: The service broke the opening of the web socket off"
TIMEOUT = "Deepgram WS open timeout (5s) — connect failed"
OPEN = (b"HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
        b"Sec-WebSocket-Accept: %ACCEPT%\r\n\r\n")


def answers(response):
    """A fault: the service sends these bytes instead of an orderly answer."""
    def before(world):
        world.board.answer = over_tls(world.certificate, sends(response))
    return before


def status(code, reason, body=b"", fields=b""):
    return (f"HTTP/1.1 {code} {reason}\r\n".encode() + fields
            + f"Content-Length: {len(body)}\r\n\r\n".encode() + body)


def refused(name, response, log, **options):
    return Cell(name, before=answers(response), opens=False, log=log, **options)


STATUSES = ((301, "Moved Permanently"), (400, "Bad Request"), (401, "Unauthorized"),
            (402, "Payment Required"), (403, "Forbidden"), (404, "Not Found"),
            (408, "Request Timeout"), (413, "Payload Too Large"), (426, "Upgrade Required"),
            (429, "Too Many Requests"), (500, "Internal Server Error"), (502, "Bad Gateway"),
            (503, "Service Unavailable"), (504, "Gateway Timeout"))

NGINX = """daemon off; pid {folder}/nginx.pid; error_log stderr; worker_processes 1;
events {{ worker_connections 64; }}
http {{
  access_log off;
  client_body_temp_path {folder}/n1; proxy_temp_path {folder}/n2; fastcgi_temp_path {folder}/n3;
  uwsgi_temp_path {folder}/n4; scgi_temp_path {folder}/n5;
  server {{
    listen 127.0.0.1:{port} ssl; ssl_certificate {chain}; ssl_certificate_key {key};
    location / {{
      proxy_pass https://127.0.0.1:{peer}; proxy_http_version 1.1;
      proxy_set_header Upgrade $http_upgrade; proxy_set_header Connection "upgrade";
      {extra}
    }}
  }}
}}
"""

HAPROXY = """global
  maxconn 50
defaults
  mode http
  timeout connect 1s
  timeout client 20s
  timeout server {server}
  timeout tunnel {tunnel}
frontend f
  bind 127.0.0.1:{port} ssl crt {pair}
  default_backend b
backend b
  server s 127.0.0.1:{peer} ssl verify none {check}
"""


def nginx(extra="", peer=None):
    """A fault: nginx stands between, with `extra` in its configuration."""
    def before(world):
        port, (key, chain) = free_port(), world.certificate
        config = world.desktop.folder / f"nginx-{port}.conf"
        config.write_text(NGINX.format(folder=world.desktop.folder, port=port, chain=chain, key=key,
                                       peer=peer or world.service.port, extra=extra))
        world.server = start_server(world.desktop, ["nginx", "-c", config], port)
        world.board.peer = port
    return before


def haproxy(server="20s", tunnel="60s", peer=None):
    """A fault: HAProxy stands between, with these times."""
    def before(world):
        port, (key, chain) = free_port(), world.certificate
        pair = world.desktop.folder / "pair.pem"
        pair.write_text(key.read_text() + chain.read_text())
        config = world.desktop.folder / f"haproxy-{port}.conf"
        config.write_text(HAPROXY.format(port=port, pair=pair, peer=peer or world.service.port,
                                         server=server, tunnel=tunnel, check=""))
        world.server = start_server(world.desktop, ["haproxy", "-f", config], port)
        world.board.peer = port
    return before


def end_server(world):
    world.desktop.end(world.server)


def wait_for_loss(world):
    world.wait_for_lines("Deepgram error: ")


def late(seconds):
    def before(world):
        world.service.answer_delay = seconds
    return before


LOST = "Deepgram error: The connection to the service was lost"
UNSENT = "Deepgram error: A message could not be sent: "

CELLS = [
    *(refused(f"status {code}", status(code, reason), (f"{REFUSED}{code} {reason}",),
              is_fast=code in (401, 503)) for code, reason in STATUSES),
    refused("status 401 with a reason in the body",
            status(401, "Unauthorized", b'{"err_msg":"Invalid credentials."}'),
            (REFUSED + '401 Unauthorized: {"err_msg":"Invalid credentials."}',), is_fast=True),
    refused("a body with line breaks and control characters",
            status(400, "Bad Request", b"one\r\ntwo\x1b[31m\x00three"), (REFUSED + "400 Bad Request: one",),
            is_fast=True),
    refused("a body of a megabyte", status(500, "Internal Server Error", b"x" * (1 << 20)),
            ("Deepgram error: ",)),
    refused("a chunked body", b"HTTP/1.1 403 Forbidden\r\nTransfer-Encoding: chunked\r\n\r\n"
            b"5\r\nhello\r\n0\r\n\r\n", (REFUSED + "403 Forbidden: hello",)),
    refused("no status text", status(403, ""), (REFUSED + "403",)),
    refused("an unknown status", status(599, "Odd"), (REFUSED + "599",)),
    refused("a wrong Sec-WebSocket-Accept", OPEN.replace(b"%ACCEPT%", b"AAAAAAAAAAAAAAAAAAAAAAAAAAA="),
            (BROKEN,), is_fast=True),
    refused("no Sec-WebSocket-Accept", OPEN.replace(b"Sec-WebSocket-Accept: %ACCEPT%\r\n", b""),
            (BROKEN,)),
    refused("no Upgrade field", OPEN.replace(b"Upgrade: websocket\r\n", b""), (BROKEN,)),
    refused("no Connection field", OPEN.replace(b"Connection: Upgrade\r\n", b""), (BROKEN,)),
    refused("an upgrade of HTTP/1.0", OPEN.replace(b"1.1 101", b"1.0 101"), (BROKEN,)),
    refused("no HTTP at all", b"\x00\x01\x02 nonsense\r\n\r\n", (BROKEN,), is_fast=True),
    refused("a header that breaks off", b"HTTP/1.1 101 Switching", (BROKEN,)),
    refused("an end instead of an answer", b"", (BROKEN,), is_fast=True),
    refused("a header without an end", b"HTTP/1.1 200 OK\r\n" + b"X-Padding: 0123456789\r\n" * 20_000,
            (BROKEN,)),
    refused("a field with a NUL", b"HTTP/1.1 200 OK\r\nX-A: a\x00b\r\n\r\n", (BROKEN,)),
    Cell("an answer after two seconds", before=late(2), is_fast=True),
    Cell("no answer for five seconds", before=late(6), opens=False, log=(TIMEOUT,)),
    Cell("nginx as a reverse proxy", before=nginx(), heal=end_server, parts=("nginx",)),
    Cell("nginx whose service is down", before=nginx(peer=1), heal=end_server, opens=False,
         log=(REFUSED + "502 Bad Gateway",), parts=("nginx",)),
    Cell("nginx that knows no such path", before=nginx("return 404;"), heal=end_server, opens=False,
         log=(REFUSED + "404 Not Found",), parts=("nginx",)),
    Cell("nginx with a short timeout",
         before=nginx("proxy_read_timeout 1s;"), heal=end_server, fault=waits(1.5),
         parts=("nginx",)),
    Cell("nginx that is killed",
         before=nginx(), fault=lambda world: (end_server(world), wait_for_loss(world)),
         log=(LOST, UNSENT), parts=("nginx",)),
    Cell("HAProxy as a reverse proxy", before=haproxy(), heal=end_server, parts=("HAProxy",)),
    Cell("HAProxy whose service is down", before=haproxy(peer=1), heal=end_server, opens=False,
         log=(REFUSED + "503 Service Unavailable",), parts=("HAProxy",)),
    Cell("HAProxy whose service is silent", before=steps(late(3), haproxy(server="1s")), heal=end_server,
         opens=False, log=(REFUSED + "504 Gateway Time-out",), parts=("HAProxy",)),
    Cell("HAProxy that cuts an idle tunnel",
         before=haproxy(tunnel="1s"), heal=end_server, fault=waits(1.5),
         parts=("HAProxy",)),
]


class Upgrade(FaultTest):
    pass


add_cells(Upgrade, CELLS)
