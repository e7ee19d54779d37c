"""The library's threads, the interpreter's lock, and the host's threads."""

from __future__ import annotations

import random
import threading
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from time import sleep

import pytest

from pictures import read_png
from scribera import LivePoint, Model, Pad, PadBusyError, PadClosedError, Status, read_ink
from simulator import AREAS, DOWN, MODELS, MOVE, UP, Sample, Simulator, diagonal, wait_until


def scribble(model: Model, count: int) -> list[Sample]:
    """Strokes of a hundred samples, no two points at one place in a row."""
    area, chance = AREAS[model], random.Random(1)
    samples: list[Sample] = []
    for number in range(count):
        status = (DOWN, *(MOVE,) * 98, UP)[number % 100]
        x = area.left + chance.randrange(area.width)
        samples.append((x, area.top + number % area.height, 1 + number % 1000, status))
    return samples


@pytest.mark.parametrize("model", MODELS)
def test_a_hundred_thousand_samples_while_the_host_polls(model: Model, simulator: Simulator) -> None:
    count = 100_000
    samples = scribble(model, count)
    arrived = 0
    last: LivePoint | None = None

    def note(point: LivePoint) -> None:
        nonlocal arrived, last
        arrived, last = arrived + 1, point

    with Pad(model, size=(100, 50), on_point=note) as pad:
        simulator.queue(samples)
        polls, seen = 0, 0
        while seen < count:
            polls, before, seen = polls + 1, seen, len(pad)
            assert seen >= before
            if seen:
                newest = pad[seen - 1]
                sample = samples[seen - 2 if newest.is_stroke_end else seen - 1]
                assert (newest.x, newest.y, newest.pressure) == sample[:3]
                for point, expected in zip(pad[before : before + 50], samples[before:]):
                    assert point.is_stroke_end == (expected[3] == UP)
        simulator.wait_idle()
        assert polls > 3
        assert arrived == count and last is not None and not last.is_pen_down
        points = list(pad)
        assert len(points) == count and [record.x for record in read_ink(pad.ink())] == [p.x for p in points]
        kept = [(p.x, p.y, p.pressure) for p in points if not p.is_stroke_end]
        assert kept == [sample[:3] for sample in samples if sample[3] != UP]


def test_exports_in_the_middle_of_the_signing(simulator: Simulator) -> None:
    with Pad("K210", size=(60, 40), on_point=lambda point: None) as pad:
        simulator.queue(scribble("K210", 30_000))
        wait_until(lambda: len(pad) > 100, "points")
        while len(pad) < 30_000:
            before = len(pad)
            stream = read_ink(pad.ink())
            assert before <= len(stream) <= len(pad)
            picture = read_png(pad.png())
            assert (picture.width, picture.height) == (60, 40)


@pytest.mark.parametrize("model", MODELS)
def test_callbacks_use_the_pad(model: Model, simulator: Simulator) -> None:
    samples = diagonal(model)
    lengths: list[int] = []
    results: list[object] = []
    with Pad(model, size=(100, 50)) as pad:

        @pad.on_point
        def on_point(point: LivePoint) -> None:
            lengths.append(len(pad))
            assert pad[-1].is_stroke_end != point.is_pen_down
            if len(lengths) % 20 == 0:
                pad.pen_width = 1 + len(lengths) % 10
                results.append(pad.png())
                results.append(pad.decode(pad.ink()))

        @pad.on_status
        def on_status(status: Status) -> None:
            pad.save("signature.svg", clip=(5, 5))
            results.append(pad.info.model)
            with pytest.raises(PadBusyError):
                Pad(model)
            pad.clear()

        simulator.send(samples)
        simulator.press(1)
        assert pad.wait(30) is Status.CONFIRM
        assert lengths == list(range(1, len(samples) + 1))
        assert len(results) == 2 * (len(samples) // 20) + 1 and results[-1] == AREAS[model].reported_model
        assert Path("signature.svg").read_bytes().rstrip().endswith(b"</svg>")
        assert len(pad) == 0


def test_host_and_callbacks_export_at_the_same_time(simulator: Simulator) -> None:
    """Each export has its own clipping, and each decoding its own points, whoever comes in between."""
    streams = [bytes([number]) * 24 * (number + 1) for number in range(1, 5)]
    with Pad("K210", size=(100, 60)) as pad:
        simulator.send(diagonal("K210"))
        whole, clipped = len(pad.bmp()), len(pad.bmp(clip=(1, 1)))
        assert whole != clipped
        in_callback: list[tuple[int, int]] = []

        @pad.on_point
        def export(point: LivePoint) -> None:
            number = len(in_callback) % 4
            in_callback.append((len(pad.bmp(clip=(1, 1))), len(pad.decode(streams[number])) - number))

        simulator.queue(diagonal("K210", moves=2) * 60)
        while len(in_callback) < 240:
            assert len(pad.bmp()) == whole
            assert len(pad.decode(streams[0])) == 2
        simulator.wait_idle()
        assert {size for size, _ in in_callback} == {clipped}
        assert {count for _, count in in_callback} == {2}


def test_host_threads_take_turns(simulator: Simulator) -> None:
    with Pad("T580", size=(100, 50)) as pad:
        simulator.send(diagonal("T580"))
        png, svg, ink = pad.png(), pad.svg(), pad.ink()
        simulator.queue([])

        def work(number: int) -> bool:
            return (pad.png(), pad.svg(), pad.ink())[number % 3] == (png, svg, ink)[number % 3]

        with ThreadPoolExecutor(8) as threads:
            assert all(threads.map(work, range(240)))


@pytest.mark.parametrize("model", MODELS)
def test_close_while_samples_stream(model: Model, simulator: Simulator) -> None:
    """The library waits in the close for the thread that waits for the interpreter in the callback."""
    for repetition in range(30):
        arrived = 0

        def note(point: LivePoint) -> None:
            nonlocal arrived
            arrived += 1
            if arrived % 7 == 0:
                len(pad)
                pad.ink()

        pad = Pad(model, size=(100, 50), on_point=note)
        simulator.queue(scribble(model, 5000))
        wait_until(lambda: arrived > repetition * 5, "points")
        pad.close()
        at_close = arrived
        assert at_close < 5000
        threading.Event().wait(0.01)
        assert arrived == at_close


def test_close_while_the_status_function_runs(simulator: Simulator) -> None:
    entered, others = threading.Event(), 0
    finished = False

    def slow(status: Status) -> None:
        nonlocal finished
        entered.set()
        threading.Event().wait(0.3)
        finished = True

    def count() -> None:
        nonlocal others
        while not repr(pad).endswith(" closed>"):
            others += 1

    pad = Pad("K210", on_status=slow)
    simulator.press(1)
    assert entered.wait(30)
    threading.Thread(target=count).start()
    pad.close()
    assert finished and others > 100


def test_a_callback_that_the_close_overtakes_is_no_failure(simulator: Simulator) -> None:
    entered, outcome = threading.Event(), list[BaseException]()

    def slow(point: LivePoint) -> None:
        entered.set()
        wait_until(lambda: pad.closed, "the close")
        try:
            pad.png()
        except PadClosedError as error:
            outcome.append(error)
            raise

    pad = Pad("K210", on_point=slow)
    simulator.queue(diagonal("K210"))
    assert entered.wait(30)
    pad.close()  # raises nothing
    assert len(outcome) == 1


def test_several_threads_close_once(simulator: Simulator) -> None:
    for _ in range(20):
        before = simulator.call_count("UnInitial")
        pad = Pad("K420", on_point=lambda point: None)
        simulator.queue(scribble("K420", 2000))
        with ThreadPoolExecutor(4) as threads:
            list(threads.map(lambda _: pad.close(), range(4)))
        assert simulator.call_count("UnInitial") == before + 1


def test_several_threads_open_once() -> None:
    def attempt(_: int) -> Pad | None:
        try:
            return Pad("K210")
        except PadBusyError:
            return None

    for _ in range(10):
        with ThreadPoolExecutor(4) as threads:
            opened = [pad for pad in threads.map(attempt, range(4)) if pad]
        assert len(opened) == 1
        opened[0].close()


def test_a_slow_driver_does_not_hold_the_interpreter(simulator: Simulator) -> None:
    with Pad("K210") as pad:
        simulator.set_delay("ClearDeviceContent", 3000)
        naps = 0
        thread = threading.Thread(target=pad.clear)
        thread.start()
        while thread.is_alive():
            naps += 1
            sleep(0.05)
        assert naps >= 10  # each ends only when this thread gets the interpreter's lock
