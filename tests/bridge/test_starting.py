"""How the service is started: options, files, sockets that were opened for it, TLS."""

from __future__ import annotations

import http.client
import os
import shutil
import signal
import socket
import ssl
import subprocess
import sys
from pathlib import Path

import pytest

from conftest import Start
from service import Service
from test_http import status

PROGRAM = os.environ["SCRIBERA_BRIDGE"]


def run(*arguments: str, **more: object) -> subprocess.CompletedProcess[str]:
    return subprocess.run([PROGRAM, *arguments], capture_output=True, text=True, timeout=60, **more)  # type: ignore


def test_help_and_version() -> None:
    told = run("--help")
    assert told.returncode == 0 and told.stdout.startswith("Usage: scribera-bridge") and not told.stderr
    assert run("--version").stdout.startswith("scribera-bridge ")


@pytest.mark.parametrize(
    ("arguments", "reason"),
    [(["--nothing"], "unexpected: --nothing"), (["extra"], "unexpected: extra"), (["--port"], "--port needs a value"),
     (["--port", "x"], "port has to be a number from 0 to 65535, not x"),
     (["--port", "65536"], "port has to be a number from 0 to 65535, not 65536"),
     (["--port=-1"], "port has to be a number from 0 to 65535, not -1"),
     (["--allow-origin", "bank.example"], "bank.example is no origin; one is https://contracts.example"),
     (["--allow-origin", "*"], "* is no origin; one is https://contracts.example"),
     (["--allow-no-origin=yes"], "--allow-no-origin takes no value"),
     (["--open-time", "0"], "open-time has to be a number from 1 to 86400, not 0"),
     (["--key", "x"], "--key needs --certificate")],
)
def test_wrong_usage(arguments: list[str], reason: str) -> None:
    told = run(*arguments)
    assert told.returncode == 2 and not told.stdout
    assert told.stderr == f"scribera-bridge: {reason}\nTry 'scribera-bridge --help'.\n"


def test_options_from_a_file(start: Start, tmp_path: Path) -> None:
    file = tmp_path / "bridge.conf"
    file.write_text("# for the counter\n\nallow-origin = https://bank.example  # ours\nport=1\nno-loopback-pages\n")
    service = start("--config", str(file), "--allow-origin", "https://other.example")
    assert status(service, "/health", {"Origin": "https://bank.example"}) == 200
    assert status(service, "/health", {"Origin": "https://other.example"}) == 200
    assert status(service, "/health", {"Origin": "http://localhost"}) == 403


@pytest.mark.parametrize(
    ("line", "reason"),
    [("colour = red", "there is no option colour"), ("config = x", "there is no option config"),
     ("port", "port needs a value"), ("port =", "port needs a value"), ("allow-no-origin = no", "allow-no-origin takes no value"),
     ("port = 8x", "port has to be a number from 0 to 65535, not 8x"), ("allow-origin = null", "null is no origin; one is https://contracts.example")],
)
def test_a_file_that_is_wrong(tmp_path: Path, line: str, reason: str) -> None:
    file = tmp_path / "bridge.conf"
    file.write_text("# comment\n" + line + "\n")
    told = run("--config", str(file))
    assert told.returncode == 1 and told.stderr == f"scribera-bridge: {file}:2: {reason}\n"


def test_a_file_that_is_not_there() -> None:
    told = run("--config", "/nowhere/bridge.conf")
    assert told.returncode == 1 and told.stderr == "scribera-bridge: /nowhere/bridge.conf: cannot be read\n"


def test_a_port_that_is_taken(service: Service) -> None:
    told = run("--port", str(service.port))
    assert told.returncode == 1 and told.stderr.startswith(f"scribera-bridge: port {service.port}: ")


def test_listens_on_this_machine_alone(service: Service) -> None:
    listening = subprocess.run(
        ["ss", "-Hltnp"], capture_output=True, text=True, check=True
    ).stdout if shutil.which("ss") else ""
    own = [line.split()[3] for line in listening.splitlines() if f"pid={service.process.pid}," in line]
    if own:
        assert sorted(own) == sorted([f"127.0.0.1:{service.port}", f"[::1]:{service.port}"])
    probe = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    probe.connect(("192.0.2.1", 9))  # sends nothing; tells the address that others see
    outside = probe.getsockname()[0]
    if not outside.startswith("127."):
        with pytest.raises(OSError):
            socket.create_connection((outside, service.port), timeout=5)


@pytest.mark.skipif(not shutil.which("systemd-socket-activate"), reason="systemd is needed")
def test_sockets_of_the_manager(tmp_path: Path) -> None:
    with socket.create_server(("127.0.0.1", 0)) as free:
        port = free.getsockname()[1]
    process = subprocess.Popen(
        ["systemd-socket-activate", "-l", f"127.0.0.1:{port}", "-l", f"[::1]:{port}", "-E", f"XDG_RUNTIME_DIR={tmp_path}",
         PROGRAM, "--driver", "simulated"],
        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
    )
    try:
        while True:
            try:
                connection = http.client.HTTPConnection("127.0.0.1", port, timeout=60)
                connection.request("GET", "/health")
                break
            except ConnectionRefusedError:
                assert process.poll() is None
        assert connection.getresponse().status == 200
        assert process.stdout and process.stdout.readline() == f"http://127.0.0.1:{port}\n"
    finally:
        process.terminate()
        assert process.wait(60) in (0, -signal.SIGTERM)


UNIT = os.environ.get("SCRIBERA_BRIDGE_UNIT")


@pytest.mark.skipif(not UNIT or not shutil.which("systemd-analyze"), reason="the unit and systemd are needed")
def test_the_unit_leaves_little_open() -> None:
    assert UNIT
    told = subprocess.run(
        ["systemd-analyze", "security", "--offline=true", "--threshold=20", UNIT], capture_output=True, text=True, timeout=60
    )
    assert told.returncode == 0 and "Overall exposure level" in told.stdout, told.stdout + told.stderr


@pytest.mark.skipif(not UNIT, reason="the unit is needed")
def test_the_unit_promises_nothing_that_a_users_manager_ignores() -> None:
    assert UNIT
    given = {line.split("=")[0] for line in Path(UNIT).read_text().splitlines() if "=" in line and line[0] != "#"}
    of_the_system_alone = {
        "DeviceAllow", "DevicePolicy", "DynamicUser", "IPAddressAllow", "IPAddressDeny", "MountAPIVFS",
        "ProcSubset", "ProtectControlGroups", "ProtectProc", "RemoveIPC", "RestrictNetworkInterfaces", "RootDirectory",
        "SocketBindDeny", "SupplementaryGroups", "User",
    }
    assert not given & of_the_system_alone
    assert "PrivateUsers" in given, "others need it"


LAUNCHER = """
import os, socket, sys
one = socket.socket(socket.AF_INET if sys.argv[1] != "unix" else socket.AF_UNIX)
if sys.argv[1] == "unix":
    one.bind(sys.argv[3])
elif sys.argv[1] != "unbound":
    one.bind((sys.argv[1], 0))
if sys.argv[1] != "unbound":
    one.listen()
os.dup2(one.fileno(), 3)
os.set_inheritable(3, True)
os.environ.update(LISTEN_FDS="1", LISTEN_PID=str(os.getpid()))
os.execv(sys.argv[2], sys.argv[2:3])
"""


@pytest.mark.parametrize(
    ("kind", "reason"),
    [("0.0.0.0", "a socket that was handed over listens beyond this machine"),
     ("unix", "a socket that was handed over does not listen for connections"),
     ("unbound", "a socket that was handed over does not listen for connections")],
)
def test_wrong_sockets_of_the_manager(tmp_path: Path, kind: str, reason: str) -> None:
    told = subprocess.run(
        [sys.executable, "-c", LAUNCHER, kind, PROGRAM, str(tmp_path / "socket")], capture_output=True, text=True,
        timeout=60,
    )
    assert told.returncode == 1 and told.stderr == f"scribera-bridge: {reason}\n"


def test_sockets_for_another_process(tmp_path: Path) -> None:
    told = run("--port", "x", env={**os.environ, "LISTEN_FDS": "1", "LISTEN_PID": "1"})
    assert told.returncode == 2


@pytest.mark.skipif(not shutil.which("openssl"), reason="a certificate is needed")
def test_serves_by_tls(start: Start, tmp_path: Path) -> None:
    certificate, key = tmp_path / "certificate.pem", tmp_path / "key.pem"
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days", "1",
         "-subj", "/CN=localhost", "-addext", "subjectAltName=DNS:localhost,IP:127.0.0.1", "-keyout", str(key), "-out",
         str(certificate)],
        check=True, capture_output=True,
    )
    service = start("--certificate", str(certificate), "--key", str(key))
    assert service.address == f"https://127.0.0.1:{service.port}"
    context = ssl.create_default_context(cafile=certificate)
    connection = http.client.HTTPSConnection("127.0.0.1", service.port, context=context, timeout=60)
    connection.request("GET", "/health")
    assert connection.getresponse().status == 200
    with service.client(secure=context, origin="https://localhost") as page:
        assert page.open()
    with pytest.raises((ConnectionError, http.client.HTTPException)):
        status(service, "/health")


def test_a_certificate_that_is_not_there(tmp_path: Path) -> None:
    told = run("--port", "0", "--certificate", str(tmp_path / "nothing.pem"))
    assert told.returncode == 1 and told.stderr.startswith(f"scribera-bridge: {tmp_path}/nothing.pem: ")
