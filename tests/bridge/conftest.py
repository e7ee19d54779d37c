"""Every test starts a service of its own on a port that is free, in a folder of its own, with the simulated pad."""

from __future__ import annotations

import os
from collections.abc import Callable, Iterator
from pathlib import Path

import pytest

from service import Service

Start = Callable[..., Service]


@pytest.fixture
def start(tmp_path: Path) -> Iterator[Start]:
    services: list[Service] = []

    def start_service(*options: str, **environment: str) -> Service:
        folder = tmp_path / f"service-{len(services)}"
        folder.mkdir()
        services.append(Service(folder, options, environment))
        return services[-1]

    yield start_service
    for service in services:
        service.end()
        assert not os.listdir(service.runtime_folder), "something was left behind"


@pytest.fixture
def service(start: Start) -> Service:
    return start()
