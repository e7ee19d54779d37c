"""How long clients are waited for that say nothing. All of them come at the beginning, so that the times run together."""

from __future__ import annotations

import os
import socket
from collections.abc import Iterator
from pathlib import Path

import pytest

from service import Service
from test_limits import slow_page


class Silent:
    def __init__(self, service: Service) -> None:
        self.service = service
        self.gone = slow_page(service)
        self.unfinished = [socket.create_connection(("127.0.0.1", service.port), timeout=60) for _ in range(200)]
        self.unfinished[0].sendall(b"GET /pad HTTP/1.1\r\nHost:")


@pytest.fixture(scope="module")
def silent(tmp_path_factory: pytest.TempPathFactory) -> Iterator[Silent]:
    folder: Path = tmp_path_factory.mktemp("service")
    service = Service(folder, (), {})
    clients = Silent(service)
    yield clients
    for one in [clients.gone, *clients.unfinished]:
        one.close()
    service.end()
    assert not os.listdir(service.runtime_folder), "something was left behind"


def test_connections_that_say_nothing_hold_nobody_up(silent: Silent) -> None:
    with silent.service.client() as page:
        assert page.open()


def test_connections_that_say_nothing_are_closed_in_the_end(silent: Silent) -> None:
    for one in silent.unfinished:
        assert one.recv(1) == b""


def test_a_client_that_is_gone_without_a_word_is_left(silent: Silent) -> None:
    received = b""
    while part := silent.gone.recv(4096):
        received += part
    assert received == b"\x89\x00", "it was asked whether it is there"
