"""Connections and workers come and go; points stay."""

from __future__ import annotations

import os
import signal
import time
from pathlib import Path

import pytest

from conftest import Start
from service import PAGE, Client, Refused, Service, recording, signing

ENDLESS = signing(name="flowing", SCRIBERA_SIM_LOOP="1", SCRIBERA_SIM_RATE="1", SCRIBERA_SIM_START_MS="0")


def refused_resume(client: Client, token: str) -> str | None:
    with pytest.raises(Refused) as refused:
        client.resume(token)
    return refused.value.type


def test_a_reloaded_page_has_all_points(start: Start) -> None:
    service = start(**ENDLESS)
    with service.client() as before:
        token = before.open()["token"]
        before.until(lambda: len(before.points) >= 50)
        seen = before.points
        before.drop()
        with service.client() as after:
            assert after.resume(token)["token"] == token
            after.until(lambda: len(after.points) >= 100)
            assert after.points[: len(seen)] == seen
            inside = after.ask("points", **{"from": 0, "count": 100})
            assert inside["points"] == after.points[:100]


def test_goes_on_where_the_client_is(start: Start) -> None:
    service = start(**ENDLESS)
    with service.client() as before:
        token = before.open()["token"]
        before.until(lambda: len(before.points) >= 50)
        before.drop()
        with service.client() as after:
            after.points = list(before.points)
            session = after.resume(token)
            assert session["points"] >= len(before.points)
            after.until(lambda: len(after.points) >= session["points"] + 20)
            assert after.ask("points", **{"from": 0, "count": 100})["points"] == after.points[:100]


def test_begins_anew_after_a_clear_that_was_missed(start: Start) -> None:
    service = start(**ENDLESS)
    with service.client() as before:
        token = before.open()["token"]
        before.until(lambda: len(before.points) >= 5)
        before.ask("clear")
        before.drop()
        with service.client() as after:
            session = after.resume(token, clears=0, points=3)
            assert session["clears"] == 1
            after.until(lambda: len(after.points) >= 10)


def test_more_points_than_there_are(service: Service) -> None:
    with service.client() as before:
        token = before.open()["token"]
        before.drop()
        with service.client() as after:
            assert after.resume(token, clears=7, points=2**53 - 1)["points"] == 0


def test_a_key_is_not_lost_with_its_connection(start: Start) -> None:
    service = start(**signing())
    with service.client() as before:
        token = before.open()["token"]
        assert before.ask("wait", timeout=60_000) == {"key": "confirm"}
        before.drop()
    with service.client() as after:
        session = after.resume(token)
        assert after.until_news("key") == {"key": "confirm", "keys": 1}
        assert len(after.points) == session["points"], "the key comes behind the points before it"
        assert after.ask("wait", timeout=0) == {"key": "confirm"}
        after.drop()
    with service.client() as knowing:
        knowing.resume(token, keys=1)
        assert knowing.ask("wait", timeout=0) == {"key": "timeout"}
        assert not knowing.news, "what is known is not told again"


def test_a_key_that_nobody_was_told_is_told_later(start: Start) -> None:
    service = start(**signing(SCRIBERA_SIM_START_MS="500"))
    with service.client() as before:
        token = before.open()["token"]
        before.drop()
    with service.client() as after:
        after.resume(token)
        assert after.until_news("key") == {"key": "confirm", "keys": 1}
        after.ask("clear")
        after.drop()
    with service.client() as other:
        other.resume(token, clears=0)
        assert other.ask("wait", timeout=0) == {"key": "timeout"}
        assert not other.news, "a clear forgets it"


def test_a_key_is_known_of_its_signature_alone(start: Start, tmp_path: Path) -> None:
    stroke = [(0, 500, 500, 900, 0), (5, 600, 600, 900, 1), (10, 600, 600, 0, 2)]
    service = start(**signing(key="cancel", SCRIBERA_SIM_RECORDING=recording(tmp_path, stroke), SCRIBERA_SIM_LOOP="1"))
    with service.client() as before:
        token = before.open()["token"]
        before.ask("wait", timeout=60_000)
        before.ask("clear")
        assert before.ask("wait", timeout=60_000) == {"key": "cancel"}
        before.drop()
    with service.client() as after:
        after.clears = 1
        after.resume(token, clears=0, keys=1000)
        assert after.until_news("key")["key"] == "cancel"


def test_takes_over(start: Start) -> None:
    service = start(**ENDLESS)
    with service.client() as one, service.client() as other:
        token = one.open()["token"]
        waiting = one.send("wait", timeout=60_000)
        one.until(lambda: len(one.points) >= 1)
        other.resume(token)
        assert one.until_news("closed")["reason"] == "taken-over"
        with pytest.raises(Refused) as refused:
            one.answer(waiting)
        assert refused.value.type == "no-session"
        other.until(lambda: len(other.points) >= 10)
        assert one.open("K420")["token"] != token


@pytest.mark.parametrize("stranger", ["A" * 43, "wrong page"])
def test_nobody_else_resumes(start: Start, stranger: str) -> None:
    service = start("--allow-origin", "https://other.example")
    with service.client() as page:
        token = page.open()["token"]
        origin = "https://other.example" if stranger == "wrong page" else PAGE
        with service.client(origin=origin) as other:
            assert refused_resume(other, token if stranger == "wrong page" else stranger) == "unknown-token"
        assert page.ask("wait", timeout=0) == {"key": "timeout"}


def test_tokens_end_with_the_session(service: Service) -> None:
    with service.client() as page:
        token = page.open()["token"]
        page.ask("close")
        assert refused_resume(page, token) == "unknown-token"


def test_a_pad_is_free_again_when_nobody_comes_back(start: Start) -> None:
    service = start("--resume-time", "1")
    with service.client() as page:
        token = page.open()["token"]
        page.drop()
    while service.workers():
        time.sleep(0.05)
    with service.client() as page:
        assert refused_resume(page, token) == "unknown-token"
        page.open()


def test_a_pad_is_not_open_for_ever(start: Start) -> None:
    with start("--open-time", "1").client() as page:
        token = page.open()["token"]
        assert page.until_news("closed")["reason"] == "open-too-long"
        assert refused_resume(page, token) == "unknown-token"
        page.open()


def test_a_killed_worker_costs_its_session_alone(start: Start) -> None:
    service = start(**ENDLESS)
    with service.client() as page, service.client() as other:
        page.open()
        (worker,) = service.workers()
        other.open("K420")
        waiting = page.send("wait", timeout=60_000)
        page.until(lambda: len(page.points) >= 50)
        os.kill(worker, signal.SIGKILL)
        assert page.until_news("closed")["reason"] == "worker-failed"
        assert "failed: it has hung up" in service.log(), "its end is seen, no time is waited for"
        with pytest.raises(Refused) as refused:
            page.answer(waiting)
        assert refused.value.type == "worker-failed"
        had = len(other.points)
        other.until(lambda: len(other.points) >= had + 20)
        page.points = []
        page.open()
        page.until(lambda: len(page.points) >= 10)


def test_a_worker_that_hangs_is_ended(start: Start) -> None:
    service = start(**ENDLESS)
    with service.client() as page:
        page.open()
        (worker,) = service.workers()
        number = page.send("image", format="png")
        os.kill(worker, signal.SIGSTOP)
        assert page.until_news("closed")["reason"] == "worker-failed"
        assert "failed: it hangs" in service.log(), "it was not waited for in vain"
        page.until(lambda: number in page.answers)
        page.points = []
        page.open()
        assert worker not in service.workers()


def test_a_driver_that_crashes(start: Start) -> None:
    service = start("--driver", os.environ["SCRIBERA_TROUBLED_DRIVER"], TROUBLED_DRIVER="crash")
    with service.client() as page:
        for _ in range(2):
            with pytest.raises(Refused) as refused:
                page.open()
            assert refused.value.type == "worker-failed"


def test_a_worker_that_cannot_start(start: Start) -> None:
    service = start(XDG_RUNTIME_DIR="/nowhere")
    with service.client() as page:
        with pytest.raises(Refused) as refused:
            page.open()
        assert refused.value.type == "worker-failed"
    assert "no folder for temporary files can be made" in service.log()


def test_the_service_says_that_it_stops(start: Start) -> None:
    service = start(**ENDLESS)
    with service.client() as page:
        page.open()
        service.process.terminate()
        assert page.until_news("closed")["reason"] == "service-stops"
        assert page.until_closed() == 1001
    assert service.end() == 0


def test_workers_end_with_a_killed_service(start: Start) -> None:
    service = start()
    with service.client() as page:
        page.open()
        (worker,) = service.workers()
        service.process.kill()
        service.process.wait()
        while os.path.exists(f"/proc/{worker}/exe"):
            time.sleep(0.05)
    service.process.returncode = 0
    for folder in service.runtime_folder.iterdir():
        assert not list(folder.iterdir())
        folder.rmdir()
