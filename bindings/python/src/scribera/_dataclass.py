"""dataclass, with slots where Python has them: from 3.10 on."""

from __future__ import annotations

import sys
from typing import TYPE_CHECKING

if TYPE_CHECKING or sys.version_info < (3, 10):
    from dataclasses import dataclass
else:
    import dataclasses
    from functools import partial

    dataclass = partial(dataclasses.dataclass, slots=True)

__all__ = ["dataclass"]
