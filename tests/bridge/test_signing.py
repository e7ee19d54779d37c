"""What a page does with a pad."""

from __future__ import annotations

import base64
import struct
import subprocess
import time
from pathlib import Path

import pytest

from conftest import Start
from service import MODELS, RECORDINGS, Client, Refused, Service, recording, signing

SIGNATURES = {"png": b"\x89PNG", "jpeg": b"\xff\xd8\xff", "bmp": b"BM", "pdf": b"%PDF"}
TYPES = {"png": "image/png", "jpeg": "image/jpeg", "bmp": "image/bmp", "pdf": "application/pdf"}


def samples_of(name: str) -> int:
    lines = (RECORDINGS / f"{name}.rec").read_text().splitlines()
    return sum(1 for line in lines if line[:1].isdigit())


def png_size(png: bytes) -> tuple[int, int]:
    width, height = struct.unpack(">II", png[16:24])
    return width, height


def is_opaque(png: bytes) -> bool:
    asked = subprocess.run(["identify", "-format", "%[opaque]", "png:-"], input=png, capture_output=True, check=True)
    return asked.stdout.lower() == b"true"


def refusal_of(client: Client, method: str, **parameters: object) -> str | None:
    with pytest.raises(Refused) as refused:
        client.ask(method, **parameters)
    assert refused.value.code == -32000
    return refused.value.type


def test_takes_a_signature(start: Start) -> None:
    with start(**signing()).client() as page:
        session = page.open()
        assert session["model"] == "K210"
        assert session["canvas"] == {"width": 800, "height": 485}
        assert session["area"] == {"left": 160, "top": 220, "width": 2360, "height": 1430}
        assert session["pressureLevels"] == 2048
        assert not session["hasFingerprint"]
        assert page.ask("wait", timeout=60_000) == {"key": "confirm"}
        assert len(page.points) == samples_of("initials")
        assert page.news == [("key", {"key": "confirm", "keys": 1})]
        media_type, png = page.picture("image", format="png", dpi=300, clip=[10, 10])
        assert media_type == "image/png" and png_size(png)[0] < 800
        assert page.ask("svg")["svg"].startswith("<?xml")
        assert page.ask("close") == {}


def test_points_are_those_of_the_ink(start: Start) -> None:
    before = time.time()
    with start(**signing()).client() as page:
        page.open()
        page.ask("wait", timeout=60_000)
        ink = base64.b64decode(page.ask("ink")["ink"], validate=True)
        stored = [struct.unpack("<HhhBxqq", ink[at : at + 24]) for at in range(0, len(ink) - 1, 24)]
        assert [(*point[:3], int(point[4] == 1)) for point in page.points] == [record[:4] for record in stored]
        times = [point[3] for point in page.points]
        assert times == sorted(times)
        assert before * 1000 - 1000 <= times[0] and times[-1] <= time.time() * 1000 + 1000


def test_a_key_under_the_pen_ends_the_stroke(start: Start, tmp_path: Path) -> None:
    strokes = [(0, 500, 500, 900, 0), (5, 600, 600, 900, 1), (10, 0, 0, 0, 4), (15, 700, 700, 900, 0),
               (20, 800, 800, 900, 1), (25, 800, 800, 0, 2), (30, 900, 900, 900, 0), (35, 950, 950, 900, 1),
               (40, 950, 950, 0, 2)]
    with start(**signing(key="cancel", SCRIBERA_SIM_RECORDING=recording(tmp_path, strokes))).client() as page:
        page.open()
        assert page.ask("wait", timeout=60_000) == {"key": "cancel"}
        assert [(x, mark) for x, _, _, _, mark in page.points] == [
            (500, 2), (600, 0), (700, 2), (800, 0), (800, 1), (900, 2), (950, 0), (950, 1),
        ]
        ink = base64.b64decode(page.ask("ink")["ink"], validate=True)
        assert [ink[at + 6] for at in range(0, len(ink) - 1, 24)] == [0, 0, 0, 0, 1, 0, 0, 1]


def test_gives_points_again(start: Start) -> None:
    with start(**signing()).client() as page:
        page.open()
        page.ask("wait", timeout=60_000)
        some = page.ask("points", **{"from": 5, "count": 7})
        assert some == {"from": 5, "points": page.points[5:12], "total": len(page.points)}
        beyond = page.ask("points", **{"from": len(page.points) + 1, "count": 7})
        assert beyond == {"from": len(page.points), "points": [], "total": len(page.points)}


@pytest.mark.parametrize("image_format", SIGNATURES)
def test_makes_pictures(start: Start, image_format: str) -> None:
    with start(**signing()).client() as page:
        page.open()
        page.ask("wait", timeout=60_000)
        media_type, picture = page.picture("image", format=image_format)
        assert media_type == TYPES[image_format]
        assert picture.startswith(SIGNATURES[image_format])


def test_pictures_have_size_resolution_and_transparency(start: Start) -> None:
    with start(**signing()).client() as page:
        page.open(width=640, height=388)
        page.ask("wait", timeout=60_000)
        _, whole = page.picture("image", format="png", dpi=150)
        _, fine = page.picture("image", format="png")
        _, clear = page.picture("image", format="png", transparent=True)
        assert png_size(whole) == (640, 388)
        resolution = {png: png[png.index(b"pHYs") + 4 :][:8] for png in (whole, fine)}
        assert struct.unpack(">II", resolution[whole]) == (5905, 5905)
        assert struct.unpack(">II", resolution[fine]) == (11811, 11811)
        assert [is_opaque(png) for png in (whole, fine, clear)] == [True, True, False]


def test_all_models_at_once(start: Start) -> None:
    service = start(**signing())
    pages = {model: service.client() for model in MODELS}
    tokens = {model: page.open(model)["token"] for model, page in pages.items()}
    assert len(set(tokens.values())) == len(MODELS)
    assert len(service.workers()) == len(MODELS)
    for model, page in pages.items():
        assert page.ask("wait", timeout=60_000) == {"key": "confirm"}
        assert len(page.points) == samples_of("initials")
        assert png_size(page.picture("image", format="png")[1]) == (800, 485)
        page.leave()


def test_clear_begins_anew(start: Start, tmp_path: Path) -> None:
    stroke = [(0, 500, 500, 900, 0), (5, 600, 600, 900, 1), (10, 600, 600, 0, 2)]
    environment = signing(key="cancel", SCRIBERA_SIM_RECORDING=recording(tmp_path, stroke), SCRIBERA_SIM_LOOP="1")
    with start(**environment).client() as page:
        page.open()
        for clears in range(1, 20):
            page.until(lambda: len(page.points) >= 3)
            number = page.send("clear")
            page.until(lambda: page.clears == clears)
            assert number not in page.answers, "the notification comes before the answer"
            assert page.answer(number) == {}
            total = page.ask("points", **{"from": 0, "count": 1})["total"]
            page.until(lambda: len(page.points) >= total)
        page.until(lambda: len(page.points) >= 3)
        assert [point[4] for point in page.points[:3]].count(1) == 1


def test_a_key_is_told_once(start: Start) -> None:
    with start(SCRIBERA_SIM_KEY="cancel", SCRIBERA_SIM_START_MS="0").client() as page:
        page.open()
        assert page.until_news("key") == {"key": "cancel", "keys": 1}
        assert page.ask("wait", timeout=0) == {"key": "cancel"}
        assert page.ask("wait", timeout=0) == {"key": "timeout"}


def test_a_clear_forgets_the_key(start: Start) -> None:
    with start(SCRIBERA_SIM_KEY="cancel", SCRIBERA_SIM_START_MS="0").client() as page:
        page.open()
        page.until_news("key")
        page.ask("clear")
        assert page.ask("wait", timeout=0) == {"key": "timeout"}


def test_one_wait_at_a_time(service: Service) -> None:
    with service.client() as page:
        page.open()
        first = page.send("wait", timeout=60_000)
        assert refusal_of(page, "wait", timeout=0) == "waiting"
        page.ask("close")
        with pytest.raises(Refused) as refused:
            page.answer(first)
        assert refused.value.type == "no-session"


def test_the_pen_changes_the_drawing(start: Start) -> None:
    with start(**signing(), SCRIBERA_SIM_START_MS="500").client() as page:
        page.open()
        assert page.ask("pen", width=10, color="#ff0000", pressure=False) == {}
        page.ask("wait", timeout=60_000)
        svg = page.ask("svg")["svg"]
        assert "#ff0000" in svg and "#000000" not in svg


def test_nothing_to_give(service: Service) -> None:
    with service.client() as page:
        page.open()
        for method in ("ink", "svg"):
            assert refusal_of(page, method) == "no-ink"
        assert refusal_of(page, "image", format="png") == "no-ink"
        assert refusal_of(page, "fingerprint", format="png") == "no-fingerprint"


def test_tells_of_the_device(service: Service) -> None:
    with service.client() as page:
        page.open()
        assert page.ask("device") == {"pad": "SIMPAD0001", "pen": "SIMPEN0001", "version": "SCK210"}
    with service.client() as page:
        page.open("T580")
        assert page.ask("device")["pen"] is None


def test_gives_the_fingerprint(start: Start) -> None:
    service = start(SCRIBERA_SIM_FINGERPRINT="whorl", SCRIBERA_SIM_KEY="confirm", SCRIBERA_SIM_START_MS="0")
    with service.client() as page:
        assert page.open("K421B")["hasFingerprint"]
        page.ask("wait", timeout=60_000)
        for image_format in ("png", "jpeg", "bmp"):
            media_type, picture = page.picture("fingerprint", format=image_format)
            assert media_type == TYPES[image_format] and picture.startswith(SIGNATURES[image_format])
        assert png_size(page.picture("fingerprint", format="png")[1]) == (208, 288)
        page.ask("clear")
        assert refusal_of(page, "fingerprint", format="png") == "no-fingerprint"


def test_a_pad_has_one_owner(service: Service) -> None:
    with service.client() as one, service.client() as other:
        one.open()
        assert refusal_of(other, "open", model="K210", width=1, height=1) == "pad-busy"
        assert refusal_of(one, "open", model="K420", width=1, height=1) == "session-open"
        one.ask("close")
        assert other.open()["points"] == 0
        assert refusal_of(one, "clear") == "no-session"


def test_a_pad_that_is_not_there(start: Start) -> None:
    service = start(SCRIBERA_SIM_MODEL="UNKNOWN")
    with service.client() as page:
        assert refusal_of(page, "open", model="K210", width=1, height=1) == "pad-not-opened"
        assert refusal_of(page, "open", model="K210", width=1, height=1) == "pad-not-opened"
    assert "not opened" in service.log()


def test_a_driver_that_is_not_there(start: Start) -> None:
    service = start("--driver", "nowhere.so")
    with service.client() as page:
        with pytest.raises(Refused) as refused:
            page.open()
        assert refused.value.type == "pad-not-opened"
        assert "nowhere" not in str(refused.value), "what this machine has is no page's business"
    assert f"{service.folder}/nowhere.so is not there" in service.log()


def test_no_secret_in_the_log(start: Start) -> None:
    service = start(**signing())
    with service.client() as page:
        token = page.open()["token"]
        page.ask("wait", timeout=60_000)
        page.ask("close")
    service.end()
    assert token not in service.log()
    assert service.log().splitlines() == [
        "scribera-bridge: pad K210 opened for http://localhost:8080",
        "scribera-bridge: pad K210 closed",
    ]
