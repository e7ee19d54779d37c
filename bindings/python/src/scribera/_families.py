"""The pad families, as scripts/python-families reads them from the public header."""

# Model, device type, whether it has a screen, whether it has a fingerprint reader.
ROWS: tuple[tuple[str, int, bool, bool], ...] = (
    ("K210", 2, True, False),
    ("K420", 5, True, False),
    ("K421B", 7, True, True),
    ("KM730", 3, False, False),
    ("T580", 4, False, False),
)
