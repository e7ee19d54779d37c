"""What is no request, and what a request may say."""

from __future__ import annotations

import json
from collections.abc import Iterator

import jsonschema
import pytest

from service import MODELS, Client, Service, validate

OPEN = {"model": "K210", "width": 800, "height": 485}
TOKEN = "A" * 43
FINE: list[tuple[str, object]] = [
    *[("open", {**OPEN, "model": model}) for model in MODELS], ("open", {**OPEN, "width": 1, "height": 4096}),
    ("resume", {"token": TOKEN, "clears": 0, "points": 9007199254740991, "keys": 0}),
    ("resume", {"token": "-_" + TOKEN[2:], "clears": 1, "points": 0, "keys": 0}),
    *[(method, {}) for method in ("close", "clear", "ink", "device", "svg")],
    ("pen", {"width": 1}), ("pen", {"width": 10, "color": "#00ffAB", "pressure": True}), ("pen", {"pressure": False}),
    ("points", {"from": 0, "count": 1}), ("points", {"from": 9007199254740991, "count": 10000}),
    ("wait", {"timeout": 0}), ("wait", {"timeout": 3600000}),
    *[("image", {"format": name}) for name in ("png", "jpeg", "bmp", "pdf")],
    ("image", {"format": "png", "dpi": 150, "clip": [0, 4096], "transparent": True}),
    ("image", {"format": "png", "dpi": 300, "clip": [1, 0], "transparent": False}),
    ("svg", {"clip": [10, 10]}), *[("fingerprint", {"format": name}) for name in ("png", "jpeg", "bmp")],
]
NUMBERS: list[object] = [-1, 1.5, "1", None, True, [], {}, 9007199254740992, 2**63, 2**64, 1e300, -(2**63)]
WRONG: list[tuple[str, object]] = [
    *[("open", {**OPEN, side: value}) for side in ("width", "height") for value in (*NUMBERS, 0, 4097)],
    *[("open", {**OPEN, "model": value}) for value in ("k210", "SCK210", "K210\0", "", "../K210", "%s", 210, None)],
    *[("open", {name: OPEN[name] for name in OPEN if name != missing}) for missing in OPEN],
    ("open", {**OPEN, "driver": "/tmp/evil.so"}), ("open", []), ("open", "x"), ("open", None),
    *[("resume", {"token": value, "clears": 0, "points": 0, "keys": 0}) for value in (TOKEN[1:], TOKEN + "A", "=" * 43, 1, None)],
    *[("resume", {"token": TOKEN, "clears": value, "points": 0, "keys": 0}) for value in NUMBERS],
    *[("resume", {"token": TOKEN, "clears": 0, "points": value, "keys": 0}) for value in NUMBERS],
    *[("resume", {"token": TOKEN, "clears": 0, "points": 0, "keys": value}) for value in NUMBERS],
    ("pen", {}), *[("pen", {"width": value}) for value in (*NUMBERS, 0, 11)],
    *[("pen", {"color": value}) for value in ("red", "#fff", "#0000000", "#00000g", "000000#", "#-00001", 0, None)],
    *[("pen", {"pressure": value}) for value in (0, 1, "true", None)], ("pen", {"width": 3, "style": 1}),
    *[("points", {"from": value, "count": 1}) for value in NUMBERS],
    *[("points", {"from": 0, "count": value}) for value in (*NUMBERS, 0, 10001)],
    *[("wait", {"timeout": value}) for value in (*NUMBERS, 3600001)], ("wait", {}),
    *[("image", {"format": value}) for value in ("gif", "PNG", "png\0", "../x.png", "svg", "", 1, None)], ("image", {}),
    *[("image", {"format": "png", "dpi": value}) for value in (*NUMBERS, 151, 299, 301, 0)],
    *[("image", {"format": "png", "clip": value})
      for value in ([0, 0], [1], [1, 1, 1], [-1, 5], [4097, 1], [1.5, 1], ["1", 1], 1, None, {})],
    *[("image", {"format": "png", "transparent": value}) for value in (0, "yes", None)],
    ("image", {"format": "png", "path": "/tmp/x"}),
    ("svg", {"clip": [0, 0]}), ("svg", {"format": "png"}), ("fingerprint", {"format": "pdf"}), ("fingerprint", {}),
    *[(method, {"x": 1}) for method in ("close", "clear", "ink", "device")],
]


@pytest.fixture
def page(service: Service) -> Iterator[Client]:
    with service.client() as client:
        yield client


def code_of(client: Client, message: str) -> int:
    client.send_raw(message)
    error = client.receive()["error"]
    code: int = error["code"]
    return code


def is_request(message: object) -> bool:
    try:
        validate(message)
    except jsonschema.ValidationError:
        return False
    return True


@pytest.mark.parametrize("given", [FINE[at::4] for at in range(4)])
def test_what_the_schema_allows_is_understood(page: Client, given: list[tuple[str, object]]) -> None:
    for method, parameters in given:
        message = {"jsonrpc": "2.0", "id": 1, "method": method, "params": parameters}
        assert is_request(message)
        if method == "open":
            continue  # test_signing does
        assert code_of(page, json.dumps(message)) == -32000, message


@pytest.mark.parametrize("part", range(4))
def test_what_the_schema_refuses_is_refused(page: Client, part: int) -> None:
    for method, parameters in WRONG[part::4]:
        message = {"jsonrpc": "2.0", "id": 7, "method": method, "params": parameters}
        assert not is_request(message), message
        page.send_raw(json.dumps(message))
        answer = page.receive()
        assert answer["error"]["code"] == -32602 and answer["id"] == 7, message


@pytest.mark.parametrize(
    ("text", "code"),
    [("", -32700), ("{", -32700), ("\0", -32700), ('{"jsonrpc":"2.0"', -32700), ("[" * 30000, -32700), ("nul", -32700),
     ('{"a":' * 10000 + "1" + "}" * 10000, -32700), ("{}{}", -32700), ("NaN", -32700), ('{"id":01}', -32700),
     ("[]", -32600), ("1", -32600), ("null", -32600), ('"open"', -32600), ("{}", -32600),
     ('[{"jsonrpc":"2.0","id":1,"method":"close"}]', -32600),
     ('{"jsonrpc":"2.0","method":"close"}', -32600), ('{"jsonrpc":"2.0","id":null,"method":"close"}', -32600),
     ('{"jsonrpc":"2.0","id":"1","method":"close"}', -32600), ('{"jsonrpc":"2.0","id":-1,"method":"close"}', -32600),
     ('{"jsonrpc":"2.0","id":1.0,"method":"close"}', -32600),
     ('{"jsonrpc":"2.0","id":9007199254740992,"method":"close"}', -32600),
     ('{"jsonrpc":"1.0","id":1,"method":"close"}', -32600), ('{"jsonrpc":2.0,"id":1,"method":"close"}', -32600),
     ('{"id":1,"method":"close"}', -32600), ('{"jsonrpc":"2.0","id":1}', -32600),
     ('{"jsonrpc":"2.0","id":1,"method":1}', -32600), ('{"jsonrpc":"2.0","id":1,"method":"close","x":1}', -32600),
     ('{"jsonrpc":"2.0","id":1,"method":"Close"}', -32601), ('{"jsonrpc":"2.0","id":1,"method":""}', -32601),
     ('{"jsonrpc":"2.0","id":1,"method":"close\\u0000"}', -32601)],
)
def test_what_is_no_request(page: Client, text: str, code: int) -> None:
    assert code_of(page, text) == code
    assert code_of(page, '{"jsonrpc":"2.0","id":9007199254740991,"method":"close"}') == -32000


def test_without_a_pad(page: Client) -> None:
    for method, parameters in FINE:
        if method in ("open", "resume"):
            continue
        page.send_raw(json.dumps({"jsonrpc": "2.0", "id": 1, "method": method, "params": parameters}))
        assert page.receive()["error"]["data"]["type"] == "no-session"
