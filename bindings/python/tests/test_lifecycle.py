"""Opening and closing, and what stands in the way."""

from __future__ import annotations

import asyncio
import ctypes
import gc
import os
import shutil
import signal
import subprocess
import sys
import textwrap
import threading
import tracemalloc
from collections.abc import Callable
from pathlib import Path

import pytest

import scribera
from scribera import (
    _native,
    FAMILIES,
    DriverError,
    ImageType,
    LibraryError,
    Model,
    NoPadError,
    Pad,
    PadBusyError,
    PadClosedError,
    Status,
)
from simulator import AREAS, MODELS, Simulator, diagonal, recording_of, wait_until


@pytest.mark.parametrize("model", MODELS)
def test_opens_and_closes_every_pad(model: Model, simulator: Simulator) -> None:
    with Pad(model, size=(300, 200)) as pad:
        assert (pad.model, pad.size, pad.closed, len(pad)) == (model, (300, 200), False, 0)
        assert simulator.last_argument("Initial") == FAMILIES[model].device_type
        assert simulator.call_count("UnInitial") == 0
        assert repr(pad) == f"<scribera.Pad {model} 300x200 open>"
    assert pad.closed and repr(pad) == f"<scribera.Pad {model} 300x200 closed>"
    assert simulator.call_count("UnInitial") == 1
    pad.close()  # a second time does nothing
    assert simulator.call_count("UnInitial") == 1


@pytest.mark.parametrize("model", MODELS)
def test_tells_what_the_pad_is(model: Model) -> None:
    area = AREAS[model]
    with Pad(model) as pad:
        info = pad.info
        assert (info.connected, info.width, info.height) == (True, area.width, area.height)
        assert (info.max_pressure, info.model) == (area.max_pressure, area.reported_model)
        assert (info.maker, info.library_version) == ("Corvenna", (3, 0))
        assert pad.version.startswith(area.parts_version)
        assert "Version : 3.0.0.0" in pad.about.splitlines()


def test_one_after_the_other() -> None:
    for model in MODELS * 2:
        with Pad(model) as pad:
            assert pad.info.model == AREAS[model].reported_model


def test_a_second_pad_is_refused() -> None:
    with Pad("K210") as pad:
        for model in MODELS:
            with pytest.raises(PadBusyError):
                Pad(model)
        assert pad.info.connected
    Pad("T580").close()


def test_a_pad_opened_by_other_code_is_not_taken_over() -> None:
    library = ctypes.CDLL(os.environ["SCRIBERA_LIBRARY"])
    assert library.SCK210_InitialDevice(2, None, 0, 0, 80, 40) & 1
    with pytest.raises(PadBusyError):
        Pad("K210")
    assert library.SCK210_UnInitialDevice(2) == 0
    Pad("K210").close()


def test_a_pad_closed_by_other_code_is_no_pad() -> None:
    library = ctypes.CDLL(os.environ["SCRIBERA_LIBRARY"])
    with Pad("K210") as pad:
        assert library.SCK210_UnInitialDevice(2) == 0
        with pytest.raises(NoPadError) as caught:
            pad.clear()
        assert caught.value.result == -1


OPERATIONS: list[Callable[[Pad], object]] = [
    lambda pad: pad.info,
    lambda pad: pad.pad_id,
    lambda pad: pad.pen_id,
    lambda pad: pad.version,
    lambda pad: pad.about,
    lambda pad: pad.set_screen(True),
    lambda pad: pad.show_version(),
    lambda pad: pad.clear(),
    lambda pad: setattr(pad, "pen_width", 3),
    lambda pad: setattr(pad, "pen_color", (0, 0, 0)),
    lambda pad: setattr(pad, "pressure", True),
    lambda pad: pad.on_status(print),
    lambda pad: pad.on_point(print),
    lambda pad: pad.wait(0),
    lambda pad: asyncio.run(pad.wait_async(0)),
    lambda pad: pad.live_points(),
    lambda pad: pad.last_key(),
    lambda pad: len(pad),
    lambda pad: pad[0],
    lambda pad: pad[0:1],
    lambda pad: list(pad),
    lambda pad: pad.strokes(),
    lambda pad: pad.array(),
    lambda pad: pad.to_pil(),
    lambda pad: pad.save("signature.png"),
    lambda pad: pad.png(),
    lambda pad: pad.jpeg(),
    lambda pad: pad.bmp(),
    lambda pad: pad.svg(),
    lambda pad: pad.pdf(),
    lambda pad: pad.ink(),
    lambda pad: pad.ink_text(),
    lambda pad: pad.decode(b"\0" * 25),
    lambda pad: pad.decode_image(b"BM", "copy.bmp"),
    lambda pad: pad.place_fingerprint((10, 10), (0, 0, 5, 5)),
    lambda pad: pad.fingerprint(ImageType.PNG),
]


def test_nothing_works_on_a_closed_pad() -> None:
    pad = Pad("K421B")
    pad.close()
    for number, operation in enumerate(OPERATIONS):
        with pytest.raises(PadClosedError):
            operation(pad)
            pytest.fail(f"operation {number} worked")
    tried = set(" ".join(name for operation in OPERATIONS for name in operation.__code__.co_names).split())
    tried |= {"pen_width", "pen_color", "pressure"}
    public = {name for name in vars(Pad) if not name.startswith("_")}
    assert public - tried == {"close", "closed", "model", "size"}
    assert not Path("signature.png").exists()


def test_a_forked_process_has_no_pad() -> None:
    with Pad("K210") as pad:
        child = os.fork()
        if child == 0:
            try:
                pad.clear()
            except PadClosedError:
                pad.close()
                os._exit(7 if pad.closed else 8)
            os._exit(9)
        assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 7
        assert pad.info.connected


def test_a_forked_process_does_not_wait_for_threads_that_did_not_come_along() -> None:
    with Pad("K210") as pad:
        holder = threading.Thread(target=pad._failure_lock.acquire)
        holder.start()  # it ends with the lock, as if it were about to note a failure
        holder.join()
        child = os.fork()
        if child == 0:
            pad.close()
            os._exit(7)
        assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 7
        pad._failure_lock = threading.RLock()


def run_script(script: str, **environment: str) -> subprocess.CompletedProcess[str]:
    return subprocess.run(
        [sys.executable, "-X", "dev", "-c", textwrap.dedent(script)],
        env={**os.environ, **environment},
        capture_output=True,
        text=True,
        timeout=100,
    )


ENDINGS = ["", "raise SystemExit(0)", "import threading; threading.Thread(target=pad.png).start()"]


@pytest.mark.parametrize("ending", ENDINGS)
def test_a_pad_left_open_is_closed_at_exit(ending: str, folder: Path) -> None:
    run = run_script(
        f"""
        from scribera import Pad
        pad = Pad("K210", on_point=lambda point: len(pad), on_status=print)
        while len(pad) < 2000: pass
        {ending}
        """,
        SCRIBERA_SIM_RECORDING=str(recording_of("K210", folder)),
        SCRIBERA_SIM_RATE="max",
        SCRIBERA_SIM_LOOP="1",
        SCRIBERA_SIM_START_MS="0",
    )
    assert run.returncode == 0, run
    assert "not closed: <scribera.Pad K210" in run.stderr
    assert "Traceback" not in run.stderr


def test_a_callback_failure_is_told_even_when_nobody_closes_the_pad(folder: Path) -> None:
    run = run_script(
        """
        from scribera import Pad
        def broken(point): raise RuntimeError("out of the callback")
        pad = Pad("K210", on_point=broken)
        while len(pad) < 10: pass
        """,
        SCRIBERA_SIM_RECORDING=str(recording_of("K210", folder)),
        SCRIBERA_SIM_RATE="max",
    )
    assert "RuntimeError: out of the callback" in run.stderr


# Where library and driver come from


def test_the_library_argument_goes_before_the_environment(monkeypatch: pytest.MonkeyPatch) -> None:
    library = os.environ["SCRIBERA_LIBRARY"]
    monkeypatch.setenv("SCRIBERA_LIBRARY", "/nowhere/libscriberasdk.so.1")
    Pad("K210", library=library).close()
    Pad("K210", library=Path(library)).close()
    with pytest.raises(LibraryError, match="/nowhere/libscriberasdk.so.1") as caught:
        Pad("K210")
    assert str(caught.value).endswith(
        "; name the file by the argument library or in the environment by SCRIBERA_LIBRARY"
    )


@pytest.mark.parametrize("name", ["libscriberasdk.so.1", "libscriberasdk-qt6.so.1"])
def test_without_argument_and_environment_the_system_is_searched(
    monkeypatch: pytest.MonkeyPatch, folder: Path, name: str
) -> None:
    search = folder / "libraries"
    search.mkdir()
    script = 'from scribera import Pad\nwith Pad("K210") as pad: print(pad.info.model)'
    environment = {"SCRIBERA_LIBRARY": "", "LD_LIBRARY_PATH": str(search)}
    run = run_script(script, **environment)
    assert run.stderr.splitlines()[-1].startswith("scribera._errors.LibraryError: cannot load")
    (search / name).symlink_to(os.environ["SCRIBERA_LIBRARY"])
    run = run_script(script, **environment)
    assert run.stdout == "K210\n", run


def test_what_is_no_library_is_refused(folder: Path) -> None:
    (folder / "text.so").write_text("not a library")
    libraries: list[str | Path] = ["libc.so.6", folder / "text.so", folder / "missing.so", folder]
    for library in libraries:
        with pytest.raises(LibraryError) as caught:
            Pad("K210", library=library)
        assert isinstance(caught.value, OSError)
        assert str(caught.value).startswith(("cannot load the Scribera library: ", "libc.so.6 lacks SCK210_"))
        assert "\n" not in str(caught.value)
    Pad("K210").close()


def test_a_missing_driver_is_no_pad(folder: Path) -> None:
    Path("libscriberadrv.so").unlink()
    with pytest.raises(NoPadError) as caught:
        Pad("K210")
    message = str(caught.value)
    assert message.startswith("There is no driver: ") and "cannot open shared object file" in message
    assert message.endswith(
        f"; the current directory is {folder}; name the driver's directory by the argument driver_directory"
    )
    elsewhere = folder / "elsewhere"
    elsewhere.mkdir()
    with pytest.raises(NoPadError, match=f"; the current directory is {elsewhere};"):
        Pad("K210", driver_directory=elsewhere)
    Path("libscriberadrv.so").symlink_to(os.environ["SCRIBERA_DRIVER"])
    Pad("K210").close()


def test_a_driver_that_is_none_is_no_pad(folder: Path) -> None:
    for content in (b"", b"not a library"):
        Path("libscriberadrv.so").unlink()
        Path("libscriberadrv.so").write_bytes(content)
        with pytest.raises(NoPadError, match="The driver is not loaded: .*: file too short"):
            Pad("K210")
    for entry_point in ("Initial", "UnInitial", "GetDevicePadID", "ShowFPImageOnDevice"):
        use_driver_without(entry_point)
        with pytest.raises(NoPadError, match=f"The driver lacks what a K421B needs: SCRDAPI_{entry_point}$"):
            Pad("K421B")
    Path("libscriberadrv.so").unlink()
    shutil.copy(os.environ["SCRIBERA_LIBRARY"], "libscriberadrv.so")  # a library, but no driver
    with pytest.raises(NoPadError, match="SCRDAPI_Initial, SCRDAPI_UnInitial, "):
        Pad("K210")


def test_a_library_that_does_not_tell_why_there_is_no_pad(folder: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(_native, "start_failure", lambda library: None)
    with monkeypatch.context() as other, pytest.raises(NoPadError) as caught:
        other.setenv("SCRIBERA_SIM_MODEL", "SCX999")
        Pad("K210")
    assert str(caught.value) == (
        "the driver in the current directory cannot be used, or finds no K210: is the pad plugged in?"
    )
    Path("libscriberadrv.so").unlink()
    with pytest.raises(NoPadError) as caught:
        Pad("K210")
    assert str(caught.value) == (
        "no driver libscriberadrv.so in the current directory; "
        "name its directory by the argument driver_directory"
    )


def worker_states() -> list[str]:
    """How the system sees the threads of an open windowless K421B: S for sleeping, R for running."""
    found = []
    for task in Path("/proc/self/task").iterdir():
        name, state = task.joinpath("stat").read_text().split("(", 1)[1].rsplit(")", 1)
        if name.startswith("CK421BObj_"):
            found.append(state.split()[0])
    return found


def test_workers_wait_when_they_are_told_to(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.delenv("SCRIBERA_WORKERS", raising=False)
    assert scribera.let_workers_wait()
    with Pad("K421B"):
        wait_until(lambda: worker_states() == ["S", "S"], "sleeping workers")
    assert scribera.let_workers_wait(False)
    with Pad("K421B"):
        wait_until(lambda: worker_states() == ["R", "R"], "polling workers")


def test_an_older_librarys_workers_do_not_wait(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(_native, "load", lambda library: object())
    assert not scribera.let_workers_wait()


def use_driver_without(entry_point: str) -> None:
    variant = Path(os.environ["SCRIBERA_DRIVER"]).parent / "variants" / entry_point / "libscriberadrv.so"
    assert variant.is_file()
    Path("libscriberadrv.so").unlink()
    Path("libscriberadrv.so").symlink_to(variant)


def test_a_driver_that_cannot_switch_the_screen_is_enough() -> None:
    use_driver_without("OpenDeviceLCD")
    with Pad("K210") as pad, pytest.raises(DriverError) as caught:
        pad.set_screen(False)
    assert caught.value.result == -1


def test_a_driver_that_does_not_start_is_no_pad(simulator: Simulator) -> None:
    simulator.set_result("Initial", -7)
    with pytest.raises(NoPadError):
        Pad("T580")
    simulator.set_result("Initial", 0)
    Pad("T580").close()


@pytest.mark.parametrize("model", MODELS)
def test_another_pad_is_no_pad(model: Model, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setenv("SCRIBERA_SIM_MODEL", "SCX999")
    with pytest.raises(NoPadError, match=f"The pad is no {model}: it calls itself 'SCX999', with result 0"):
        Pad(model)


def test_the_driver_directory_is_entered_for_the_opening_only(folder: Path) -> None:
    elsewhere = folder / "elsewhere"
    elsewhere.mkdir()
    os.chdir(elsewhere)
    with pytest.raises(NoPadError):
        Pad("K210")
    directories: list[str | Path] = [folder, str(folder), ".."]
    for directory in directories:
        with Pad("K210", driver_directory=directory):
            assert Path.cwd() == elsewhere
    with pytest.raises(NoPadError):
        Pad("K210", driver_directory=elsewhere)
    with pytest.raises(FileNotFoundError):
        Pad("K210", driver_directory=folder / "missing")
    assert Path.cwd() == elsewhere
    Pad("K210", driver_directory=folder).close()


def test_two_hundred_cycles_leave_nothing_behind(simulator: Simulator) -> None:
    def cycle(number: int) -> None:
        model = MODELS[number % len(MODELS)]
        with Pad(model, size=(200, 100), on_point=lambda point: None, on_status=lambda status: None) as pad:
            simulator.send(diagonal(model))
            simulator.press(1)
            assert pad.wait(30) is Status.CONFIRM
            assert len(pad.png()) > 100 and len(pad.svg()) > 100 and len(list(pad)) == len(diagonal(model))
            assert len(pad.decode(pad.ink_text())) == len(pad)
            pad.save("signature.pdf", clip=(5, 5))

    def resident_bytes() -> int:
        return int(Path("/proc/self/statm").read_text().split()[1]) * os.sysconf("SC_PAGESIZE")

    def open_files() -> int:
        return len(os.listdir("/proc/self/fd"))

    def mappings() -> int:
        return len(Path("/proc/self/maps").read_text().splitlines())

    tracemalloc.start()
    for number in range(50):
        cycle(number)
    gc.collect()
    python_bytes, _ = tracemalloc.get_traced_memory()
    objects, resident, files, maps = len(gc.get_objects()), resident_bytes(), open_files(), mappings()
    for number in range(200):
        cycle(number)
    gc.collect()
    assert len(gc.get_objects()) - objects < 50
    assert tracemalloc.get_traced_memory()[0] - python_bytes < 20_000
    assert open_files() == files
    assert mappings() - maps < 20
    # One picture of this size is 80 kB: a buffer lost in each cycle would take 16 MB.
    assert resident_bytes() - resident < 4_000_000


def test_a_closed_pad_goes_away() -> None:
    import weakref

    pad = Pad("K210", on_point=lambda point: None)
    gone = weakref.ref(pad)
    pad.close()
    del pad
    gc.collect()
    assert gone() is None


def test_an_interrupt_ends_the_wait_and_closes_the_pad(simulator: Simulator) -> None:
    signal.signal(signal.SIGALRM, signal.default_int_handler)
    signal.setitimer(signal.ITIMER_REAL, 0.2)
    with pytest.raises(KeyboardInterrupt), Pad("K210") as pad:
        pad.wait()
    assert pad.closed and simulator.call_count("UnInitial") == 1


def test_the_log_tells_the_calls(folder: Path) -> None:
    import fcntl

    log = Path("/tmp/scriberasdk.log")
    # The lock that the library's own tests take when they share /tmp; the file may be another user's.
    lock = os.open("/tmp/scribera-tests.lock", os.O_RDONLY | os.O_CREAT, 0o644)
    fcntl.flock(lock, fcntl.LOCK_EX)
    if log.exists() and log.stat().st_uid != os.geteuid():
        pytest.skip("the log there is another user's, which the library leaves alone")
    before = log.stat().st_size if log.exists() else 0
    scribera.enable_log()
    with Pad("K420", size=(321, 123)):
        pass
    scribera.enable_log(False)
    size = log.stat().st_size
    with Pad("K420", size=(321, 124)):
        pass
    with log.open("rb") as lines:
        lines.seek(before)
        written = lines.read(size - before)
        assert b"[SCK420_InitialDevice()]:<" in written and b"nWidth=321, nHeight=123" in written
        assert b"nHeight=124" not in lines.read()
    os.close(lock)
