"""Clients that ask for more than is good."""

from __future__ import annotations

import json
import os
import resource
import socket
import struct
from pathlib import Path

import pytest
import websockets

from conftest import Start
from service import PAGE, Service, recording, signing
from test_http import UPGRADE, ask, status


def test_a_message_that_is_too_long(service: Service) -> None:
    with service.client() as page:
        page.send_raw(" " * 65536)
        assert page.receive()["error"]["code"] == -32700
        page.send_raw(" " * 65537)
        assert page.until_closed() == 1009


def test_a_binary_message(service: Service) -> None:
    with service.client() as page:
        page.send_raw(b"{}")
        assert page.until_closed() == 1003


def test_a_flood(service: Service) -> None:
    with service.client() as page, service.client() as other:
        page.open()
        try:
            for number in range(2000):
                page.send_raw(json.dumps({"jsonrpc": "2.0", "id": number, "method": "device"}))
        except websockets.ConnectionClosed:
            pass
        assert page.until_closed() == 1008
        assert other.open("K420")
    assert "asks for too much" in service.log()


def test_as_many_at_once_as_may_be(service: Service) -> None:
    with service.client() as page:
        page.open()
        numbers = [page.send("device") for _ in range(150)]
        assert all(page.answer(number)["pad"] for number in numbers)


def test_the_33rd_connection(service: Service) -> None:
    pages = [service.client() for _ in range(32)]
    refused = ask(service, "/pad", {"Origin": PAGE, **UPGRADE})
    assert refused.status == 503
    assert status(service, "/health") == 200
    assert pages[0].open()
    pages[1].leave()
    while True:
        try:
            with service.client() as page:
                assert page.open("K420")
            break
        except websockets.InvalidStatusCode as error:  # the service has not seen the end of the other one
            assert error.status_code == 503
    for page in pages:
        page.leave()


def test_a_thousand_connections(service: Service) -> None:
    soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (min(4096, hard), hard))
    request = "GET /pad HTTP/1.1\r\nHost: 127.0.0.1:%d\r\nOrigin: %s\r\n" % (service.port, PAGE)
    request += "".join(f"{name}: {value}\r\n" for name, value in UPGRADE.items()) + "\r\n"
    sockets = [socket.create_connection(("127.0.0.1", service.port), timeout=60) for _ in range(1000)]
    for one in sockets:
        one.sendall(request.encode())
    answers = [one.recv(65536)[:12] for one in sockets]
    assert answers.count(b"HTTP/1.1 101") == 32
    assert answers.count(b"HTTP/1.1 503") == 968
    for one in sockets:
        one.close()
    resource.setrlimit(resource.RLIMIT_NOFILE, (soft, hard))
    assert status(service, "/health") == 200


def slow_page(service: Service) -> socket.socket:
    """A WebSocket by hand, with a small window, which reads when it is told to."""
    one = socket.socket()
    one.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
    one.settimeout(60)
    one.connect(("127.0.0.1", service.port))
    request = "GET /pad HTTP/1.1\r\nHost: 127.0.0.1:%d\r\nOrigin: %s\r\n" % (service.port, PAGE)
    one.sendall((request + "".join(f"{name}: {value}\r\n" for name, value in UPGRADE.items()) + "\r\n").encode())
    head = b""
    while not head.endswith(b"\r\n\r\n"):
        head += one.recv(1)
    assert head.startswith(b"HTTP/1.1 101")
    return one


def send_frame(one: socket.socket, text: str) -> None:
    size = bytes([0x80 | len(text)]) if len(text) < 126 else struct.pack(">BH", 0x80 | 126, len(text))
    one.sendall(b"\x81" + size + bytes(4) + text.encode())


def received_until(one: socket.socket, text: bytes) -> bool:
    received = b""
    while text not in received[-2**20:] and (part := one.recv(2**20)):
        received += part
    return text in received[-2**20:]


def assert_growth(service: Service, before: int, limit: int) -> None:
    """The runtimes of sanitizers keep what was given back."""
    if not os.environ.get("SCRIBERA_SANITIZER"):
        assert service.memory() - before < limit


def test_a_reader_that_does_not_read(start: Start, tmp_path: Path) -> None:
    """Pictures are not made ahead for whoever does not take them, and points are kept once."""
    stroke = [(0, 500, 500, 900, 0), *[(5, 500 + step, 600, 900, 1) for step in range(2000)], (5, 600, 600, 0, 2)]
    service = start(**signing(SCRIBERA_SIM_RECORDING=recording(tmp_path, stroke), SCRIBERA_SIM_LOOP="1"))
    before = service.memory()
    one = slow_page(service)
    send_frame(one, json.dumps({"jsonrpc": "2.0", "id": 1, "method": "open",
                                "params": {"model": "K210", "width": 2000, "height": 2000}}))
    for number in range(2, 150):
        send_frame(one, json.dumps({"jsonrpc": "2.0", "id": number, "method": "image", "params": {"format": "bmp"}}))
    with service.client(is_flooded=True) as other:
        other.open("K420")
        other.until(lambda: len(other.points) > 20_000)
    picture = 2000 * 2000 * 4
    assert_growth(service, before, 4 * picture)
    assert received_until(one, b'"id":3,'), "it is served as far as it reads"
    one.close()


def test_many_points(start: Start, tmp_path: Path) -> None:
    """None is missing, and nothing grows but the points: a million at full length."""
    many = 1_000_000 if os.environ.get("SCRIBERA_FULL_LENGTH") == "yes" else 50_000
    stroke = [(0, 500, 500, 900, 0), *[(5, 500 + step, 600, 900, 1) for step in range(2000)], (5, 600, 600, 0, 2)]
    service = start(**signing(SCRIBERA_SIM_RECORDING=recording(tmp_path, stroke), SCRIBERA_SIM_LOOP="1"))
    before = service.memory()
    with service.client(is_flooded=True) as page:
        page.open()
        page.until(lambda: len(page.points) >= many)
        total = page.ask("points", **{"from": 0, "count": 1})["total"]
        assert_growth(service, before, 24 * total + 2**22)


@pytest.mark.parametrize("frame", [b"\x81\x05hello", b"\xf1\x80" + bytes(4), b"\x83\x80" + bytes(4),
                                   b"\x81\xff" + b"\xff" * 8 + bytes(4), b"\x89\xfe\xff\xff" + bytes(4),
                                   b"\x81\x82" + bytes(4) + b"\xff\xfe", b"\x80\x80" + bytes(4),
                                   b"\x88\x81" + bytes(5)])
def test_broken_frames(service: Service, frame: bytes) -> None:
    one = slow_page(service)
    one.sendall(frame)
    answer = b""
    try:
        while part := one.recv(4096):
            answer += part
            if answer.startswith(b"\x88") and len(answer) >= 2 + answer[1]:
                break
    except ConnectionResetError:
        pass
    assert answer == b"" or answer[0] == 0x88, "a close frame or the end"
    one.close()
    with service.client() as page:
        assert page.open()
