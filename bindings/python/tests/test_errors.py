"""Every way in which a call fails has its exception."""

from __future__ import annotations

import inspect
from collections.abc import Callable
from typing import get_args

import pytest

import scribera
from scribera import (
    FAMILIES,
    DriverError,
    InvalidParametersError,
    Model,
    Pad,
    ScriberaError,
    UnsupportedError,
    model_named,
)
from simulator import MODELS, WITH_SCREEN, WITHOUT_SCREEN, Simulator, diagonal


def test_all_exceptions_have_one_base() -> None:
    kinds = [kind for _, kind in inspect.getmembers(scribera, inspect.isclass) if issubclass(kind, Exception)]
    assert len(kinds) == 12 and all(issubclass(kind, ScriberaError) for kind in kinds)
    assert issubclass(scribera.InvalidParametersError, ValueError)
    assert issubclass(scribera.PadTimeoutError, TimeoutError)
    assert issubclass(scribera.LibraryError, OSError)
    assert set(scribera.__all__) <= set(dir(scribera))


DRIVER_CALLS: list[tuple[str, Callable[[Pad], object]]] = [
    ("ClearDeviceContent", lambda pad: pad.clear()),
    ("GetDevicePadID", lambda pad: pad.pad_id),
    ("GetDevicePartsVersion", lambda pad: pad.version),
    ("SetDevicePenStyle", lambda pad: setattr(pad, "pressure", False)),
]
SCREEN_CALLS: list[tuple[str, Callable[[Pad], object]]] = [
    ("GetDevicePenID", lambda pad: pad.pen_id),
    ("OpenDeviceLCD", lambda pad: pad.set_screen(True)),
    ("ShowVersionInfoOnDevice", lambda pad: pad.show_version()),
]


@pytest.mark.parametrize("code", [-1, -2, -8, 5])
@pytest.mark.parametrize("model", MODELS)
def test_the_drivers_codes_are_passed_on(model: Model, code: int, simulator: Simulator) -> None:
    with Pad(model) as pad:
        for entry_point, operation in DRIVER_CALLS + (SCREEN_CALLS if model in WITH_SCREEN else []):
            before = simulator.call_count(entry_point)
            operation(pad)
            assert simulator.call_count(entry_point) == before + 1
            simulator.set_result(entry_point, code)
            with pytest.raises(DriverError, match=f"the driver reports {code}") as caught:
                operation(pad)
            assert caught.value.result == code
            simulator.set_result(entry_point, 0)
            operation(pad)


def test_what_the_driver_fails_at_is_done_here(simulator: Simulator) -> None:
    with Pad("K210") as pad:
        simulator.send(diagonal("K210"))
        simulator.set_result("ClearDeviceContent", 9)
        with pytest.raises(DriverError):
            pad.clear()
        assert len(pad) == 0
        simulator.set_result("SetDevicePenStyle", 9)
        with pytest.raises(DriverError):
            pad.pressure = False
        assert pad.pressure is False
        simulator.set_result("SetDevicePenStyle", 0)


@pytest.mark.parametrize("model", WITHOUT_SCREEN)
def test_pads_without_a_screen_say_so(model: Model) -> None:
    with Pad(model) as pad:
        for entry_point, operation in SCREEN_CALLS:
            with pytest.raises(UnsupportedError, match=f"SC{model}_.* not exist: only K210, K420, K421B "):
                operation(pad)


@pytest.mark.parametrize("model", WITH_SCREEN)
def test_the_screen_is_switched(model: Model, simulator: Simulator) -> None:
    with Pad(model) as pad:
        for on in (False, True):
            pad.set_screen(on)
            assert simulator.last_argument("OpenDeviceLCD") == on
            pad.show_version(on)
            assert simulator.last_argument("ShowVersionInfoOnDevice") == on


@pytest.mark.parametrize(
    ("text", "terminate", "expected"),
    [
        (b"P-1", True, "P-1"),
        (b"P-2", False, "P-2"),
        (b"x" * 255, False, "x" * 255),
        (b"y" * 300, True, "y" * 255),
        (b"", True, ""),
        (b"caf\xc3\xa9 \xff", True, "café \\xff"),
    ],
)
def test_ids_are_texts_of_any_length(
    text: bytes, terminate: bool, expected: str, simulator: Simulator
) -> None:
    with Pad("K420") as pad:
        simulator.set_text("GetDevicePadID", text, terminate)
        simulator.set_text("GetDevicePenID", text, terminate)
        simulator.set_text("GetDevicePartsVersion", text, terminate)
        assert pad.pad_id == pad.pen_id == pad.version == expected


@pytest.mark.parametrize("width", [0, 11, -1, 2**31, 2**32 + 3, -(2**32) + 3])
def test_pen_widths_out_of_range_change_nothing(width: int) -> None:
    with Pad("K210") as pad:
        with pytest.raises(InvalidParametersError):
            pad.pen_width = width
        assert pad.pen_width == 3
        pad.pen_width = 10
        with pytest.raises(InvalidParametersError):
            pad.pen_width = width
        assert pad.pen_width == 10


def test_the_librarys_refusal_is_named() -> None:
    with Pad("K421B") as pad, pytest.raises(InvalidParametersError) as caught:
        pad.place_fingerprint((100, 100), (60, 60, 50, 30))
    assert str(caught.value) == (
        "SCK421B_SetDisplayedFPImageAt: -2 rectangle (60, 60, 50, 30) is not within canvas (100, 100)"
    )
    assert caught.value.result == -2


REFUSALS: list[tuple[Callable[[Pad], object], type[Exception], str]] = [
    (
        lambda pad: setattr(pad, "pen_width", 11),
        InvalidParametersError,
        "pen_width has to be 1 to 10, not 11",
    ),
    (
        lambda pad: setattr(pad, "pen_color", (0, 0, 256)),
        InvalidParametersError,
        "pen_color has to be (red, green, blue) in whole numbers of 0 to 255, not (0, 0, 256)",
    ),
    (
        lambda pad: setattr(pad, "pen_color", "blue"),
        TypeError,
        "pen_color has to be (red, green, blue) in whole numbers of 0 to 255, not 'blue': the library takes "
        "numbers only, no names of colours",
    ),
    (lambda pad: pad.save("a.png", dpi=72), InvalidParametersError, "dpi has to be 150 or 300, not 72"),
    (
        lambda pad: pad.png(clip=(-1, 5)),
        InvalidParametersError,
        "clip has to be (x, y) in whole numbers of 0 to 2147483647, not (-1, 5)",
    ),
    (
        lambda pad: pad.png(clip=(0, 0)),
        InvalidParametersError,
        "one of the margins of clip has to be positive, not (0, 0); None is the whole canvas",
    ),
    (
        lambda pad: pad.png(clip=5),  # type: ignore[arg-type]
        TypeError,
        "clip has to be (x, y) in whole numbers of 0 to 2147483647, not 5",
    ),
    (
        lambda pad: pad.save("a.gif"),
        InvalidParametersError,
        "a.gif has none of the suffixes .bmp, .jpg, .jpeg, .png, .pdf, .svg, .ink; give image_type",
    ),
    (
        lambda pad: pad.fingerprint(scribera.ImageType.PDF),
        InvalidParametersError,
        "image_type has to be BMP, JPEG or PNG, not PDF",
    ),
    (lambda pad: pad.decode(""), InvalidParametersError, "there is nothing to decode: it is empty"),
    (
        lambda pad: pad.decode_image(b"none", "a.png"),
        scribera.NothingThereError,
        "SCK421B_Base64Decode: -8, no PNG is in it, or one beyond 256 MiB",
    ),
]


@pytest.mark.parametrize(("operation", "kind", "message"), REFUSALS)
def test_a_refusal_names_the_argument_and_its_range(
    operation: Callable[[Pad], object], kind: type[Exception], message: str
) -> None:
    with Pad("K421B") as pad, pytest.raises(kind) as caught:
        operation(pad)
    assert type(caught.value) is kind and str(caught.value) == message


@pytest.mark.parametrize("color", [(256, 0, 0), (0, -1, 0), (0, 0, 2**32), (0, 0), (0, 0, 0, 0)])
def test_colors_out_of_range_change_nothing(color: tuple[int, int, int]) -> None:
    with Pad("K210") as pad:
        pad.pen_color = (1, 2, 3)
        with pytest.raises(InvalidParametersError):
            pad.pen_color = color
        assert pad.pen_color == (1, 2, 3)


def test_arguments_of_other_types_are_type_errors() -> None:
    with Pad("K210") as pad:
        with pytest.raises(TypeError):
            pad.pen_width = 2.5  # type: ignore[assignment]
        with pytest.raises(TypeError):
            pad.pen_color = ("r", "g", "b")  # type: ignore[assignment]


@pytest.mark.parametrize("size", [(2**31, 5), (5,), (2**32 + 80, 40)])
def test_a_size_that_is_none_opens_nothing(size: tuple[int, int], simulator: Simulator) -> None:
    with pytest.raises(InvalidParametersError):
        Pad("K210", size=size)
    assert simulator.call_count("Initial") == 0


def test_an_unknown_model_is_refused() -> None:
    for model in ("", "SC", "K211", "k210", "SCSCK210", "SCSCK421B"):
        with pytest.raises(InvalidParametersError, match=f"no model '{model}'; there are K210, K420, K421B"):
            Pad(model)  # type: ignore[arg-type]
        with pytest.raises(InvalidParametersError, match=f"no model '{model}'; there are K210, K420, K421B"):
            model_named(model)


@pytest.mark.parametrize("model", get_args(Model))
def test_every_name_of_a_model_opens_it(model: Model) -> None:
    assert model_named(model) == model.removeprefix("SC") in FAMILIES
    with Pad(model) as pad:
        assert pad.model == model_named(model)


@pytest.mark.parametrize("model", MODELS)
def test_the_pads_own_name_of_the_model_is_understood(model: Model) -> None:
    with Pad(model_named("SC" + model)) as pad:
        assert pad.model == model and pad.info.connected
