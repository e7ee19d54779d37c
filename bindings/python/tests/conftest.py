"""Each test runs in a process of its own, since a process has one pad, and in a directory of its own that
holds the simulated pad as the driver. The library and the driver come from the environment."""

from __future__ import annotations

import faulthandler
import json
import os
import signal
import sys
import tempfile
from collections.abc import Iterator
from pathlib import Path

import pytest
from _pytest.runner import runtestprotocol

from simulator import Simulator

TIME_LIMIT_SECONDS = 180


def given_path(name: str) -> Path:
    value = os.environ.get(name)
    if not value or not Path(value).is_file():
        raise pytest.UsageError(f"{name} has to name a file, but is {value!r}")
    return Path(value).resolve()


def pytest_configure(config: pytest.Config) -> None:
    for name in ("SCRIBERA_LIBRARY", "SCRIBERA_DRIVER"):
        os.environ[name] = str(given_path(name))
    for name in [name for name in os.environ if name.startswith("SCRIBERA_SIM_")]:
        del os.environ[name]


@pytest.hookimpl(tryfirst=True)  # type: ignore[misc]
def pytest_runtest_protocol(item: pytest.Item, nextitem: pytest.Item | None) -> bool:
    hook = item.ihook
    hook.pytest_runtest_logstart(nodeid=item.nodeid, location=item.location)
    for report in run_in_child(item, nextitem):
        hook.pytest_runtest_logreport(report=report)
    hook.pytest_runtest_logfinish(nodeid=item.nodeid, location=item.location)
    return True


def run_in_child(item: pytest.Item, nextitem: pytest.Item | None) -> list[pytest.TestReport]:
    hook = item.config.hook
    sys.stdout.flush()
    sys.stderr.flush()
    with tempfile.TemporaryFile() as answer:
        child = os.fork()
        if child == 0:
            # A deadlock ends with the stacks of all threads, not with a test run that never ends.
            faulthandler.dump_traceback_later(TIME_LIMIT_SECONDS, exit=True, file=sys.__stderr__)
            reports = runtestprotocol(item, log=False, nextitem=nextitem)
            to_data = hook.pytest_report_to_serializable
            texts = [to_data(config=item.config, report=report) for report in reports]
            answer.write(json.dumps(texts).encode())
            answer.flush()
            os._exit(0)
        _, status = os.waitpid(child, 0)
        answer.seek(0)
        written = answer.read()
    if status == 0 and written:
        from_data = hook.pytest_report_from_serializable
        return [from_data(config=item.config, data=data) for data in json.loads(written)]
    code = os.waitstatus_to_exitcode(status)
    end = signal.Signals(-code).name if code < 0 else f"exit code {code}"
    return [
        pytest.TestReport(
            item.nodeid, item.location, {}, "failed", f"the test's process ended with {end}", "call"
        )
    ]


@pytest.fixture(autouse=True)
def folder() -> Iterator[Path]:
    """The current directory, with the driver in it."""
    with tempfile.TemporaryDirectory(prefix="scribera-python-test-") as name:
        os.chdir(name)
        Path("libscriberadrv.so").symlink_to(os.environ["SCRIBERA_DRIVER"])
        yield Path(name)
        os.chdir("/")


@pytest.fixture
def simulator(folder: Path) -> Simulator:
    return Simulator(folder / "libscriberadrv.so")
