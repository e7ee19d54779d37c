"""Waiting for keys and following the pen in an event loop."""

from __future__ import annotations

import asyncio
import gc
import threading
from collections.abc import AsyncIterator
from concurrent.futures import ThreadPoolExecutor

import pytest

from scribera import (
    CallbackThreadError,
    LivePoint,
    LivePoints,
    Model,
    Pad,
    PadClosedError,
    PadTimeoutError,
    Status,
)
from simulator import DOWN, MODELS, MOVE, Sample, Simulator, diagonal, tap, wait_until

CONFIRM, CANCEL = 1, 0


async def steps(count: int = 20) -> None:
    """Lets the loop run everything that is due."""
    for _ in range(count):
        await asyncio.sleep(0)


async def all_of(points: AsyncIterator[LivePoint]) -> list[LivePoint]:
    return [point async for point in points]


def numbered(count: int) -> list[Sample]:
    """One stroke whose samples are told by their pressures."""
    return [(1000, 1000, 1 + number % 2000, MOVE if number else DOWN) for number in range(count)]


@pytest.mark.parametrize("model", MODELS)
def test_the_key_ends_the_wait_and_the_loop_goes_on_meanwhile(model: Model, simulator: Simulator) -> None:
    async def main(pad: Pad) -> int:
        waiting = asyncio.create_task(pad.wait_async(60))
        await steps()
        assert not waiting.done()
        turns = 0
        simulator.press(CONFIRM)
        while not waiting.done():
            turns += 1
            await asyncio.sleep(0)
        assert waiting.result() is Status.CONFIRM
        simulator.press(CANCEL)
        assert await pad.wait_async() is Status.CANCEL
        return turns

    with Pad(model) as pad:
        assert asyncio.run(main(pad)) > 0


def test_keys_that_came_before_count_each_once_and_in_order(simulator: Simulator) -> None:
    keys: list[Status] = []

    async def main(pad: Pad) -> None:
        assert [await pad.wait_async(0) for _ in range(3)] == [Status.CONFIRM, Status.CANCEL, Status.CONFIRM]
        with pytest.raises(PadTimeoutError, match="no key of the pad was used within 0 s"):
            await pad.wait_async(0)

    with Pad("K210", on_status=keys.append) as pad:
        for count, key in enumerate((CONFIRM, CANCEL, CONFIRM), 1):
            simulator.press(key)
            wait_until(lambda: len(pad._keys) == count, "the key")
        asyncio.run(main(pad))
        assert keys == [Status.CONFIRM, Status.CANCEL, Status.CONFIRM]


def test_a_wait_without_a_key_ends_in_time() -> None:
    with Pad("K210") as pad:
        for timeout in (0.05, 0, -1):
            with pytest.raises(PadTimeoutError):
                asyncio.run(pad.wait_async(timeout))
        assert pad._bell._sleepers == []


def test_a_cancelled_wait_takes_no_key_with_it(simulator: Simulator) -> None:
    async def main(pad: Pad) -> None:
        # Before the key, and between the key and the task's next step.
        for key_is_there in (False, True):
            waiting = asyncio.create_task(pad.wait_async())
            await steps()
            if key_is_there:
                simulator.press(CONFIRM)
                wait_until(lambda: len(pad._keys) == 1, "the key")  # the loop does not run meanwhile
            waiting.cancel()
            with pytest.raises(asyncio.CancelledError):
                await waiting
        assert pad._bell._sleepers == []
        assert await pad.wait_async(0) is Status.CONFIRM

    with Pad("K210") as pad:
        asyncio.run(main(pad))


def test_several_tasks_and_threads_share_the_keys(simulator: Simulator) -> None:
    async def main(pad: Pad) -> list[Status]:
        with ThreadPoolExecutor(2) as threads:
            loop = asyncio.get_running_loop()
            waits: list[asyncio.Future[Status]] = []
            waits += [asyncio.create_task(pad.wait_async(60)) for _ in range(3)]
            waits += [loop.run_in_executor(threads, pad.wait, 60) for _ in range(2)]
            await steps()
            for count in range(1, 6):
                simulator.press(CONFIRM)
                while sum(waiting.done() for waiting in waits) < count:
                    await asyncio.sleep(0.001)
            return list(await asyncio.gather(*waits))

    with Pad("K210") as pad:
        assert asyncio.run(main(pad)) == [Status.CONFIRM] * 5


def test_the_close_ends_the_wait() -> None:
    async def main(pad: Pad) -> None:
        waits = [asyncio.create_task(pad.wait_async()) for _ in range(3)]
        await steps()
        await asyncio.get_running_loop().run_in_executor(None, pad.close)
        for waiting in waits:
            with pytest.raises(PadClosedError):
                await waiting
        with pytest.raises(PadClosedError):
            await pad.wait_async()

    asyncio.run(main(Pad("T580")))


def test_the_wait_raises_what_a_callback_raised(simulator: Simulator) -> None:
    class Broken(Exception):
        pass

    def broken(_: object) -> None:
        raise Broken

    async def main(pad: Pad) -> None:
        waiting = asyncio.create_task(pad.wait_async(60))
        await steps()
        simulator.press(CONFIRM)
        with pytest.raises(Broken):
            await waiting
        assert await pad.wait_async(60) is Status.CONFIRM

    with Pad("K210", on_status=broken) as pad:
        asyncio.run(main(pad))


def test_a_loop_that_is_closed_with_a_waiting_task_does_the_pad_no_harm(simulator: Simulator) -> None:
    with Pad("K210") as pad:
        loop = asyncio.new_event_loop()
        points = pad.live_points()
        waiting, following = loop.create_task(pad.wait_async()), loop.create_task(points.__anext__())
        loop.run_until_complete(steps())
        loop.close()  # both tasks still sleep in it
        simulator.send(tap("K210"))
        simulator.press(CONFIRM)
        assert pad.wait(60) is Status.CONFIRM  # nothing was raised in a callback
        assert len(pad) == 2 and len(points._points) == 2
        for task in (waiting, following):
            setattr(task, "_log_destroy_pending", False)
        simulator.press(CANCEL)
        assert asyncio.run(pad.wait_async(60)) is Status.CANCEL


def test_no_wait_inside_a_callback(simulator: Simulator) -> None:
    refused = threading.Event()

    def wait(_: Status) -> None:
        with pytest.raises(CallbackThreadError):
            asyncio.run(pad.wait_async())
        refused.set()

    with Pad("K210", on_status=wait) as pad:
        simulator.press(CONFIRM)
        assert refused.wait(60)


@pytest.mark.parametrize("model", MODELS)
def test_the_points_are_told_as_they_come(model: Model, simulator: Simulator) -> None:
    expected: list[LivePoint] = []

    async def main(pad: Pad) -> None:
        points, samples = pad.live_points(), diagonal(model)
        assert isinstance(points, LivePoints)
        for _ in range(2):
            simulator.queue(samples)
            told = [await points.__anext__() for _ in samples]
            assert told == expected[-len(samples) :]
        points.close()
        assert await all_of(points) == []

    with Pad(model, on_point=expected.append) as pad:
        asyncio.run(main(pad))


def test_no_point_is_lost_while_the_pen_is_faster_than_the_task(simulator: Simulator) -> None:
    count = 20_000

    async def main(pad: Pad) -> None:
        first, second = pad.live_points(), pad.live_points()
        simulator.queue(numbered(count))
        for points in (first, second):
            pressures = []
            async for point in points:
                pressures.append(point.pressure)
                if len(pressures) == count:
                    points.close()
            assert pressures == [pressure for _, _, pressure, _ in numbered(count)]

    with Pad("K210", size=(60, 40)) as pad:
        asyncio.run(main(pad))


def test_the_close_of_the_pad_ends_the_iteration_after_the_last_point(simulator: Simulator) -> None:
    async def main(pad: Pad) -> None:
        points = pad.live_points()
        following = asyncio.create_task(all_of(points))
        simulator.send(diagonal("K210"))
        pad.close()
        assert len(await following) == len(diagonal("K210"))
        assert await all_of(points) == []

    asyncio.run(main(Pad("K210")))


def test_points_that_come_during_the_close_are_told_to_the_last(simulator: Simulator) -> None:
    """Neither a gap nor a point that is told after the end."""

    async def main() -> int:
        pad = Pad("K210", size=(60, 40))
        points = pad.live_points()
        following = asyncio.create_task(all_of(points))
        simulator.queue(numbered(5000))
        while len(pad) < 50:
            await asyncio.sleep(0)
        stored = len(pad)
        await asyncio.get_running_loop().run_in_executor(None, pad.close)
        told = [point.pressure for point in await following]
        assert stored <= len(told)
        assert told == [pressure for _, _, pressure, _ in numbered(len(told))]
        assert not points._points
        return len(told)

    assert min(asyncio.run(main()) for _ in range(20)) < 5000  # some were cut off


def test_a_cancelled_iteration_is_taken_up_without_a_gap(simulator: Simulator) -> None:
    pressures: list[int] = []

    async def follow(points: LivePoints) -> None:
        async for point in points:
            pressures.append(point.pressure)
            await asyncio.sleep(0)

    async def main(pad: Pad) -> None:
        points = pad.live_points()
        simulator.queue(numbered(3000))
        for _ in range(50):
            following = asyncio.create_task(follow(points))
            await steps()
            following.cancel()
            with pytest.raises(asyncio.CancelledError):
                await following
        simulator.wait_idle()
        points.close()
        await follow(points)
        assert pressures == [pressure for _, _, pressure, _ in numbered(3000)]

    with Pad("K210", size=(60, 40)) as pad:
        asyncio.run(main(pad))


def test_another_loop_takes_up_where_the_first_one_ended(simulator: Simulator) -> None:
    with Pad("K210") as pad:
        points = pad.live_points()

        async def one() -> LivePoint:
            return await points.__anext__()

        simulator.send(numbered(3))
        first = asyncio.run(one())
        simulator.send([(1000, 1000, 9, MOVE)])
        assert [first.pressure, *(asyncio.run(one()).pressure for _ in range(3))] == [1, 2, 3, 9]


def test_points_that_nobody_holds_are_not_kept(simulator: Simulator) -> None:
    async def first_of(pad: Pad) -> LivePoint:
        points = pad.live_points()
        simulator.queue(tap("K210") * 50)
        async for point in points:
            return point
        raise AssertionError

    with Pad("K210") as pad:
        following = pad.live_points()
        simulator.send(tap("K210"))
        assert len(following._points) == 2
        following.close()
        simulator.send(tap("K210"))
        assert len(following._points) == 2
        asyncio.run(first_of(pad))
        del following
        gc.collect()
        assert pad._followers == []
        simulator.wait_idle()
        assert len(pad) == 104


def test_a_point_function_that_fails_hides_no_point(simulator: Simulator) -> None:
    def broken(_: LivePoint) -> None:
        raise ZeroDivisionError

    with Pad("K210", on_point=broken) as pad:
        points = pad.live_points()
        simulator.send(tap("K210"))
        points.close()
        assert len(asyncio.run(all_of(points))) == 2
        with pytest.raises(ZeroDivisionError):
            asyncio.run(pad.wait_async(0))


def test_key_and_points_at_the_same_time(simulator: Simulator) -> None:
    async def sign(pad: Pad) -> tuple[Status, int]:
        points = pad.live_points()
        following = asyncio.create_task(all_of(points))
        await asyncio.get_running_loop().run_in_executor(None, simulator.send, diagonal("KM730"))
        simulator.press(CONFIRM)
        status = await pad.wait_async(60)
        points.close()
        return status, len(await following)

    with Pad("KM730") as pad:
        status, count = asyncio.run(sign(pad))
        assert status is Status.CONFIRM and count == len(pad)
