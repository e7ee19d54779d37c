"""Waiting for other threads in a way that Ctrl-C cannot break."""

from __future__ import annotations

from collections.abc import Callable
from queue import Empty, SimpleQueue
from time import monotonic
from typing import TypeVar

News = TypeVar("News")


class Bell:
    """Wakes the threads that wait for something.

    Ctrl-C raises KeyboardInterrupt between any two lines of the main thread, also inside a
    threading.Condition, which may then stay locked for ever. Nothing here can stay locked.
    """

    def __init__(self) -> None:
        # One for each waiting thread, which adds and removes it. All threads put into it; a step each.
        self._sleepers: list[SimpleQueue[None]] = []

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
