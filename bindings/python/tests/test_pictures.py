"""The signature as pictures and documents, looked at pixel by pixel."""

from __future__ import annotations

import base64
import resource
import xml.etree.ElementTree
from collections.abc import Callable
from pathlib import Path

import pytest

from pictures import jpeg_size, read_bmp, read_png
from scribera import ImageType, InvalidParametersError, Model, NothingThereError, Pad, ScriberaError
from simulator import MODELS, Simulator, diagonal, tap

SIZE = (160, 90)


@pytest.mark.parametrize("model", MODELS)
def test_all_forms_show_the_same_picture(model: Model, simulator: Simulator) -> None:
    with Pad(model, size=SIZE) as pad:
        pad.pressure = False  # the pen is 3 pixels wide throughout
        simulator.send(diagonal(model))
        clear, white, bitmap = read_png(pad.png()), read_png(pad.png(transparent=False)), read_bmp(pad.bmp())
        assert (
            (clear.width, clear.height)
            == (white.width, white.height)
            == (bitmap.width, bitmap.height)
            == SIZE
        )
        assert clear.on_white() == white.on_white() == bitmap.on_white()
        assert clear.is_transparent_where_white() and white.is_opaque()
        left, top, right, bottom = bitmap.ink_box()
        assert abs(left - 0.2 * 160) < 4 and abs(right - 0.8 * 160) < 4
        assert abs(top - 0.2 * 90) < 4 and abs(bottom - 0.8 * 90) < 4
        assert jpeg_size(pad.jpeg()) == SIZE

        pad.save("clear.png")
        pad.save("white.png", transparent=False)
        pad.save("picture.bmp")
        assert read_png(Path("clear.png").read_bytes()).rows == clear.rows
        assert read_png(Path("white.png").read_bytes()).rows == white.rows
        assert read_bmp(Path("picture.bmp").read_bytes()).rows == bitmap.rows


@pytest.mark.parametrize("model", MODELS)
def test_clipping_keeps_the_ink_and_its_margins(model: Model, simulator: Simulator) -> None:
    with Pad(model, size=SIZE) as pad:
        simulator.send(diagonal(model))
        whole = read_png(pad.png())
        left, top, right, bottom = whole.ink_box()
        for clip in ((10, 5), (0, 3), (4, 0)):
            part = read_png(pad.png(clip=clip))
            assert part.width == right - left + 1 + 2 * clip[0]
            assert part.height == bottom - top + 1 + 2 * clip[1]
            assert part.ink() == {(x - left + clip[0], y - top + clip[1]) for x, y in whole.ink()}
            assert read_bmp(pad.bmp(clip=clip)).ink() == part.ink()
            assert jpeg_size(pad.jpeg(clip=clip)) == (part.width, part.height)
            pad.save("part.png", clip=clip)
            assert read_png(Path("part.png").read_bytes()).rows == part.rows
        assert read_png(pad.png()).rows == whole.rows  # clipping holds for one export only
        assert read_png(pad.png(clip=(1000, 1000))).rows == whole.rows


def test_the_resolution_is_written_into_the_file(simulator: Simulator) -> None:
    with Pad("K210", size=SIZE) as pad:
        simulator.send(diagonal("K210"))
        pad.save("default.png")
        for dpi, metre in ((150, 5906), (300, 11811)):
            pad.save("picture.png", dpi=dpi)
            assert abs((read_png(Path("picture.png").read_bytes()).pixels_per_metre or 0) - metre) <= 1
        assert Path("default.png").read_bytes() == Path("picture.png").read_bytes()
        assert pad.svg(dpi=150) != pad.svg(dpi=300)
        for dpi in (0, 1, 72, -150, 299):
            with pytest.raises(InvalidParametersError):
                pad.save("refused.png", dpi=dpi)
    assert not Path("refused.png").exists()


def test_the_suffix_or_the_type_decides_about_the_format(simulator: Simulator) -> None:
    beginnings = {
        "a.bmp": b"BM",
        "a.jpg": b"\xff\xd8",
        "a.JPEG": b"\xff\xd8",
        "a.png": b"\x89PNG",
        "a.pdf": b"%PDF",
        "a.svg": b"<?xml",
    }
    with Pad("K210", size=SIZE) as pad:
        simulator.send(diagonal("K210"))
        for name, beginning in beginnings.items():
            pad.save(name)
            assert Path(name).read_bytes().startswith(beginning), name
        pad.save("without suffix", ImageType.PNG)
        assert Path("without suffix").read_bytes() == Path("a.png").read_bytes()
        pad.save(Path("übung – 署名.bmp"))
        assert Path("übung – 署名.bmp").read_bytes() == Path("a.bmp").read_bytes()
        pad.save("a.bmp", ImageType.SVG)
        assert Path("a.bmp").read_bytes() == Path("a.svg").read_bytes().replace(b"a.svg", b"a.bmp")
        for name, image_type in (("a.gif", None), ("a", None), ("b.png", 4), ("b.png", "PNG")):
            with pytest.raises(InvalidParametersError, match="suffixes .bmp, .jpg|BMP, JPEG, PNG, INK"):
                pad.save(name, image_type)  # type: ignore[arg-type]
            assert not Path(name).exists()


def test_the_ink_is_saved_as_text(simulator: Simulator) -> None:
    with Pad("K210", size=SIZE) as pad:
        with pytest.raises(NothingThereError):
            pad.save("signature.ink")
        assert not Path("signature.ink").exists()
        simulator.send(diagonal("K210"))
        pad.save("signature.ink")
        pad.save("signature", ImageType.INK)
        assert Path("signature.ink").read_text() == Path("signature").read_text() == pad.ink_text()


@pytest.mark.parametrize("model", MODELS)
def test_svg_and_pdf_are_documents(model: Model, simulator: Simulator) -> None:
    with Pad(model, size=SIZE) as pad:
        pad.pen_color = (1, 2, 200)
        simulator.send(diagonal(model))
        drawing = xml.etree.ElementTree.fromstring(pad.svg())
        assert drawing.tag == "{http://www.w3.org/2000/svg}svg"
        assert drawing.get("viewBox") == "0 0 160 90"
        assert b"#0102c8" in pad.svg()
        assert pad.pdf().startswith(b"%PDF-") and pad.pdf().rstrip().endswith(b"%%EOF")
        clipped = xml.etree.ElementTree.fromstring(pad.svg(clip=(5, 5)))
        assert clipped.get("viewBox") != drawing.get("viewBox")


def test_pen_settings_show_in_the_picture(simulator: Simulator) -> None:
    def inked(**settings: object) -> int:
        pad.clear()
        for name, value in settings.items():
            setattr(pad, name, value)
            assert getattr(pad, name) == value
        simulator.send(diagonal("K210"))
        return len(read_bmp(pad.bmp()).ink())

    with Pad("K210", size=SIZE) as pad:
        assert (pad.pen_width, pad.pen_color, pad.pressure) == (3, (0, 0, 0), True)
        assert inked(pressure=False, pen_width=1) < inked(pen_width=5) < inked(pen_width=10)
        assert simulator.last_argument("SetDevicePenStyle") == 0
        inked(pen_color=(200, 30, 40), pressure=True)
        assert simulator.last_argument("SetDevicePenStyle") == 1
        colors = {pixel for row in read_bmp(pad.bmp()).on_white() for pixel in row}
        assert (200, 30, 40) in colors and (0, 0, 0) not in colors


EXPORTS: list[Callable[[Pad, tuple[int, int] | None], object]] = [
    lambda pad, clip: pad.png(clip=clip),
    lambda pad, clip: pad.jpeg(clip=clip),
    lambda pad, clip: pad.bmp(clip=clip),
    lambda pad, clip: pad.svg(clip=clip),
    lambda pad, clip: pad.pdf(clip=clip),
    lambda pad, clip: pad.save("signature.bmp", clip=clip),
    lambda pad, clip: pad.save("signature.jpg", clip=clip),
    lambda pad, clip: pad.save("signature.png", clip=clip),
    lambda pad, clip: pad.save("signature.pdf", clip=clip),
    lambda pad, clip: pad.save("signature.svg", clip=clip),
]


@pytest.mark.parametrize("model", MODELS)
def test_without_ink_there_is_no_picture(model: Model, simulator: Simulator) -> None:
    with Pad(model, size=SIZE) as pad:
        for export in EXPORTS:
            for clip in (None, (5, 5)):
                with pytest.raises(NothingThereError):
                    export(pad, clip)
        simulator.send(tap(model))
        for export in EXPORTS:
            with pytest.raises(NothingThereError):
                export(pad, (5, 5))
        assert list(Path().glob("signature.*")) == []
        for export in EXPORTS:
            export(pad, None)
        assert len(list(Path().glob("signature.*"))) == 5


def test_an_empty_canvas_has_points_but_no_rasters(simulator: Simulator) -> None:
    with Pad("K210", size=(0, 90)) as pad:
        simulator.send(diagonal("K210"))
        assert len(pad) == len(diagonal("K210"))
        for export in EXPORTS[:3] + EXPORTS[5:8]:
            with pytest.raises(NothingThereError):
                export(pad, None)


def test_bad_margins_are_refused(simulator: Simulator) -> None:
    with Pad("K210", size=SIZE) as pad:
        simulator.send(diagonal("K210"))
        for clip in ((0, 0), (-1, 5), (5, -1), (2**32 + 5, 5), (5,), (5, 5, 5)):
            for export in EXPORTS:
                with pytest.raises(InvalidParametersError):
                    export(pad, clip)  # type: ignore[arg-type]
        with pytest.raises(TypeError):
            pad.png(clip=(1.5, 2))  # type: ignore[arg-type]


def test_a_file_that_cannot_be_written_is_the_systems_error(simulator: Simulator) -> None:
    with Pad("K210", size=SIZE) as pad:
        simulator.send(diagonal("K210"))
        for suffix in ("png", "pdf", "svg"):
            with pytest.raises(FileNotFoundError):
                pad.save(f"missing/signature.{suffix}")
            Path(f"folder.{suffix}").mkdir()
            with pytest.raises(IsADirectoryError):
                pad.save(f"folder.{suffix}")
            with pytest.raises(OSError, match="No space left"):
                pad.save("/dev/full", ImageType[suffix.upper()])


@pytest.mark.parametrize("image_type", ["BMP", "JPEG", "PNG", "PDF", "SVG"])
def test_a_picture_that_was_not_written_whole_is_not_passed_on(image_type: str, simulator: Simulator) -> None:
    with Pad("K210", size=SIZE) as pad:
        simulator.send(diagonal("K210"))
        hard = resource.getrlimit(resource.RLIMIT_FSIZE)[1]
        resource.setrlimit(resource.RLIMIT_FSIZE, (512, hard))
        try:
            with pytest.raises(ScriberaError):
                pad.save("signature", ImageType[image_type])
        finally:
            resource.setrlimit(resource.RLIMIT_FSIZE, (hard, hard))
        assert not Path("signature").exists()
        pad.save("signature", ImageType[image_type])


def test_nothing_of_the_signature_stays_in_the_temporary_directory(
    simulator: Simulator, folder: Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    import tempfile

    temporary = folder / "temporary"
    temporary.mkdir()
    monkeypatch.setattr(tempfile, "tempdir", str(temporary))
    with Pad("K210", size=SIZE) as pad:
        for export in EXPORTS:
            with pytest.raises(NothingThereError):
                export(pad, None)
        simulator.send(diagonal("K210"))
        for export in EXPORTS:
            export(pad, None)
        pad.decode_image(pad.png(), "copy.png")
    assert list(temporary.iterdir()) == []


def test_pictures_are_decoded_into_files(simulator: Simulator) -> None:
    with Pad("K210", size=SIZE) as pad:
        simulator.send(diagonal("K210"))
        png, bitmap = pad.png(), pad.bmp()
        pad.decode_image(png, "copy.png")
        assert read_png(Path("copy.png").read_bytes()).rows == read_png(png).rows
        pad.decode_image(base64.b64encode(png).decode(), "text.png")
        assert Path("text.png").read_bytes() == Path("copy.png").read_bytes()
        pad.decode_image(bitmap, "copy", ImageType.BMP)
        assert read_bmp(Path("copy").read_bytes()).rows == read_bmp(bitmap).rows
        pad.decode_image(pad.jpeg(), "copy.jpg")
        assert jpeg_size(Path("copy.jpg").read_bytes()) == SIZE

        no_pictures: list[bytes | str] = [b"no picture", png[:40], "@@@@"]
        for broken in no_pictures:
            with pytest.raises(NothingThereError) as caught:
                pad.decode_image(broken, "broken.png")
            assert caught.value.result == -8
        nothings: list[bytes | str] = [b"", "", "AA\0A"]
        for nothing in nothings:
            with pytest.raises(InvalidParametersError):
                pad.decode_image(nothing, "broken.png")
        for name in ("broken.svg", "broken.pdf", "broken.gif"):
            with pytest.raises(InvalidParametersError):
                pad.decode_image(png, name)
        with pytest.raises(FileNotFoundError):
            pad.decode_image(png, "missing/broken.png")
        assert list(Path().rglob("broken.*")) == []
