"""Waiting for other threads in a way that Ctrl-C cannot break, on a thread or in an event loop."""

from __future__ import annotations

import asyncio
from collections.abc import Callable
from contextlib import suppress
from queue import Empty, SimpleQueue
from time import monotonic
from typing import TypeVar, Union

News = TypeVar("News")


class _Nap:
    """The sleep of one task. Only put() may be called on any thread; all else belongs to the loop's."""

    def __init__(self) -> None:
        self._loop = asyncio.get_running_loop()
        self._end = self._loop.create_future()
        self.is_over_time = False

    def put(self, _: None) -> None:
        with suppress(RuntimeError):  # the loop was closed, and the task is gone with it
            self._loop.call_soon_threadsafe(self._wake)

    def _wake(self) -> None:
        if not self._end.done():
            self._end.set_result(None)

    def _time_is_up(self) -> None:
        self.is_over_time = True
        self._wake()

    def wake_after(self, seconds: float) -> asyncio.TimerHandle:
        return self._loop.call_later(seconds, self._time_is_up)

    async def sleep(self) -> None:
        await self._end
        self._end = self._loop.create_future()


class Bell:
    """Wakes the threads that wait for something.

    Ctrl-C raises KeyboardInterrupt between any two lines of the main thread, also inside a
    threading.Condition, which may then stay locked for ever. Nothing here can stay locked.
    """

    def __init__(self) -> None:
        # One for each waiting thread or task, which adds and removes it. All threads put into it; a step each.
        self._sleepers: list[Union[SimpleQueue[None], _Nap]] = []

    def ring(self) -> None:
        for sleeper in tuple(self._sleepers):
            sleeper.put(None)

    def wait(self, take: Callable[[], News], timeout: float | None) -> News:
        """What ``take`` gives; it is asked at once and after each ring until it is not None or time is up."""
        end = None if timeout is None else monotonic() + timeout
        sleeper: SimpleQueue[None] = SimpleQueue()
        self._sleepers.append(sleeper)
        try:
            while (news := take()) is None:
                try:
                    sleeper.get(timeout=None if end is None else max(0, end - monotonic()))
                except Empty:
                    return take()
            return news
        finally:
            self._sleepers.remove(sleeper)

    async def wait_async(self, take: Callable[[], News | None], timeout: float | None) -> News | None:
        """As :meth:`wait`, while the event loop goes on. What is taken is returned without another step of the
        loop in between, so that a cancelled task has taken nothing."""
        nap = _Nap()
        timer = None if timeout is None else nap.wake_after(timeout)
        self._sleepers.append(nap)
        try:
            while (news := take()) is None and not nap.is_over_time:
                await nap.sleep()
            return news
        finally:
            self._sleepers.remove(nap)
            if timer is not None:
                timer.cancel()
