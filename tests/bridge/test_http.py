"""Who is let in, and what is served."""

from __future__ import annotations

import http.client
import json
import os
import re
import socket
import subprocess
import sys

import pytest
import websockets

from conftest import Start
from service import PAGE, Service

UPGRADE = {
    "Connection": "Upgrade", "Upgrade": "websocket", "Sec-WebSocket-Version": "13",
    "Sec-WebSocket-Key": "MDEyMzQ1Njc4OWFiY2RlZg==", "Sec-WebSocket-Protocol": "scribera-pad.1",
}


def ask(
    service: Service, path: str, headers: dict[str, str] | None = None, method: str = "GET", host: str = "127.0.0.1"
) -> http.client.HTTPResponse:
    connection = http.client.HTTPConnection(host, service.port, timeout=60)
    connection.request(method, path, headers=headers or {})
    response = connection.getresponse()
    response.content = response.read()  # type: ignore[attr-defined]
    return response


def status(service: Service, path: str, headers: dict[str, str] | None = None, method: str = "GET") -> int:
    return ask(service, path, headers, method).status


def raw(service: Service, request: bytes) -> bytes:
    with socket.create_connection(("127.0.0.1", service.port), timeout=60) as connection:
        connection.sendall(request)
        answer = b""
        while part := connection.recv(65536):
            answer += part
        return answer


@pytest.mark.parametrize("host", ["127.0.0.1", "::1", "localhost"])
def test_tells_that_it_is_there(service: Service, host: str) -> None:
    health = ask(service, "/health", host=host)
    assert health.status == 200
    told = json.loads(health.content)
    assert told["service"] == "scribera-bridge" and told["protocol"] == "scribera-pad.1"
    assert re.fullmatch(r"\d+\.\d+\.\d+", told["version"])


def test_serves_the_client_and_an_example(service: Service) -> None:
    client = ask(service, "/scribera-pad.js")
    assert client.status == 200 and client.getheader("Content-Type") == "text/javascript; charset=utf-8"
    assert b"export class Pad" in client.content
    examples = [ask(service, path) for path in ("/example", "/example?model=K420")]
    nonces = set()
    for example in examples:
        policy = example.getheader("Content-Security-Policy") or ""
        nonce = re.search(r"script-src 'self' 'nonce-([\w-]{43})'", policy)
        assert nonce and "default-src 'none'" in policy and "frame-ancestors 'none'" in policy
        assert "unsafe" not in policy and "*" not in policy
        inline = re.findall(rb"<(?:script|style)[^>]*>", example.content)
        assert inline and all(f'nonce="{nonce[1]}"'.encode() in tag for tag in inline)
        nonces.add(nonce[1])
    assert len(nonces) == 2


@pytest.mark.parametrize("path", ["/health", "/example", "/scribera-pad.js", "/nothing"])
def test_every_answer_is_closed_to_others(service: Service, path: str) -> None:
    answer = ask(service, path)
    assert "default-src 'none'" in (answer.getheader("Content-Security-Policy") or "")
    assert answer.getheader("X-Content-Type-Options") == "nosniff"
    assert answer.getheader("Access-Control-Allow-Origin") is None


def test_head_has_no_body(service: Service) -> None:
    head = ask(service, "/health", method="HEAD")
    assert head.status == 200 and head.content == b"" and int(head.getheader("Content-Length") or 0) > 0


@pytest.mark.parametrize("method", ["POST", "PUT", "DELETE", "OPTIONS", "TRACE"])
def test_nothing_can_be_done_by_http(service: Service, method: str) -> None:
    assert status(service, "/health", method=method) == 405


@pytest.mark.parametrize(
    "path",
    ["/", "/../../../../etc/passwd", "/%2e%2e/%2e%2e/etc/passwd", "/example/..", "//health", "/health/", "/pad/../health",
     "/scribera-pad.js%00.html", "http://127.0.0.1/health", "/\\..\\etc"],
)
def test_paths_are_names_of_nothing(service: Service, path: str) -> None:
    assert status(service, path) in (400, 403, 404)


@pytest.mark.parametrize(
    "host",
    ["evil.example", "evil.example:{port}", "127.0.0.1.evil.example:{port}", "127.0.0.1", "127.0.0.1:1", "localhost",
     "localhost:{port}.", "0.0.0.0:{port}", "127.0.0.2:{port}", "[::]:{port}", "user@127.0.0.1:{port}", "127.0.0.1:0{port}",
     "127.0.0.1:{port}:{port}", "2130706433:{port}", "localhost.:{port}", ""],
)
def test_answers_to_its_own_name_alone(service: Service, host: str) -> None:
    given = host.format(port=service.port)
    assert status(service, "/health", {"Host": given}) == 403
    assert status(service, "/pad", {"Host": given, "Origin": PAGE, **UPGRADE}) == 403


def test_no_host_and_two_hosts(service: Service) -> None:
    host = f"Host: 127.0.0.1:{service.port}\r\n".encode()
    for headers in (b"", host + b"Host: evil.example\r\n", host + host):
        answer = raw(service, b"GET /health HTTP/1.1\r\n" + headers + b"\r\n")
        assert answer.startswith(b"HTTP/1.1 403") or answer.startswith(b"HTTP/1.1 400")


ALLOWED = ["http://localhost", "http://localhost:3000", "https://127.0.0.1:8443", "http://[::1]:99", "https://bank.example",
           "https://counter.bank.example:8443"]
REFUSED = ["null", "", "https://evil.example", "http://bank.example", "https://bank.example:444", "https://bank.example.evil",
           "https://evil.example/https://bank.example", "https://bank.example@evil.example", "https://counter.bank.example",
           "https://sub.bank.example", "file://", "http://localhost.evil.example", "http://127.0.0.1.evil.example",
           "http://127.0.0.2", "chrome-extension://abcdef", "https://bank.example/", "https://bank.example, https://evil.example",
           "http://0x7f000001", "https://*.bank.example", "HTTP://LOCALHOST:x"]
PAGES = ("--allow-origin", "https://bank.example", "--allow-origin", "https://Counter.Bank.example:8443")


@pytest.mark.parametrize("origin", ALLOWED)
def test_pages_that_are_allowed(start: Start, origin: str) -> None:
    service = start(*PAGES)
    assert ask(service, "/health", {"Origin": origin}).getheader("Access-Control-Allow-Origin") == origin
    with service.client(origin=origin) as page:
        assert page.open()


def test_pages_that_are_not_allowed(start: Start) -> None:
    service = start(*PAGES)
    for origin in REFUSED:
        for path, headers in (("/health", {}), ("/pad", UPGRADE), ("/example", {}), ("/nothing", {})):
            answer = ask(service, path, {"Origin": origin, **headers})
            assert answer.status == 403, (origin, path)
            assert answer.getheader("Access-Control-Allow-Origin") is None
    assert not service.workers()


def test_two_origins(service: Service) -> None:
    request = f"GET /health HTTP/1.1\r\nHost: 127.0.0.1:{service.port}\r\nOrigin: {PAGE}\r\nOrigin: {PAGE}\r\n\r\n"
    assert raw(service, request.encode()).startswith(b"HTTP/1.1 403")


def test_loopback_pages_can_be_refused(start: Start) -> None:
    service = start("--no-loopback-pages", "--allow-origin", "http://localhost:3000")
    assert status(service, "/health", {"Origin": PAGE}) == 403
    assert status(service, "/health", {"Origin": "http://localhost:3000"}) == 200


def test_a_websocket_needs_an_origin(start: Start) -> None:
    assert status(start(), "/pad", UPGRADE) == 403
    with start("--allow-no-origin").client(origin=None) as program:
        assert program.open()


@pytest.mark.parametrize("protocol", ["", "scribera-pad.2", "scribera-pad.10", "chat"])
def test_another_protocol_is_refused(service: Service, protocol: str) -> None:
    headers = {**UPGRADE, "Origin": PAGE}
    if protocol:
        headers["Sec-WebSocket-Protocol"] = protocol
    else:
        del headers["Sec-WebSocket-Protocol"]
    assert status(service, "/pad", headers) == 400


def test_one_of_several_protocols(service: Service) -> None:
    with service.client(subprotocols=("scribera-pad.2", "scribera-pad.1")) as page:
        assert page.open()


def test_the_pad_is_a_websocket(service: Service) -> None:
    assert status(service, "/pad", {"Origin": PAGE}) == 426
    assert status(service, "/health", {"Origin": PAGE, **UPGRADE}) == 200
    with pytest.raises(websockets.InvalidStatusCode):
        service.client(origin="https://evil.example")


@pytest.mark.skipif(os.geteuid() != 0, reason="another user's program is needed")
def test_other_users_are_refused(service: Service) -> None:
    program = (
        "import http.client, sys\n"
        "connection = http.client.HTTPConnection(sys.argv[1], int(sys.argv[2]), timeout=60)\n"
        "connection.request('GET', '/health')\n"
        "print(connection.getresponse().status)\n"
    )
    for host in ("127.0.0.1", "::1"):
        for user, expected in ((65534, "403"), (0, "200")):
            told = subprocess.run(
                [sys.executable, "-c", program, host, str(service.port)], user=user, capture_output=True, text=True,
                timeout=60,
            )
            assert told.stdout.strip() == expected, told.stderr


@pytest.mark.parametrize(
    "request_text", [b"\r\n\r\n", b"GARBAGE\r\n\r\n", b"GET /health HTTP/9.9\r\n\r\n", b"GET /health HTTP/1.1\r\nHost\r\n\r\n",
                     b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03" + bytes(300),
                     b"GET /health HTTP/1.1\r\nA: " + b"a" * 9000 + b"\r\n\r\n",
                     b"GET /health HTTP/1.1\r\n" + b"A: b\r\n" * 2000 + b"\r\n",
                     b"POST /health HTTP/1.1\r\nContent-Length: 99999999999999999999\r\n\r\n"],
)
def test_nonsense_is_refused(service: Service, request_text: bytes) -> None:
    answer = b""
    try:
        answer = raw(service, request_text)
    except ConnectionResetError:
        pass
    assert answer == b"" or answer.startswith(b"HTTP/1.1 400")
    assert status(service, "/health") == 200
