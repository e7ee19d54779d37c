"""Fingerprints of the K421B."""

from __future__ import annotations

from pathlib import Path

import pytest

from pictures import jpeg_size, read_bmp, read_png
from scribera import ImageType, InvalidParametersError, Model, NothingThereError, Pad, UnsupportedError
from simulator import Simulator, diagonal, wait_until

RED = (255, 0, 0)


def test_a_fingerprint_goes_where_it_is_placed(simulator: Simulator) -> None:
    with Pad("K421B", size=(160, 90)) as pad:
        with pytest.raises(NothingThereError):
            pad.fingerprint()
        pad.place_fingerprint((120, 100), (30, 20, 52, 72))
        assert read_png(pad.fingerprint()).ink() == set()
        simulator.send_fingerprint("whorl")
        wait_until(lambda: bool(read_png(pad.fingerprint()).ink()), "the fingerprint")
        picture = read_png(pad.fingerprint())
        assert (picture.width, picture.height) == (120, 100)
        left, top, right, bottom = picture.ink_box()
        assert left >= 30 and top >= 20 and right < 82 and bottom < 92
        assert {pixel for row in picture.on_white() for pixel in row} == {RED, (255, 255, 255)}
        assert picture.is_transparent_where_white()

        part = read_png(pad.fingerprint(rectangle_only=True))
        assert (part.width, part.height) == (52, 72)
        assert {(x + 30, y + 20) for x, y in part.ink()} == picture.ink()
        assert read_bmp(pad.fingerprint(ImageType.BMP)).on_white() == picture.on_white()
        assert jpeg_size(pad.fingerprint(ImageType.JPEG, rectangle_only=True)) == (52, 72)
        clipped = read_png(pad.fingerprint(clip=(3, 4)))
        assert (clipped.width, clipped.height) == (right - left + 7, bottom - top + 9)

        simulator.send(diagonal("K421B"))
        assert all(pixel != RED for row in read_png(pad.png()).on_white() for pixel in row)
        pad.clear()
        wait_until(lambda: not read_png(pad.fingerprint()).ink(), "the blank picture")
        with pytest.raises(NothingThereError):
            pad.fingerprint(clip=(3, 4))


def test_without_a_place_it_stands_in_the_signature(simulator: Simulator) -> None:
    with Pad("K421B", size=(160, 90)) as pad:
        simulator.send_fingerprint("loop")

        def is_merged() -> bool:
            pad.save("signature.bmp")
            return bool(read_bmp(Path("signature.bmp").read_bytes()).ink())

        wait_until(is_merged, "the fingerprint")
        left, top, right, bottom = read_bmp(Path("signature.bmp").read_bytes()).ink_box()
        assert 80 - 18 <= left and right <= 80 + 18 and 22 <= top and bottom <= 68
        with pytest.raises(NothingThereError):
            pad.ink()
        with pytest.raises(NothingThereError):
            pad.png()
        simulator.send(diagonal("K421B"))
        pixels = {pixel for row in read_png(pad.png()).on_white() for pixel in row}
        assert {RED, (0, 0, 0)} <= pixels


def test_bad_places_and_types_are_refused() -> None:
    with Pad("K421B") as pad:
        for canvas, rectangle in (
            ((100, 100), (60, 60, 50, 30)),
            ((100, 100), (-1, 0, 10, 10)),
            ((100, 100), (0, 0, 101, 10)),
            ((100, 100), (2**32, 0, 10, 10)),
            ((100, 100), (0, 0, 10)),
            ((100,), (0, 0, 10, 10)),
        ):
            with pytest.raises(InvalidParametersError):
                pad.place_fingerprint(canvas, rectangle)  # type: ignore[arg-type]
        pad.place_fingerprint((100, 100), (0, 0, 100, 100))
        for image_type in (ImageType.INK, ImageType.PDF, ImageType.SVG):
            with pytest.raises(InvalidParametersError):
                pad.fingerprint(image_type)


@pytest.mark.parametrize("model", ["K210", "K420", "KM730", "T580"])
def test_other_pads_have_no_fingerprint(model: Model) -> None:
    with Pad(model) as pad:
        with pytest.raises(UnsupportedError):
            pad.place_fingerprint((100, 100), (0, 0, 10, 10))
        with pytest.raises(UnsupportedError):
            pad.fingerprint()
