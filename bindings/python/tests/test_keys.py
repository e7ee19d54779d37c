"""Keys, the wait for them, and what happens to exceptions in callbacks."""

from __future__ import annotations

import sys
import threading
from collections.abc import Callable
from time import monotonic

import pytest

from scribera import CallbackThreadError, ImageType, LivePoint, Model, Pad, PadClosedError, PadTimeoutError, Status
from simulator import MODELS, Simulator, diagonal, tap, wait_until


@pytest.mark.parametrize("model", MODELS)
def test_the_wait_ends_with_the_key(model: Model, simulator: Simulator) -> None:
    with Pad(model) as pad:
        for key in (1, 0):
            simulator.press(key)
            assert pad.wait(timeout=30) is Status(key)


def test_keys_print_as_their_names() -> None:
    assert Status.CONFIRM and not Status.CANCEL and int(Status.CONFIRM) == 1
    assert str(Status.CONFIRM) == "%s" % Status.CONFIRM == "CONFIRM" and f"{Status.CANCEL}" == "CANCEL"
    assert f"{Status.CANCEL:>8}|" == "  CANCEL|" and repr(Status.CONFIRM) == "<Status.CONFIRM: 1>"
    assert str(ImageType.PNG) == "PNG" and int(ImageType.PNG) == 3


def test_keys_are_told_once_and_in_order(simulator: Simulator) -> None:
    with Pad("T580") as pad:
        told: list[Status] = []
        pad.on_status(told.append)
        for number, key in enumerate((1, 0, 0, 1)):
            simulator.press(key)
            wait_until(lambda: len(told) == number + 1, "the key")
        assert [pad.wait(30) for _ in range(4)] == told == [Status(key) for key in (1, 0, 0, 1)]
        with pytest.raises(PadTimeoutError):
            pad.wait(0)


def test_the_status_function_has_returned_before_the_wait(simulator: Simulator) -> None:
    with Pad("K210") as pad:
        done: list[Status] = []

        @pad.on_status
        def slow(status: Status) -> None:
            threading.Event().wait(0.2)
            done.append(status)

        simulator.press(1)
        assert pad.wait(30) is Status.CONFIRM and done == [Status.CONFIRM]
        pad.on_status(None)
        simulator.press(0)
        assert pad.wait(30) is Status.CANCEL and done == [Status.CONFIRM]


def test_the_wait_ends_in_time() -> None:
    with Pad("K210") as pad:
        begin = monotonic()
        with pytest.raises(PadTimeoutError, match="no key of the pad was used within 0.3 s"):
            pad.wait(0.3)
        assert 0.3 <= monotonic() - begin < 10


def test_the_wait_leaves_the_interpreter_to_others(simulator: Simulator) -> None:
    with Pad("K210") as pad:
        steps: list[int] = []

        def work() -> None:
            for step in range(1000):
                steps.append(step)
            simulator.press(1)

        threading.Thread(target=work).start()
        assert pad.wait(30) is Status.CONFIRM
        assert len(steps) == 1000


def test_the_last_key_is_polled(simulator: Simulator) -> None:
    with Pad("K420") as pad:
        assert pad.last_key() is None
        simulator.press(1)
        pad.wait(30)
        assert pad.last_key() is Status.CONFIRM
        assert pad.last_key() is None
        simulator.press(0)
        pad.wait(30)
        assert pad.last_key() is Status.CANCEL


def test_a_close_in_another_thread_ends_the_wait() -> None:
    pad = Pad("K210")
    threading.Timer(0.2, pad.close).start()
    with pytest.raises(PadClosedError):
        pad.wait()
    pad.close()
    assert pad.closed


class Broken(Exception):
    pass


def broken(_: object) -> None:
    raise Broken


@pytest.mark.parametrize("model", MODELS)
def test_the_wait_raises_what_a_callback_raised(model: Model, simulator: Simulator) -> None:
    with Pad(model, on_status=broken) as pad:
        simulator.press(1)
        with pytest.raises(Broken):
            pad.wait(30)
        assert pad.wait(30) is Status.CONFIRM  # the key itself is not lost
        pad.on_point(broken)
        samples = diagonal(model)
        simulator.send(samples)
        with pytest.raises(Broken) as caught:
            pad.wait(0)
        assert getattr(caught.value, "__notes__") == [
            f"{len(samples) - 1} more exceptions left the callbacks after this one"
        ]
        assert len(pad) == len(samples)


def test_a_failing_callback_ends_a_wait_that_is_under_way(simulator: Simulator) -> None:
    with Pad("K210", on_point=broken) as pad:
        threading.Timer(0.2, simulator.queue, [tap("K210")]).start()
        with pytest.raises(Broken):
            pad.wait(30)


def test_even_an_exit_does_not_leave_a_callback(simulator: Simulator) -> None:
    def leave(_: LivePoint) -> None:
        sys.exit(3)

    with Pad("K210", on_point=leave) as pad:
        simulator.send(tap("K210"))
        with pytest.raises(SystemExit):
            pad.wait(30)


def test_the_close_raises_what_nobody_waited_for(simulator: Simulator) -> None:
    pad = Pad("K210", on_point=broken)
    simulator.send(tap("K210"))
    with pytest.raises(Broken):
        pad.close()
    assert pad.closed and simulator.call_count("UnInitial") == 1
    with pytest.raises(Broken), Pad("K210", on_point=broken):
        simulator.send(tap("K210"))
    Pad("K210").close()


def test_an_exception_on_its_way_is_not_replaced(
    simulator: Simulator, monkeypatch: pytest.MonkeyPatch
) -> None:
    reported: list[BaseException | None] = []
    monkeypatch.setattr(sys, "unraisablehook", lambda arguments: reported.append(arguments.exc_value))
    with pytest.raises(ZeroDivisionError), Pad("K210", on_point=broken) as pad:
        simulator.send(tap("K210"))
        1 // 0
    assert pad.closed
    assert [type(exception) for exception in reported] == [Broken]


def test_inside_a_callback_nothing_waits_or_closes(simulator: Simulator) -> None:
    with Pad("K210") as pad:
        raised: list[CallbackThreadError] = []

        def try_both(_: object) -> None:
            operations: list[Callable[[], object]] = [pad.close, pad.wait]
            for operation in operations:
                try:
                    operation()
                except CallbackThreadError as error:
                    raised.append(error)

        pad.on_point(try_both)
        simulator.send(tap("K210"))
        assert [error.result for error in raised] == [-1, None] * 2
        pad.on_point(None)
        pad.on_status(try_both)
        simulator.press(1)
        assert pad.wait(30) is Status.CONFIRM
        assert [error.result for error in raised] == [-1, None] * 3
        assert not pad.closed and pad.info.connected and simulator.call_count("UnInitial") == 0
