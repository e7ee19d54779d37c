"""The shared library: where it is found, and its five families of functions as one table."""

from __future__ import annotations

import ctypes
import ctypes.util
import functools
import os
from collections.abc import Callable
from ctypes import (
    c_bool,
    c_char_p,
    c_int,
    c_int16,
    c_int32,
    c_long,
    c_ubyte,
    c_uint8,
    c_uint16,
    c_ulong,
    c_void_p,
    c_wchar_p,
)
from enum import Enum, auto
from pathlib import Path
from typing import Any, cast

from ._dataclass import dataclass
from ._errors import InvalidParametersError, LibraryError
from ._families import ROWS, Model

SUCCESS = 0
REFUSED = -1
INVALID_PARAMETERS = -2
NOTHING_THERE = -8

DRIVER_MISSING = 1
_POLL, _WAIT = 0, 1

StatusFunction = ctypes.CFUNCTYPE(None, c_int)
LiveFunction = ctypes.CFUNCTYPE(None, c_ulong, c_long)


class Packet(ctypes.Structure):
    """The record that getPackets fills."""

    _fields_ = [
        ("index", c_int32),
        ("x", c_uint16),
        ("y", c_int16),
        ("pressure", c_int16),
        ("status", c_uint8),
    ]


@dataclass(frozen=True)
class Family:
    """One pad model's family of functions: what the models differ in."""

    model: Model
    prefix: str
    device_type: int
    has_screen: bool  # and a pen id
    has_fingerprint: bool


FAMILIES: dict[Model, Family] = {
    model: Family(model, f"SC{model}_", device_type, has_screen, has_fingerprint)
    for model, device_type, has_screen, has_fingerprint in ROWS
}
"""The supported pads by model name."""


def family_named(model: str) -> Family:
    """Pads and functions put an "SC" before the model's name; people may too."""
    family = FAMILIES.get(cast(Model, str(model).removeprefix("SC")))
    if family is None:
        raise InvalidParametersError(f"no model {model!r}; there are {', '.join(FAMILIES)}")
    return family


def model_named(name: str) -> Model:
    """The model of that name, of which a type checker knows that it is one; for names that come from a
    person or a file. Raises :class:`scribera.InvalidParametersError` when there is none."""
    return family_named(name).model


class Needs(Enum):
    """What a pad has to have for the function to exist."""

    NOTHING = auto()
    SCREEN = auto()
    FINGERPRINT = auto()

    def are_met_by(self, family: Family) -> bool:
        return {
            Needs.NOTHING: True,
            Needs.SCREEN: family.has_screen,
            Needs.FINGERPRINT: family.has_fingerprint,
        }[self]


@dataclass(frozen=True)
class Prototype:
    """One function: its result, its arguments after the device type, and what the package has to know."""

    result: Any
    arguments: tuple[Any, ...] = ()
    needs: Needs = Needs.NOTHING
    driver_code: bool = False  # results other than 0 are the driver's own
    freed_by: str | None = None  # takes the text back


# What the package needs; GetSVGImageBase64Data is left out because it leaves the signature in a file that
# everybody can read. Texts come as void pointers: ctypes turns char pointers into bytes and loses the address
# to be given back.
PROTOTYPES: dict[str, Prototype] = {
    "InitialDevice": Prototype(c_bool, (c_void_p, c_int, c_int, c_int, c_int)),
    "UnInitialDevice": Prototype(c_int),
    "OpenLCD": Prototype(c_int, (c_bool,), Needs.SCREEN, driver_code=True),
    "Clear": Prototype(c_int, driver_code=True),
    "GetHWPenID": Prototype(c_int, (c_char_p, c_int), Needs.SCREEN, driver_code=True),
    "GetHWPadID": Prototype(c_int, (c_char_p, c_int), driver_code=True),
    "GetHWVersionID": Prototype(c_int, (c_char_p, c_int), driver_code=True),
    "DisplayHWVersion": Prototype(c_int, (c_bool,), Needs.SCREEN, driver_code=True),
    "getDeviceInfo": Prototype(c_int, (c_int, c_void_p)),
    "SetPenStyle": Prototype(c_int, (c_bool,), driver_code=True),
    "SetPenWidth": Prototype(c_int, (c_int,)),
    "SetPenColor": Prototype(c_int, (c_int, c_int, c_int)),
    "SignatureStatusCallback": Prototype(c_int, (StatusFunction,)),
    "RealTimeSignatureDataCallback": Prototype(c_bool, (LiveFunction,)),
    "GetDeviceConfirmOrCancelKeyStatus": Prototype(c_int),
    "GetTotalPacketsNumber": Prototype(c_int),
    "getPackets": Prototype(c_int, (ctypes.POINTER(Packet),)),
    "GetInkPointTime": Prototype(c_void_p, (c_int,), freed_by="FreeInkPointTime"),
    "FreeInkPointTime": Prototype(None, (c_void_p,)),
    "SaveDrawingImage": Prototype(c_int, (c_int, c_wchar_p, c_int)),
    "SetSaveCenterImageClip": Prototype(c_int, (c_bool, c_int, c_int)),
    "PacketsBase64EncodeEx": Prototype(c_void_p, (c_int, c_bool), freed_by="PacketsBase64EncodeExFree"),
    "PacketsBase64EncodeExFree": Prototype(None, (c_void_p,)),
    "Base64Decode": Prototype(c_int, (c_int, c_char_p, c_wchar_p)),
    "GetTotalDecodePacketsNumber": Prototype(c_int),
    "GetDecodePacketsData": Prototype(c_int, (c_int, c_int)),
    "GetAboutInfo": Prototype(None, (c_char_p,)),
    "SetDisplayedFPImageAt": Prototype(c_int, (c_void_p, *(c_int,) * 6), Needs.FINGERPRINT),
    "GetFPImageBase64Data": Prototype(
        c_void_p, (c_int, c_bool), Needs.FINGERPRINT, freed_by="FreeFPImageBase64Data"
    ),
    "FreeFPImageBase64Data": Prototype(None, (c_void_p,), Needs.FINGERPRINT),
}


class Functions:
    """The functions of one family in one loaded library."""

    def __init__(self, library: ctypes.CDLL, family: Family) -> None:
        self.library = library
        self.family = family
        self._bound: dict[str, Callable[..., Any]] = {}
        for name, prototype in PROTOTYPES.items():
            if prototype.needs.are_met_by(family):
                self._bound[name] = self._bind(name, prototype)

    def _bind(self, name: str, prototype: Prototype) -> Callable[..., Any]:
        try:
            function = getattr(self.library, self.family.prefix + name)
        except AttributeError as error:
            raise LibraryError(
                f"{self.library._name} lacks {self.family.prefix}{name}: is it {_USUAL_NAMES[0]} of version 3?"
            ) from error
        function.restype = prototype.result
        function.argtypes = (c_int, *prototype.arguments)
        return function  # type: ignore[no-any-return]

    def has(self, name: str) -> bool:
        return name in self._bound

    def call(self, name: str, *arguments: Any) -> Any:
        """The function's result as it comes. The interpreter's lock is released during the call, which may
        therefore wait for a callback."""
        return self._bound[name](self.family.device_type, *arguments)

    def text(self, name: str, *arguments: Any) -> bytes | None:
        """A copy of the text that the function returns; its own is given back. None for null."""
        address = self.call(name, *arguments)
        if address is None:
            return None
        try:
            return ctypes.string_at(address)
        finally:
            self.call(PROTOTYPES[name].freed_by or "", address)

    def has_live_object(self) -> bool:
        return c_void_p.in_dll(self.library, "g_pSignWidget").value is not None


@functools.cache
def functions_of(library: ctypes.CDLL, family: Family) -> Functions:
    return Functions(library, family)


def start_failure(library: ctypes.CDLL) -> tuple[int, str] | None:
    """Why the last opening failed, as a code and a sentence; None of a library before 3.1, which does not tell."""
    try:
        function = library.SCRX_LastStartFailure
    except AttributeError:
        return None
    function.restype = c_int
    function.argtypes = (c_char_p, c_int)
    text = ctypes.create_string_buffer(1024)
    code: int = function(text, len(text))
    return code, text.value.decode("utf-8", "backslashreplace")


def let_workers_wait(on: bool = True, *, library: str | os.PathLike[str] | None = None) -> bool:
    """Lets the library's own threads sleep while nothing waits for them, in the pads that are opened from now on,
    so that an open pad needs no processor time; ``False`` lets them poll. Without a call it is as
    ``SCRIBERA_WORKERS`` in the environment says, "wait" or "poll", and polling without that.

    ``library`` as in :class:`scribera.Pad`. Whether the library can do it: those before 3.1 always poll.
    """
    try:
        function = load(library).SCRX_SetWorkers
    except AttributeError:
        return False
    function.restype = c_int
    function.argtypes = (c_int,)
    return bool(function(_WAIT if on else _POLL) == SUCCESS)


# Built for Qt 5 and for Qt 6. Without a window either does.
_USUAL_NAMES = ("libscriberasdk.so.1", "libscriberasdk-qt6.so.1")
# What a wheel may carry.
_OWN = [Path(__file__).with_name(name) for name in _USUAL_NAMES]
_OWN_PLUGINS = Path(__file__).with_name("qt") / "plugins"
_loaded: dict[str, ctypes.CDLL] = {}


def _name_plugins() -> None:
    """Tells a Qt that came with the wheel where its image formats are, which it looks for where the system's are."""
    places = os.environ.get("QT_PLUGIN_PATH", "").split(os.pathsep)
    if _OWN_PLUGINS.is_dir() and str(_OWN_PLUGINS) not in places:
        os.environ["QT_PLUGIN_PATH"] = os.pathsep.join([*filter(None, places), str(_OWN_PLUGINS)])


def load(library: str | os.PathLike[str] | None) -> ctypes.CDLL:
    """Loads the library for the rest of the process; see :class:`scribera.Pad` for where it is looked for."""
    if library is not None:
        names = [os.fspath(library)]
    elif named := os.environ.get("SCRIBERA_LIBRARY"):
        names = [named]
    elif own := [os.fspath(path) for path in _OWN if path.exists()]:
        names = own
        _name_plugins()
    else:
        names = [*_USUAL_NAMES]
        if found := ctypes.util.find_library("scriberasdk"):
            names.append(found)
    reason: OSError | None = None
    for name in names:
        try:
            if name not in _loaded:
                _loaded[name] = ctypes.CDLL(name)
            return _loaded[name]
        except OSError as error:
            reason = reason or error
    raise LibraryError(
        f"cannot load the Scribera library: {reason}; "
        f"name the file by the argument library or in the environment by SCRIBERA_LIBRARY"
    ) from reason


def enable_log(on: bool = True, *, library: str | os.PathLike[str] | None = None) -> None:
    """Switches the library's log files on or off, for the whole process: every call leaves its lines in
    ``/tmp/scriberasdk.log``, the library's own threads theirs in ``/tmp/scriberasdk_inthread.log``.

    ``library`` as in :class:`scribera.Pad`. May be called at any time, also before a pad is opened.
    """
    c_ubyte.in_dll(load(library), "g_bEnableLog").value = int(on)
