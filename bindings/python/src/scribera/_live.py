"""Following the pen in an event loop."""

from __future__ import annotations

from collections import deque
from collections.abc import AsyncIterator, Callable
from typing import TYPE_CHECKING

from ._bell import Bell
from ._types import LivePoint

if TYPE_CHECKING:
    from typing_extensions import Self


class LivePoints(AsyncIterator[LivePoint]):
    """The ink points from :meth:`Pad.live_points` on, one after the other, as an asynchronous iterator::

        async for point in pad.live_points():
            ...

    Each point is told once, in order, however late it is asked for; points that nobody has asked for yet are
    kept. When a task that waits for the next one is cancelled, or its event loop is closed, the points go on
    to be kept, and another ``async for`` over the same object takes up where the last one ended.

    The iteration ends when the pad is closed, or after :meth:`close`, once the points that came before have
    been told.
    """

    def __init__(self, is_over: Callable[[], bool]) -> None:
        self._is_over = is_over
        # The driver's thread appends, tasks take; a step each.
        self._points: deque[LivePoint] = deque()
        # Any thread sets it, in one step.
        self._is_closed = False
        self._bell = Bell()

    def __aiter__(self) -> Self:
        return self

    async def __anext__(self) -> LivePoint:
        point = await self._bell.wait_async(self._take, None)
        if not isinstance(point, LivePoint):
            raise StopAsyncIteration
        return point

    def close(self) -> None:
        """Keeps no further points. May be called from any thread, and more than once."""
        self._is_closed = True
        self._bell.ring()

    def _take(self) -> LivePoint | type[StopAsyncIteration] | None:
        # Asked before the points: a last point may come between the two.
        is_over = self._is_closed or self._is_over()
        try:
            return self._points.popleft()
        except IndexError:
            return StopAsyncIteration if is_over else None

    def add(self, point: LivePoint) -> None:
        """On the driver's thread."""
        if not self._is_closed:
            self._points.append(point)
            self._bell.ring()

    def ring(self) -> None:
        """Lets waiting tasks look whether it is over."""
        self._bell.ring()
