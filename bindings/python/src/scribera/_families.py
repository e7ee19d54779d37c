"""The pad families, as scripts/python-families reads them from the public header."""

from __future__ import annotations

from typing import Literal

# The models' names, with and without what pads put before them.
Model = Literal[
    "K210",
    "K420",
    "K421B",
    "KM730",
    "T580",
    "SCK210",
    "SCK420",
    "SCK421B",
    "SCKM730",
    "SCT580",
]

# Model, device type, whether it has a screen, whether it has a fingerprint reader.
ROWS: tuple[tuple[Model, int, bool, bool], ...] = (
    ("K210", 2, True, False),
    ("K420", 5, True, False),
    ("K421B", 7, True, True),
    ("KM730", 3, False, False),
    ("T580", 4, False, False),
)
