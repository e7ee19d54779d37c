"""Signatures from Scribera pen pads.

One :class:`Pad` is open at a time in a process. It draws the signature on a canvas in memory while a person
signs, keeps every ink point with its time, and hands the signature over as pictures, documents, an ink packet
stream, or point by point::

    from scribera import Pad, Status

    with Pad("K210", size=(800, 400)) as pad:
        if pad.wait(timeout=60) is Status.CONFIRM:
            pad.save("signature.png", dpi=300, clip=(10, 10))

The package calls the shared library ``libscriberasdk.so.1``, which is part of the Scribera SDK and not of
this package; :class:`Pad` tells where it and the pad's driver are looked for.
"""

from ._documents import sign_pdf
from ._errors import (
    CallbackThreadError,
    DocumentError,
    DriverError,
    InvalidParametersError,
    LibraryError,
    NoPadError,
    NothingThereError,
    PadBusyError,
    PadClosedError,
    PadTimeoutError,
    ScriberaError,
    UnsupportedError,
)
from ._families import Model
from ._native import FAMILIES, Family, enable_log, let_workers_wait, model_named
from ._live import LivePoints
from ._pad import Pad
from ._types import DecodedPoint, ImageType, InkPoint, InkRecord, LivePoint, PadInfo, Status, ink_array, read_ink

__version__ = "3.1.0"

__all__ = [
    "FAMILIES",
    "CallbackThreadError",
    "DecodedPoint",
    "DocumentError",
    "DriverError",
    "Family",
    "ImageType",
    "InkPoint",
    "InkRecord",
    "InvalidParametersError",
    "LibraryError",
    "LivePoint",
    "LivePoints",
    "Model",
    "NoPadError",
    "NothingThereError",
    "Pad",
    "PadBusyError",
    "PadClosedError",
    "PadInfo",
    "PadTimeoutError",
    "ScriberaError",
    "Status",
    "UnsupportedError",
    "enable_log",
    "ink_array",
    "let_workers_wait",
    "model_named",
    "read_ink",
    "sign_pdf",
]
