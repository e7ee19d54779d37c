"""The pad: one open at a time in a process, windowless."""

from __future__ import annotations

import atexit
import base64
import ctypes
import io
import operator
import os
import struct
import sys
import tempfile
import threading
import warnings
import weakref
from collections import deque
from collections.abc import Callable, Iterator, Sequence
from contextlib import AbstractContextManager, nullcontext
from pathlib import Path
from types import TracebackType
from typing import TYPE_CHECKING, Any, Optional, TypeVar, overload

from . import _native
from ._bell import Bell
from ._errors import (
    CallbackThreadError,
    DriverError,
    InvalidParametersError,
    NoPadError,
    NothingThereError,
    PadBusyError,
    PadClosedError,
    PadTimeoutError,
    ScriberaError,
    UnsupportedError,
)
from ._families import Model
from ._files import write_file
from ._live import LivePoints
from ._optional import optional
from ._types import (
    DecodedPoint,
    ImageType,
    InkPoint,
    LivePoint,
    PadInfo,
    Status,
    base64_text,
    ink_array,
    ink_dtype,
)

if TYPE_CHECKING:
    import numpy as np
    import PIL.Image
    from numpy.typing import NDArray
    from typing_extensions import Self

StatusHandler = Callable[[Status], object]
PointHandler = Callable[[LivePoint], object]
AnyStatusHandler = TypeVar("AnyStatusHandler", bound=Optional[StatusHandler])
AnyPointHandler = TypeVar("AnyPointHandler", bound=Optional[PointHandler])

_SUFFIXES = {
    ".bmp": ImageType.BMP,
    ".jpg": ImageType.JPEG,
    ".jpeg": ImageType.JPEG,
    ".png": ImageType.PNG,
    ".pdf": ImageType.PDF,
    ".svg": ImageType.SVG,
    ".ink": ImageType.INK,
}
_RASTERS = (ImageType.BMP, ImageType.JPEG, ImageType.PNG)
_LAST_WORDS = {ImageType.PDF: b"%%EOF", ImageType.SVG: b"</svg>"}
_DPI_LEVELS = {150: 0, 300: 1}
_DRIVER = "libscriberadrv.so"

# What getDeviceInfo is asked for, and the largest answer with room to spare.
_CONNECTED, _WIDTH, _HEIGHT, _MAX_PRESSURE, _MAKER, _MODEL, _VERSION = range(1, 8)
_ANSWER_BYTES = 16
_TEXT_BYTES = 256
_DECODED_X, _DECODED_Y, _DECODED_STROKE_END = 1, 2, 3


class _CallbackThread(threading.local):
    """Whether the current thread is one of the library's, inside a callback."""

    active = False


_callback_thread = _CallbackThread()

# A pad enters under the lock and leaves by itself. It also keeps the callbacks' function objects alive until
# the library is done with them.
_open_pad_lock = threading.Lock()
_open_pad: Pad | None = None

# Locks and Ctrl-C: a with statement that takes a lock of the interpreter itself cannot be interrupted between
# taking and guarding it, a context manager written in Python can. What close() needs stands on one line with
# its lock, so that not even a tracing function that raises leaves it locked.


class Pad:
    """An open pad and the signature on it; a container of its ink points.

    Opening: ``model`` is a key of :data:`scribera.FAMILIES`, or that with the "SC" which pads put before it;
    ``size`` the canvas's width and height in pixels (one that is not positive leaves the canvas empty: points
    only). ``on_status`` and ``on_point`` are callbacks as in :meth:`on_status` and :meth:`on_point`; the pen
    works from the moment of opening, so a point that comes before ``on_point`` is set is stored but not told.
    Use the pad in a ``with`` statement or call :meth:`close`; a pad left open keeps a processor core busy, unless
    :func:`scribera.let_workers_wait` was called, and is closed when the process exits.

    The shared library is ``library``, else the environment's ``SCRIBERA_LIBRARY``, else that in the package's
    own wheel, else ``libscriberasdk.so.1`` or ``libscriberasdk-qt6.so.1``, the first that is there, where the
    system keeps its libraries. It loads the pad's driver, ``libscriberadrv.so``, from the current directory.
    With ``driver_directory`` the current directory is that one while the pad is being opened, and the old one
    again afterwards: it belongs to the whole process, so no other thread should use relative paths meanwhile.

    Threads: all methods may be called from any thread; calls from several threads take turns. Callbacks run
    on the library's threads and may call all methods but :meth:`wait` and :meth:`close`. They should return
    quickly, and must not wait for another thread that uses the pad. The interpreter's lock is free while the
    library works. A process forked from one with an open pad has no pad.

    Errors: :class:`PadBusyError` when a pad is open already, :class:`LibraryError` without a library,
    :class:`NoPadError` when the pad cannot be opened, :class:`InvalidParametersError` for a bad argument here
    or in any method, :class:`PadClosedError` from any method after :meth:`close`.
    """

    def __init__(
        self,
        model: Model,
        size: tuple[int, int] = (800, 400),
        *,
        on_status: StatusHandler | None = None,
        on_point: PointHandler | None = None,
        library: str | os.PathLike[str] | None = None,
        driver_directory: str | os.PathLike[str] | None = None,
    ) -> None:
        self._family = _native.family_named(model)
        width, height = _integers("size", size, "width, height")
        self._size = (width, height)
        # Once close() has begun, no call begins any more. Any thread sets and reads it, in one step.
        self._closing = False
        # Whether the library has closed the pad. Written under _closing_lock.
        self._closed = False
        self._process = os.getpid()
        self._pen_width, self._pen_color, self._pressure = 3, (0, 0, 0), True

        # Host threads take turns. Callbacks do not take this lock: a host thread may hold it in a call in
        # which the driver waits for the callback to return.
        self._host_lock = threading.RLock()
        # Guards what takes more than one call: texts and their return, the clipping of an export, the decoded
        # points. Callbacks take it too, so no call that can wait for a callback is made under it. After
        # _host_lock.
        self._export_lock = threading.RLock()
        # Held while the library closes the pad; no other lock is taken under it.
        self._closing_lock = threading.RLock()
        # Keys that no wait() has told yet. Library threads append, waiting threads take, in one step each.
        self._keys: deque[Status] = deque()
        # The first exception that left a callback and the number of those after it, until it is raised; under
        # _failure_lock.
        self._failure: tuple[BaseException, int] | None = None
        self._failure_lock = threading.RLock()
        # Rings for keys, failures and the close.
        self._bell = Bell()
        # Those who follow the pen, as long as somebody holds them. Any thread adds, removes and copies, in one
        # step each.
        self._followers: list[weakref.ref[LivePoints]] = []

        self._status_handler = on_status
        self._point_handler: PointHandler | None = None
        self._status_function = _native.StatusFunction(self._status_arrived)
        self._live_function = _native.LiveFunction(self._point_arrived)
        self._is_live_registered = False

        self._functions = _native.functions_of(_native.load(library), self._family)
        try:
            with _open_pad_lock: self._reserve_library()
            with self._host_lock: self._open(driver_directory)
            self._checked("SignatureStatusCallback", self._status_function)
            if on_point is not None:
                self.on_point(on_point)
        except BaseException:
            if _open_pad is self:
                self._shut_down()
            raise

    def _reserve_library(self) -> None:
        global _open_pad
        if _open_pad is not None or self._functions.has_live_object():
            raise PadBusyError("a pad is open in this process already; close it first")
        _open_pad = self

    def _open(self, driver_directory: str | os.PathLike[str] | None) -> None:
        where = "the current directory" if driver_directory is None else os.fspath(driver_directory)
        back = None if driver_directory is None else os.open(".", os.O_PATH | os.O_DIRECTORY | os.O_CLOEXEC)
        try:
            if driver_directory is not None:
                os.chdir(driver_directory)
            if self._functions.call("InitialDevice", None, 0, 0, *self._size):
                return
            failure = _native.start_failure(self._functions.library)
            has_driver = os.path.exists(_DRIVER)
        finally:
            if back is not None:
                os.fchdir(back)
                os.close(back)
        if failure is not None:
            code, sentence = failure
            if code == _native.DRIVER_MISSING:
                sentence += "; name the driver's directory by the argument driver_directory"
            raise NoPadError(sentence)
        if not has_driver:
            raise NoPadError(
                f"no driver {_DRIVER} in {where}; name its directory by the argument driver_directory"
            )
        raise NoPadError(
            f"the driver in {where} cannot be used, or finds no {self.model}: is the pad plugged in?"
        )

    # Opening and closing

    def close(self) -> None:
        """Closes the pad; canvas, points and decoded points are gone then. Does nothing on a closed pad.

        Waits for a callback that is running; its calls raise :class:`PadClosedError` from now on, which ends
        it without being an error. No callback begins any more. Ctrl-C does not keep the pad open: it is
        closed before KeyboardInterrupt goes on. Raises :class:`CallbackThreadError` inside a callback:
        nothing is closed. An exception out of a callback that :meth:`wait` has not raised yet is raised here,
        after the pad was closed.
        """
        self._shut_down()
        failure = self._take_failure()
        if failure is not None:
            raise failure

    def _shut_down(self) -> None:
        if self._process != os.getpid():
            return  # the library's threads did not come along into this process
        if _callback_thread.active:
            result = self._functions.call("UnInitialDevice")
            raise CallbackThreadError(
                "the pad cannot be closed inside a callback; close it on another thread", result
            )
        try:
            result = self._uninitialise()
        except BaseException:
            # Ctrl-C, which may come between any two lines: what it left undone is done before it goes on.
            self._uninitialise()
            raise
        self._check("UnInitialDevice", result)

    def _uninitialise(self) -> int:
        """Takes all steps that are left. Any thread may take any of them again."""
        self._closing = True
        self._bell.ring()
        with self._host_lock, self._export_lock: pass  # who is inside a call comes out first
        # No other lock is held: the library waits for callbacks here, which may use this object meanwhile.
        with self._closing_lock: return self._uninitialise_once()

    def _uninitialise_once(self) -> int:
        global _open_pad
        if not self._closed:
            result: int = self._functions.call("UnInitialDevice")
            if result != _native.SUCCESS:
                self._closing = False
                return result
            self._closed = True
        if _open_pad is self:
            _open_pad = None
        for follower in self._live_followers():  # no point can come any more
            follower.ring()
        return _native.SUCCESS

    def __enter__(self) -> Self:
        return self

    def __exit__(
        self,
        kind: type[BaseException] | None,
        exception: BaseException | None,
        traceback: TracebackType | None,
    ) -> None:
        if exception is None:
            self.close()
            return
        self._shut_down()
        failure = self._take_failure()
        if failure is not None:
            _report_unraisable(failure)

    @property
    def closed(self) -> bool:
        """Whether the pad was closed, is being closed, or belongs to another process."""
        return self._closing or self._process != os.getpid()

    def __repr__(self) -> str:
        state = "closed" if self._closed else "closing" if self._closing else "open"
        return f"<scribera.Pad {self.model} {self._size[0]}x{self._size[1]} {state}>"

    # Callbacks and keys

    def on_status(self, handler: AnyStatusHandler) -> AnyStatusHandler:
        """Sets the function that is called with a :class:`Status` when the person uses a key of the pad; None
        for none. Returns the function, so that it can stand as a decorator.

        It runs on a thread of the library; while it runs, the next pen-down and key wait. What it raises is
        raised by the next :meth:`wait`, else by :meth:`close`. The pad itself does nothing about a key: to
        save on CONFIRM and to clear on CANCEL is up to the caller.
        """
        self._require_open()
        self._status_handler = handler
        return handler

    def on_point(self, handler: AnyPointHandler) -> AnyPointHandler:
        """Sets the function that is called with a :class:`LivePoint` for every ink point, right after the
        point was stored; None for none. Returns the function, so that it can stand as a decorator.

        It runs on the driver's thread, which waits for it: a slow function delays the pen. Exceptions as with
        :meth:`on_status`.
        """
        self._require_open()
        self._point_handler = handler
        if handler is not None:
            self._register_live()
        return handler

    def _register_live(self) -> None:
        """Not before it is needed, since it makes every sample wait for the interpreter's lock. It cannot be
        taken back."""
        with self._turn():
            self._require_open()
            if not self._is_live_registered:
                if not self._functions.call("RealTimeSignatureDataCallback", self._live_function):
                    raise NoPadError(self._label("RealTimeSignatureDataCallback") + ": no open pad")
                self._is_live_registered = True

    def live_points(self) -> LivePoints:
        """The points from now on, for ``async for``; :class:`LivePoints` tells how it ends. Beside
        :meth:`on_point`, whose function is called before the point is handed over, and beside others of its
        kind. Points are kept until they are asked for, as long as the object is held and not closed.

        What a callback raises is raised by :meth:`wait`, :meth:`wait_async` or :meth:`close`, not here.
        """
        self._require_open()
        points = LivePoints(self._is_over)
        self._followers.append(weakref.ref(points, self._followers.remove))
        self._register_live()
        return points

    def _is_over(self) -> bool:
        """Whether no callback can come any more, which is later than :attr:`closed`."""
        return self._closed or self._process != os.getpid()

    def _live_followers(self) -> list[LivePoints]:
        followers = (reference() for reference in tuple(self._followers))
        return [follower for follower in followers if follower is not None]

    def wait(self, timeout: float | None = None) -> Status:
        """Waits until the person uses a key of the pad, and tells which. Each key is told once, in order; one
        that came before the call counts. The status callback has returned by then.

        ``timeout`` is in seconds, None waits for ever. Raises :class:`PadTimeoutError` when no key came in
        time, :class:`PadClosedError` when another thread closes the pad, :class:`CallbackThreadError` inside
        a callback, and what a callback raised.
        """
        self._require_open()
        if _callback_thread.active:
            raise CallbackThreadError("the next key cannot come while a callback waits for it")
        return self._told(self._bell.wait(self._take_news, timeout), timeout)

    async def wait_async(self, timeout: float | None = None) -> Status:
        """As :meth:`wait`, while the event loop goes on. Several tasks and threads may wait: each key goes to
        one of them. A task that is cancelled takes no key with it: the next wait tells it.

        Everything else that may take a while, :meth:`close` for one, holds the loop up; ``asyncio.to_thread``
        does it elsewhere.
        """
        self._require_open()
        if _callback_thread.active:
            raise CallbackThreadError("the next key cannot come while a callback waits for it")
        return self._told(await self._bell.wait_async(self._take_news, timeout), timeout)

    def _told(self, news: Status | BaseException | None, timeout: float | None) -> Status:
        if news is None:
            raise PadTimeoutError(f"no key of the pad was used within {timeout} s")
        if isinstance(news, BaseException):
            raise news
        return news

    def _take_news(self) -> Status | BaseException | None:
        failure = self._take_failure()
        if failure is not None:
            return failure
        try:
            return self._keys.popleft()
        except IndexError:
            return PadClosedError("the pad is closed") if self.closed else None

    def last_key(self) -> Status | None:
        """Reads and resets the key touched last, for callers that poll; None when there was none since the
        last call. Apart from :meth:`wait`, and on most models earlier: the touch counts, not the release."""
        with self._turn():
            self._require_open()
            key = self._functions.call("GetDeviceConfirmOrCancelKeyStatus")
        return None if key == _native.REFUSED else Status(key)

    def _status_arrived(self, status: int) -> None:
        key = Status(status)
        self._run(self._status_handler, key)
        self._keys.append(key)
        self._bell.ring()

    def _point_arrived(self, position: int, pen: int) -> None:
        point = LivePoint.unpack(position, pen)
        self._run(self._point_handler, point)
        for follower in self._live_followers():
            follower.add(point)

    def _run(self, handler: Callable[[Any], object] | None, news: Status | LivePoint) -> None:
        if handler is None or self._closing:
            return
        _callback_thread.active = True
        try:
            handler(news)
        except BaseException as exception:  # SystemExit too: nothing may leave a callback
            self._keep_failure(exception)
        finally:
            _callback_thread.active = False

    def _keep_failure(self, exception: BaseException) -> None:
        if isinstance(exception, PadClosedError) and self._closing:
            return  # the callback was overtaken by close()
        with self._failure_lock:
            first, more = self._failure or (exception, -1)
            self._failure = (first, more + 1)
        self._bell.ring()

    def _take_failure(self) -> BaseException | None:
        if self._process != os.getpid():
            return None  # and the lock may be held by a thread that did not come along
        with self._failure_lock: kept, self._failure = self._failure, None
        if kept is None:
            return None
        failure, more = kept
        if more:
            _add_note(failure, f"{more} more exceptions left the callbacks after this one")
        return failure

    # The pad itself

    @property
    def model(self) -> Model:
        """The model it was opened as."""
        return self._family.model

    @property
    def size(self) -> tuple[int, int]:
        """Width and height of the canvas in pixels."""
        return self._size

    @property
    def info(self) -> PadInfo:
        """What the library knows about the pad. It names the K421B "K421H"."""
        with self._turn():
            self._require_open()
            (connected,) = struct.unpack_from("=B", self._answer(_CONNECTED))
            _, width = struct.unpack_from("=ii", self._answer(_WIDTH))
            _, height = struct.unpack_from("=ii", self._answer(_HEIGHT))
            (pressure,) = struct.unpack_from("=i", self._answer(_MAX_PRESSURE))
            maker, model = (_as_text(self._answer(index)) for index in (_MAKER, _MODEL))
            major, minor = struct.unpack_from("=ii", self._answer(_VERSION))
        return PadInfo(connected == 1, width, height, pressure, maker, model, (major, minor))

    def _answer(self, index: int) -> bytes:
        answer = ctypes.create_string_buffer(_ANSWER_BYTES)
        self._check("getDeviceInfo", self._functions.call("getDeviceInfo", index, answer))
        return answer.raw

    @property
    def pad_id(self) -> str:
        """The id of the pad. Raises :class:`DriverError` when the driver cannot read it, as the next two
        do."""
        return self._identity("GetHWPadID")

    @property
    def pen_id(self) -> str:
        """The id of the pen; :class:`UnsupportedError` on KM730 and T580."""
        return self._identity("GetHWPenID")

    @property
    def version(self) -> str:
        """The pad's version text, which begins with its model name."""
        return self._identity("GetHWVersionID")

    def _identity(self, name: str) -> str:
        text = ctypes.create_string_buffer(_TEXT_BYTES)
        self._checked(name, text, _TEXT_BYTES - 1)  # the driver need not end a text that fills the buffer
        return _as_text(text.raw)

    @property
    def about(self) -> str:
        """The text of the library's About box, a few lines."""
        text = ctypes.create_string_buffer(_TEXT_BYTES)
        with self._turn():
            self._require_open()
            self._functions.call("GetAboutInfo", text)
        return _as_text(text.raw)

    def set_screen(self, on: bool) -> None:
        """Switches the pad's screen on or off; off clears the canvas (on the K421B the fingerprint too) and
        keeps the points. :class:`UnsupportedError` on KM730 and T580, :class:`DriverError` when the driver
        fails."""
        self._checked("OpenLCD", bool(on))

    def show_version(self, on: bool = True) -> None:
        """Shows or hides the version on the pad's own screen. Errors as :meth:`set_screen`."""
        self._checked("DisplayHWVersion", bool(on))

    def clear(self) -> None:
        """Clears canvas, points and pad, on the K421B the fingerprint too. The first call after a touch of
        the cancel key leaves the pad's screen alone. :class:`DriverError` when the driver fails: canvas and
        points are cleared all the same."""
        self._checked("Clear")

    # The pen; all three count for segments from now on, and for the whole of an SVG

    @property
    def pen_width(self) -> int:
        """Width of the pen, 1 to 10; 3 at the start. Pixels without :attr:`pressure`, else the model's
        rule."""
        return self._pen_width

    @pen_width.setter
    def pen_width(self, width: int) -> None:
        number = operator.index(width)
        if not 1 <= number <= 10:
            raise InvalidParametersError(f"pen_width has to be 1 to 10, not {number}")
        self._checked("SetPenWidth", number)
        self._pen_width = number

    @property
    def pen_color(self) -> tuple[int, int, int]:
        """Red, green and blue of the pen, each 0 to 255; black at the start. White ink counts as paper. The
        library takes numbers only, no names of colours."""
        return self._pen_color

    @pen_color.setter
    def pen_color(self, color: tuple[int, int, int]) -> None:
        try:
            red, green, blue = _integers("pen_color", color, "red, green, blue", 0, 255)
        except TypeError as error:
            raise TypeError(f"{error}: the library takes numbers only, no names of colours") from None
        self._checked("SetPenColor", red, green, blue)
        self._pen_color = (red, green, blue)

    @property
    def pressure(self) -> bool:
        """Whether the width of a segment follows the pressure; true at the start. Setting it tells the pad
        too: on :class:`DriverError` the choice holds nevertheless."""
        return self._pressure

    @pressure.setter
    def pressure(self, on: bool) -> None:
        try:
            self._checked("SetPenStyle", bool(on))
        except DriverError:
            self._pressure = bool(on)
            raise
        self._pressure = bool(on)

    # Points

    def __len__(self) -> int:
        """The number of stored points; it grows while the person signs."""
        with self._turn():
            self._require_open()
            count: int = self._functions.call("GetTotalPacketsNumber")
        if count != _native.NOTHING_THERE:
            return count
        return 0

    def __bool__(self) -> bool:
        """True, also without points: a pad is more than its points."""
        return True

    @overload
    def __getitem__(self, index: int) -> InkPoint:
        ...

    @overload
    def __getitem__(self, index: slice) -> list[InkPoint]:
        ...

    def __getitem__(self, index: int | slice) -> InkPoint | list[InkPoint]:
        """One point, or a list of points for a slice; as with a list."""
        if isinstance(index, slice):
            points = (self._point(i) for i in range(*index.indices(len(self))))
            return [point for point in points if point is not None]
        wanted = operator.index(index)
        point = self._point(wanted if wanted >= 0 else wanted + len(self))
        if point is None:
            raise IndexError(f"no ink point {index}")
        return point

    def __iter__(self) -> Iterator[InkPoint]:
        """The points that are there at the start; fewer when they are cleared meanwhile."""
        for index in range(len(self)):
            point = self._point(index)
            if point is None:
                return
            yield point

    def strokes(self) -> list[list[InkPoint]]:
        """The points, a list for each stroke; the last one may be unfinished."""
        strokes: list[list[InkPoint]] = []
        begins = True
        for point in self:
            if begins:
                strokes.append([])
            strokes[-1].append(point)
            begins = point.is_stroke_end
        return strokes

    def _point(self, index: int) -> InkPoint | None:
        if not 0 <= index < 2**31:  # ctypes would cut it
            return None
        packet = _native.Packet(index)
        with self._turn(), self._export_lock:
            self._require_open()
            if self._functions.call("getPackets", packet) != _native.SUCCESS:
                return None
            time = self._functions.text("GetInkPointTime", index)
        if time is None:
            return None  # cleared in between
        return InkPoint(packet.x, packet.y, packet.pressure, packet.status == 1, time.decode("ascii"))

    def array(self) -> NDArray[np.void]:
        """The stored points as a NumPy array, as :func:`scribera.ink_array` makes it of the ink packet stream;
        empty without points. ImportError without NumPy."""
        self._require_open()
        numpy = optional("numpy", "numpy", "python3-numpy", "array")
        try:
            return ink_array(self.ink())
        except NothingThereError:
            nothing: NDArray[np.void] = numpy.empty(0, ink_dtype(numpy))
            return nothing

    # Pictures. ``clip`` is None for the whole canvas, or (x, y) for its part around the ink with these
    # margins in pixels, of which one at least has to be positive.

    def save(
        self,
        path: str | os.PathLike[str],
        image_type: ImageType | None = None,
        *,
        dpi: int = 300,
        clip: tuple[int, int] | None = None,
        transparent: bool = True,
    ) -> None:
        """Saves the signature as a file of ``image_type``: BMP, JPEG, PNG, PDF, SVG, or INK for the Base64
        text of the ink packet stream; by default what the path's suffix says.

        An existing file gets new content, and keeps its old one when the disk is full. Where nobody can tell
        the difference, a new file takes its place in one step, with owner, mode and access list of the old
        one; elsewhere (several links, another owner, a folder that cannot be written) it is written over.

        ``dpi`` is 150 or 300: the resolution written into the file, for PDF the scale. ``clip`` is None for
        the whole canvas, or ``(x, y)`` for its part around the ink with margins of this many pixels, at
        least one of them positive. ``transparent`` makes the white of a PNG transparent; the other types
        ignore it. INK ignores all three.

        Raises :class:`NothingThereError` when there is no ink (and on the K421B no fingerprint), and OSError
        when the file cannot be written; no file is made in the first case.
        """
        path = Path(path)
        image_type = _type_for(path, image_type)
        if image_type is ImageType.INK:
            write_file(path, self.ink_text().encode("ascii"))
        else:
            write_file(path, self._picture(image_type, dpi, clip, transparent))

    def svg(self, *, dpi: int = 150, clip: tuple[int, int] | None = None) -> bytes:
        """The strokes as an SVG drawing, as :meth:`save` writes it."""
        return self._picture(ImageType.SVG, dpi, clip, True)

    def pdf(self, *, dpi: int = 300, clip: tuple[int, int] | None = None) -> bytes:
        """One A4 page of PDF with the picture, as :meth:`save` writes it."""
        return self._picture(ImageType.PDF, dpi, clip, True)

    def png(self, *, transparent: bool = True, clip: tuple[int, int] | None = None) -> bytes:
        """The picture as PNG without a resolution; ``clip``, ``transparent`` and errors as in :meth:`save`.
        On the K421B this, :meth:`jpeg` and :meth:`bmp` need points: a fingerprint alone is not enough."""
        return self._encoded(ImageType.PNG, clip, transparent)

    def jpeg(self, *, clip: tuple[int, int] | None = None) -> bytes:
        """The picture as JPEG without a resolution; errors as in :meth:`save`."""
        return self._encoded(ImageType.JPEG, clip, False)

    def bmp(self, *, clip: tuple[int, int] | None = None) -> bytes:
        """The picture as BMP without a resolution; errors as in :meth:`save`."""
        return self._encoded(ImageType.BMP, clip, False)

    def to_pil(self, *, transparent: bool = True, clip: tuple[int, int] | None = None) -> PIL.Image.Image:
        """The picture for Pillow, as :meth:`png` has it. ImportError without Pillow."""
        self._require_open()
        image = optional("PIL.Image", "Pillow", "python3-pil", "to_pil")
        picture: PIL.Image.Image = image.open(io.BytesIO(self.png(transparent=transparent, clip=clip)))
        picture.load()
        return picture

    def _repr_png_(self) -> bytes | None:
        """What a notebook shows: the picture on white, None without ink and of a closed pad."""
        try:
            return self.png(transparent=False)
        except (NothingThereError, PadClosedError):
            return None

    def _repr_svg_(self) -> str | None:
        """What a notebook shows that can draw: the strokes, None without ink and of a closed pad."""
        try:
            return self.svg().decode()
        except (NothingThereError, PadClosedError):
            return None

    def _picture(
        self, image_type: ImageType, dpi: int, clip: tuple[int, int] | None, transparent: bool
    ) -> bytes:
        """What the library writes into a file. The file lies in a private directory: of the caller's path the
        library would say no more than that it did not work."""
        if dpi not in _DPI_LEVELS:
            raise InvalidParametersError(f"dpi has to be 150 or 300, not {dpi}")
        format_suffix = next(suffix for suffix, kind in _SUFFIXES.items() if kind is image_type)
        if image_type is ImageType.PNG and not transparent:
            image_type = ImageType.BMP  # the suffix decides about the format, the type about transparency
        with tempfile.TemporaryDirectory(prefix="scribera-") as directory, self._turn(), self._export_lock:
            self._require_open()
            self._clip(clip)
            if clip is not None and image_type in (ImageType.PDF, ImageType.SVG):
                # Of these two the library makes files without a picture when the ink consists of taps.
                self._require_picture(self._functions.text("PacketsBase64EncodeEx", ImageType.BMP, False))
            file = Path(directory, "signature" + format_suffix)
            result = self._functions.call("SaveDrawingImage", image_type, str(file), _DPI_LEVELS[dpi])
            self._check(
                "SaveDrawingImage", result, f"there is no ink, or no space for the picture in {directory}"
            )
            picture = file.read_bytes() if file.exists() else b""
        # Of these two the library reports success also when the disk is full.
        if not picture.rstrip().endswith(_LAST_WORDS.get(image_type, b"")):
            raise ScriberaError(f"the {image_type.name} was not written whole into {tempfile.gettempdir()}")
        return picture

    def _encoded(self, image_type: ImageType, clip: tuple[int, int] | None, transparent: bool) -> bytes:
        with self._turn(), self._export_lock:
            self._require_open()
            self._clip(clip)
            text = self._functions.text("PacketsBase64EncodeEx", image_type, bool(transparent))
        if text is None:
            raise NothingThereError("there is no ink")
        self._require_picture(text)
        return base64.b64decode(text)

    def _require_picture(self, text: bytes | None) -> None:
        if text == b"":
            raise NothingThereError("there is nothing to make a picture of")

    def _clip(self, clip: tuple[int, int] | None) -> None:
        x, y = (0, 0) if clip is None else _integers("clip", clip, "x, y", 0)
        if clip is not None and x == 0 and y == 0:  # the library would not clip then
            raise InvalidParametersError(
                "one of the margins of clip has to be positive, not (0, 0); None is the whole canvas"
            )
        self._check(
            "SetSaveCenterImageClip", self._functions.call("SetSaveCenterImageClip", clip is not None, x, y)
        )

    # Ink packet streams

    def ink(self) -> bytes:
        """The ink packet stream: 24 bytes for each point and one zero byte. :func:`scribera.read_ink` reads
        it, :meth:`decode` lets the library read it. Raises :class:`NothingThereError` without points."""
        return base64.b64decode(self.ink_text())

    def ink_text(self) -> str:
        """The ink packet stream as Base64 text, the form in which other hosts of the library exchange it."""
        with self._turn(), self._export_lock:
            self._require_open()
            text = self._functions.text("PacketsBase64EncodeEx", ImageType.INK, False)
        if text is None:
            raise NothingThereError("there is no ink")
        return text.decode("ascii")

    def decode(self, ink: bytes | str) -> list[DecodedPoint]:
        """The points of an ink packet stream, bytes of :meth:`ink` or text of :meth:`ink_text`, read by the
        library: every whole 24 bytes are taken for a point as they come. The signature stays as it is. Raises
        :class:`InvalidParametersError` when there is nothing to decode."""
        text = base64_text(ink)
        call = self._functions.call
        with self._turn(), self._export_lock:
            self._require_open()
            self._check("Base64Decode", call("Base64Decode", ImageType.INK, text, None))
            count = call("GetTotalDecodePacketsNumber")
            # The library reads x with a sign, which it does not have.
            return [
                DecodedPoint(
                    call("GetDecodePacketsData", index, _DECODED_X) & 0xFFFF,
                    call("GetDecodePacketsData", index, _DECODED_Y),
                    call("GetDecodePacketsData", index, _DECODED_STROKE_END) == 1,
                )
                for index in range(max(count, 0))
            ]

    def decode_image(
        self, image: bytes | str, path: str | os.PathLike[str], image_type: ImageType | None = None
    ) -> None:
        """Writes a picture, bytes of a file or its Base64 text, into a file by way of the library.
        ``image_type`` (BMP, JPEG or PNG, by default what the path's suffix says) is what the picture is and
        what is written.

        Drops decoded points. Raises :class:`NothingThereError` when there is no such picture in it or it is
        too large, :class:`InvalidParametersError` for an empty one, and OSError when the file cannot be
        written. An older file is treated as by :meth:`save`.
        """
        path = Path(path)
        image_type = _type_for(path, image_type)
        if image_type not in _RASTERS:
            raise InvalidParametersError(f"image_type has to be BMP, JPEG or PNG, not {image_type}")
        text = base64_text(image)
        with tempfile.TemporaryDirectory(prefix="scribera-") as directory, self._turn(), self._export_lock:
            self._require_open()
            file = Path(directory, "picture")
            result = self._functions.call("Base64Decode", image_type, text, str(file))
            self._check("Base64Decode", result, f"no {image_type} is in it, or one beyond 256 MiB")
            picture = file.read_bytes()
        write_file(path, picture)

    # Fingerprint

    def place_fingerprint(self, canvas: tuple[int, int], rectangle: tuple[int, int, int, int]) -> None:
        """Draws the fingerprint onto a picture of its own of ``canvas`` (width, height) pixels instead of
        onto the signature, stretched into ``rectangle`` (left, top, width, height), which has to lie within.

        A fingerprint comes from the K421B by itself, and without a notice: before it comes, and after
        :meth:`clear`, the picture is blank. Without this call it stands in the centre of the signature.
        :class:`UnsupportedError` on other models, :class:`InvalidParametersError` when the rectangle does not
        fit.
        """
        size = _integers("canvas", canvas, "width, height")
        place = _integers("rectangle", rectangle, "left, top, width, height")
        meaning = f"rectangle {place} is not within canvas {size}"
        self._checked("SetDisplayedFPImageAt", None, *size, *place, meaning=meaning)

    def fingerprint(
        self,
        image_type: ImageType = ImageType.PNG,
        *,
        rectangle_only: bool = False,
        clip: tuple[int, int] | None = None,
    ) -> bytes:
        """The picture of :meth:`place_fingerprint` as BMP, JPEG or PNG with white made transparent; with
        ``rectangle_only`` its part in the rectangle. ``clip`` as in :meth:`save`, around all that is not
        white, whatever ``rectangle_only`` says. Raises :class:`NothingThereError` before it was placed, and
        when clipping finds nothing; :class:`UnsupportedError` on other models."""
        if image_type not in _RASTERS:
            raise InvalidParametersError(f"image_type has to be BMP, JPEG or PNG, not {image_type}")
        self._require("GetFPImageBase64Data")
        with self._turn(), self._export_lock:
            self._require_open()
            self._clip(clip)
            text = self._functions.text("GetFPImageBase64Data", image_type, bool(rectangle_only))
        if text is None:
            raise NothingThereError("the fingerprint has no place yet; call place_fingerprint first")
        self._require_picture(text)
        return base64.b64decode(text)

    # Calls

    def _turn(self) -> AbstractContextManager[object]:
        """What a call is made under. _require_open follows inside: close() may have come while this was
        waited for, and once it has begun, no text is on loan that could not be given back any more."""
        self._require_open()  # first: in a forked process the lock may be held by a thread that is not there
        if _callback_thread.active:
            return nullcontext()
        return self._host_lock

    def _require_open(self) -> None:
        if self._closing:
            raise PadClosedError("the pad is closed")
        if self._process != os.getpid():
            raise PadClosedError(f"the pad belongs to process {self._process}")

    def _require(self, name: str) -> None:
        self._require_open()
        if not self._functions.has(name):
            needs = _native.PROTOTYPES[name].needs
            those = [model for model, family in _native.FAMILIES.items() if needs.are_met_by(family)]
            raise UnsupportedError(
                f"{self._label(name)} does not exist: only {', '.join(those)} have what it needs"
            )

    def _label(self, name: str) -> str:
        return self._family.prefix + name

    def _checked(self, name: str, *arguments: Any, meaning: str | None = None) -> None:
        self._require(name)
        with self._turn():
            self._require_open()
            self._check(name, self._functions.call(name, *arguments), meaning)

    def _check(self, name: str, result: int, meaning: str | None = None) -> None:
        """``meaning`` tells more than -2 and -8 do."""
        if result == _native.SUCCESS:
            return
        label = self._label(name)
        if result == _native.REFUSED and not self._functions.has_live_object():
            raise NoPadError(f"{label}: {result}, no open pad: other code of this process closed it", result)
        if _native.PROTOTYPES[name].driver_code:
            raise DriverError(f"{label}: the driver reports {result}", result)
        if result == _native.INVALID_PARAMETERS:
            raise InvalidParametersError(f"{label}: {result} {meaning or 'ARI_INVALID_PARAMETERS'}", result)
        if result == _native.NOTHING_THERE:
            raise NothingThereError(f"{label}: {result}, {meaning or 'nothing there or not done'}", result)
        raise ScriberaError(f"{label}: {result}", result)


def _integers(
    name: str, values: Sequence[int], parts: str, least: int = -(2**31), most: int = 2**31 - 1
) -> tuple[int, ...]:
    """The values, one for each of the parts. Without limits they are those of C's int, which ctypes would cut
    them to."""
    wanted = f"{name} has to be ({parts}) in whole numbers of {least} to {most}, not {values!r}"
    try:
        numbers = tuple(operator.index(value) for value in values)
    except TypeError as error:
        raise TypeError(wanted) from error
    if len(numbers) != len(parts.split()) or not all(least <= number <= most for number in numbers):
        raise InvalidParametersError(wanted)
    return numbers


def _type_for(path: Path, image_type: ImageType | None) -> ImageType:
    if image_type is None:
        suffix = path.suffix.lower()
        if suffix not in _SUFFIXES:
            raise InvalidParametersError(
                f"{path.name} has none of the suffixes {', '.join(_SUFFIXES)}; give image_type"
            )
        return _SUFFIXES[suffix]
    if image_type not in _SUFFIXES.values():
        names = ", ".join(kind.name for kind in ImageType)
        raise InvalidParametersError(f"image_type has to be one of ImageType's {names}, not {image_type!r}")
    return ImageType(image_type)


def _add_note(exception: BaseException, note: str) -> None:
    if sys.version_info >= (3, 11):
        exception.add_note(note)
    else:  # what later Pythons and their tools read
        setattr(exception, "__notes__", [*getattr(exception, "__notes__", []), note])


def _as_text(answer: bytes) -> str:
    return answer.split(b"\0", 1)[0].decode("utf-8", "backslashreplace")


def _report_unraisable(exception: BaseException) -> None:
    """Hands an exception to sys.unraisablehook, by the only way that Python code has: raising it where nobody
    can catch it."""

    def callback() -> None:
        raise exception

    ctypes.CFUNCTYPE(None)(callback)()


def _close_at_exit() -> None:
    """A library thread that came back into an interpreter which is gone would end the process."""
    pad = _open_pad
    if pad is not None and pad._process == os.getpid():
        if not pad.closed:
            warnings.warn(f"not closed: {pad!r}", ResourceWarning, source=pad)
        pad.close()


atexit.register(_close_at_exit)
