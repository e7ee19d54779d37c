"""How long clients and drivers are waited for that say nothing. All begin at once, so that the times run together."""

from __future__ import annotations

import os
import socket
from collections.abc import Callable, Iterator
from pathlib import Path

import pytest

from service import Refused, Service
from test_limits import slow_page


class Silent:
    def __init__(self, folder_of: Callable[[str], Path]) -> None:
        self.service = Service(folder_of("clients"), (), {})
        self.gone = slow_page(self.service)
        self.unfinished = [socket.create_connection(("127.0.0.1", self.service.port), timeout=60) for _ in range(200)]
        self.unfinished[0].sendall(b"GET /pad HTTP/1.1\r\nHost:")

        def troubled(trouble: str) -> Service:
            options = ("--driver", os.environ["SCRIBERA_TROUBLED_DRIVER"])
            return Service(folder_of(trouble.replace(" ", "-")), options, {"TROUBLED_DRIVER": trouble})

        self.services = [self.service, troubled("hang"), troubled("hang later")]
        self.opening, self.signing = (service.client() for service in self.services[1:])
        self.open = self.opening.send("open", model="K210", width=1, height=1)
        self.signing.open()
        self.wait = self.signing.send("wait", timeout=60_000)

    def end(self) -> None:
        for one in [self.gone, *self.unfinished]:
            one.close()
        for page in (self.opening, self.signing):
            page.leave()
        for service in self.services:
            service.end()
            assert not os.listdir(service.runtime_folder), "something was left behind"


@pytest.fixture(scope="module")
def silent(tmp_path_factory: pytest.TempPathFactory) -> Iterator[Silent]:
    all_of_them = Silent(lambda name: tmp_path_factory.mktemp(name))
    yield all_of_them
    all_of_them.end()


def test_connections_that_say_nothing_hold_nobody_up(silent: Silent) -> None:
    with silent.service.client() as page:
        assert page.open()


def test_connections_that_say_nothing_are_closed_in_the_end(silent: Silent) -> None:
    for one in silent.unfinished:
        assert one.recv(1) == b""


def test_a_driver_that_hangs_when_it_is_started(silent: Silent) -> None:
    with pytest.raises(Refused) as refused:
        silent.opening.answer(silent.open)
    assert refused.value.type == "worker-failed"
    assert "failed: it does not do what it is told" in silent.services[1].log()


def test_a_driver_that_hangs_while_somebody_signs(silent: Silent) -> None:
    assert silent.signing.until_news("closed")["reason"] == "pad-lost"
    with pytest.raises(Refused) as refused:
        silent.signing.answer(silent.wait)
    assert refused.value.type == "pad-lost"


def test_a_client_that_is_gone_without_a_word_is_left(silent: Silent) -> None:
    received = b""
    while part := silent.gone.recv(4096):
        received += part
    assert received == b"\x89\x00", "it was asked whether it is there"
