"""The service under test, and a client that holds every message against the schema; of a flood of points, some."""

from __future__ import annotations

import asyncio
import json
import os
import signal
import ssl
import subprocess
from collections.abc import Awaitable, Callable
from pathlib import Path
from typing import Any, Self, TypeVar

import jsonschema
import websockets

SOURCE = Path(__file__).resolve().parents[2]
RECORDINGS = SOURCE / "drivers" / "simulator" / "recordings"
PAGE = "http://localhost:8080"
PATIENCE = 60
MODELS = ("K210", "K420", "K421B", "KM730", "T580")

_schema = json.loads((SOURCE / "web" / "protocol.schema.json").read_text())
_validator = jsonschema.Draft202012Validator(_schema)
_Result = TypeVar("_Result")


def validate(message: Any) -> None:
    _validator.validate(message)


class Refused(Exception):
    """An error of the service's."""

    def __init__(self, error: dict[str, Any]) -> None:
        super().__init__(error["message"])
        self.code: int = error["code"]
        self.type: str | None = error.get("data", {}).get("type")


class Service:
    def __init__(self, folder: Path, options: tuple[str, ...], environment: dict[str, str]) -> None:
        self.folder = folder
        self.runtime_folder = folder / "run"
        self.runtime_folder.mkdir(mode=0o700)
        own = {name: value for name, value in os.environ.items() if not name.startswith("SCRIBERA_SIM_")}
        self.environment = {**own, "XDG_RUNTIME_DIR": str(self.runtime_folder), **environment}
        if "--driver" not in options:
            options = ("--driver", "simulated", *options)
        if "--port" not in options:
            options = ("--port", "0", *options)
        with open(folder / "log", "w") as log:
            self.process = subprocess.Popen(
                [os.environ["SCRIBERA_BRIDGE"], *options],
                env=self.environment, cwd=folder, stdout=subprocess.PIPE, stderr=log, text=True,
            )
        assert self.process.stdout
        self.address = self.process.stdout.readline().strip()
        if not self.address:
            self.process.wait(PATIENCE)
            raise AssertionError(f"no address: {self.log()}")
        self.port = int(self.address.rsplit(":", 1)[1])

    def log(self) -> str:
        return (self.folder / "log").read_text()

    def workers(self) -> list[int]:
        listed = subprocess.run(
            ["ps", "--ppid", str(self.process.pid), "-o", "pid="], capture_output=True, text=True
        ).stdout
        return [int(line) for line in listed.split()]

    def memory(self) -> int:
        """What it has in memory, in bytes."""
        for line in Path(f"/proc/{self.process.pid}/status").read_text().splitlines():
            if line.startswith("VmRSS:"):
                return int(line.split()[1]) * 1024
        raise AssertionError("no VmRSS")

    def client(self, **options: Any) -> Client:
        return Client(self.port, **options)

    def end(self) -> int:
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
        result = self.process.wait(PATIENCE)
        assert result == 0, self.log()
        return result


class Client:
    """A page, in the order of a program: what comes meanwhile is kept."""

    def __init__(
        self, port: int, origin: str | None = PAGE, subprotocols: tuple[str, ...] = ("scribera-pad.1",),
        secure: ssl.SSLContext | None = None, is_flooded: bool = False,
    ) -> None:
        self._loop = asyncio.new_event_loop()
        self._is_flooded = is_flooded
        self._received = 0
        self._next_id = 0
        self.clears = 0
        self.points: list[list[int]] = []
        self.news: list[tuple[str, dict[str, Any]]] = []
        self.answers: dict[int, dict[str, Any]] = {}
        self.binaries: dict[int, bytes] = {}
        self._socket = self._run(self._connect(port, origin, subprotocols, secure))

    def __enter__(self) -> Self:
        return self

    def __exit__(self, *_: object) -> None:
        self.leave()

    @staticmethod
    async def _connect(
        port: int, origin: str | None, subprotocols: tuple[str, ...], secure: ssl.SSLContext | None
    ) -> websockets.WebSocketClientProtocol:
        return await websockets.connect(
            f"{'wss' if secure else 'ws'}://127.0.0.1:{port}/pad", origin=origin, subprotocols=list(subprotocols),
            ssl=secure, max_size=None, max_queue=None, ping_interval=None,
        )

    def _run(self, awaited: Awaitable[_Result]) -> _Result:
        async def wait() -> _Result:
            return await asyncio.wait_for(awaited, PATIENCE)

        return self._loop.run_until_complete(wait())

    def leave(self) -> None:
        """As a page that is closed."""
        if not self._loop.is_closed():
            self._run(self._socket.close())
            self._loop.close()

    def drop(self) -> None:
        """As a tab that crashes: without a word."""
        self._socket.transport.abort()
        self._run(asyncio.sleep(0))

    def send_raw(self, message: str | bytes) -> None:
        self._run(self._socket.send(message))

    def send(self, method: str, **parameters: Any) -> int:
        self._next_id += 1
        message = {"jsonrpc": "2.0", "id": self._next_id, "method": method, "params": parameters}
        validate(message)
        self.send_raw(json.dumps(message))
        return self._next_id

    def receive(self) -> dict[str, Any]:
        """Takes the next message in."""
        text = self._run(self._socket.recv())
        assert isinstance(text, str), "a binary frame that no answer announces"
        message: dict[str, Any] = json.loads(text)
        self._received += 1
        if not self._is_flooded or message.get("method") != "points" or self._received % 1000 == 0:
            validate(message)
        if "method" in message:
            self._take_notification(message["method"], message["params"])
            return message
        self.answers[message["id"]] = message
        result = message.get("result", {})
        if "type" in result and "bytes" in result:
            binary = self._run(self._socket.recv())
            assert isinstance(binary, bytes) and len(binary) == result["bytes"]
            self.binaries[message["id"]] = binary
        return message

    def _take_notification(self, method: str, parameters: dict[str, Any]) -> None:
        if method == "points":
            assert parameters["from"] == len(self.points), "points are numbered without a gap"
            assert parameters["points"]
            self.points += parameters["points"]
        elif method == "cleared":
            assert parameters["clears"] > self.clears
            self.clears = parameters["clears"]
            self.points = []
        if method != "points":
            self.news.append((method, parameters))

    def answer(self, number: int) -> dict[str, Any]:
        while number not in self.answers:
            self.receive()
        message = self.answers.pop(number)
        if "error" in message:
            raise Refused(message["error"])
        result: dict[str, Any] = message["result"]
        return result

    def ask(self, method: str, **parameters: Any) -> dict[str, Any]:
        return self.answer(self.send(method, **parameters))

    def picture(self, method: str, **parameters: Any) -> tuple[str, bytes]:
        number = self.send(method, **parameters)
        media_type: str = self.answer(number)["type"]
        return media_type, self.binaries.pop(number)

    def open(self, model: str = "K210", width: int = 800, height: int = 485) -> dict[str, Any]:
        return self.ask("open", model=model, width=width, height=height)

    def resume(
        self, token: str, clears: int | None = None, points: int | None = None, keys: int = 0
    ) -> dict[str, Any]:
        session = self.ask(
            "resume", token=token, clears=self.clears if clears is None else clears,
            points=len(self.points) if points is None else points, keys=keys,
        )
        if session["clears"] != self.clears:
            self.points = []
        self.clears = session["clears"]
        return session

    def until(self, condition: Callable[[], bool]) -> None:
        while not condition():
            self.receive()

    def until_news(self, method: str) -> dict[str, Any]:
        """The first notification of that kind, which is taken."""
        self.until(lambda: any(name == method for name, _ in self.news))
        found = next(index for index, (name, _) in enumerate(self.news) if name == method)
        return self.news.pop(found)[1]

    def until_closed(self) -> int:
        """The code with which the service closes the connection."""
        try:
            while True:
                self.receive()
        except websockets.ConnectionClosed:
            code: int = self._socket.close_code
            return code


def recording(folder: Path, samples: list[tuple[int, int, int, int, int]]) -> str:
    """A file with samples: time, x, y, pressure, status."""
    path = folder / "samples.rec"
    lines = [" ".join(map(str, sample)) for sample in samples]
    path.write_text(
        "# scribera recording 1\nmodel: SCK210\narea: 160 220 2360 1430\nmax-pressure: 2048\n" + "\n".join(lines) + "\n"
    )
    return str(path)


def signing(name: str = "initials", key: str = "confirm", **more: str) -> dict[str, str]:
    """What lets the simulated pad sign."""
    return {
        "SCRIBERA_SIM_RECORDING": str(RECORDINGS / f"{name}.rec"), "SCRIBERA_SIM_RATE": "max", "SCRIBERA_SIM_KEY": key,
        **more,
    }
