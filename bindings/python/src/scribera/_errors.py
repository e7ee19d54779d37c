"""The exceptions of the package: one for each way in which a call can fail."""

from __future__ import annotations


class ScriberaError(Exception):
    """Base of all exceptions of this package.

    ``result`` is the number that the library returned, or None when the library was not asked or answers
    without a number.
    """

    def __init__(self, message: str, result: int | None = None) -> None:
        super().__init__(message)
        self.result = result


class LibraryError(ScriberaError, OSError):
    """The shared library was not found, cannot be loaded, or lacks a function."""


class NoPadError(ScriberaError):
    """No pad: the driver is missing or does not start, the pad is not plugged in or of another model, or it
    was closed behind the package's back (result -1)."""


class PadBusyError(ScriberaError):
    """A pad is open in this process already; there can be only one."""


class PadClosedError(ScriberaError):
    """The pad was closed, or belongs to the process from which this one was forked."""


class CallbackThreadError(ScriberaError):
    """Inside a callback, something was called that would wait for that very callback (result -1)."""


class InvalidParametersError(ScriberaError, ValueError):
    """ARI_INVALID_PARAMETERS (result -2): an argument is out of range."""


class NothingThereError(ScriberaError):
    """Nothing there, or not done (result -8): no ink to export, no such picture to decode."""


class UnsupportedError(ScriberaError):
    """The pad's model does not have what was asked for."""


class DriverError(ScriberaError):
    """The pad's driver reported a failure; ``result`` is its own code."""


class DocumentError(ScriberaError):
    """A document was not signed; the message has the reason, ``result`` is the program's exit code."""


class PadTimeoutError(ScriberaError, TimeoutError):
    """No key was used in time."""
