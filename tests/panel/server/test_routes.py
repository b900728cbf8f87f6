# SPDX-License-Identifier: LicenseRef-HXAux
"""What each address answers."""
from __future__ import annotations

import json
import subprocess
from collections.abc import Callable
from typing import Any

import pytest

from panel import Panel, hx_sim

ALWAYS = {
    "x-content-type-options": "nosniff",
    "referrer-policy": "no-referrer",
    "x-frame-options": "DENY",
}


def names(document: Any) -> list[str]:
    return [unit["name"] for unit in document["units"]]


class TestPage:
    def test_is_served_with_the_headers_that_protect_it(self, panel: Panel) -> None:
        page = panel.get("/")
        assert page.status == 200
        assert page.headers["content-type"] == "text/html; charset=utf-8"
        assert page.body.lower().startswith(b"<!doctype html>")
        assert page.headers["content-security-policy"].startswith("default-src 'self';")
        assert ALWAYS.items() <= page.headers.items()

    def test_has_only_its_own_files(self, panel: Panel) -> None:
        for path in ["/index.htm", "/..", "/../../etc/passwd", "/%2e%2e/%2e%2e/etc/passwd", "//etc/passwd", "/page/"]:
            assert panel.get(path).status == 404, path

    def test_answers_head_without_a_body(self, panel: Panel) -> None:
        head = panel.request("HEAD", "/")
        assert (head.status, head.body) == (200, b"")


class TestMethods:
    @pytest.mark.parametrize("method", ["POST", "PUT", "DELETE", "OPTIONS", "PATCH"])
    @pytest.mark.parametrize("path", ["/", "/api/panel", "/api/events", "/api/profiles"])
    def test_are_refused_where_one_only_reads(self, panel: Panel, method: str, path: str) -> None:
        refused = panel.request(method, path)
        assert refused.status == 405
        assert "GET" in refused.headers["allow"]

    @pytest.mark.parametrize("verb", ["command", "hxaux"])
    def test_are_refused_where_one_only_posts(self, panel: Panel, verb: str) -> None:
        refused = panel.request("GET", f"/api/units/bench/{verb}", headers={"Content-Type": "application/json"})
        assert (refused.status, refused.headers["allow"]) == (405, "POST")

    def test_are_not_cached_and_say_what_is_wrong_in_json(self, panel: Panel) -> None:
        refused = panel.get("/api/nothing")
        assert refused.status == 404
        assert refused.headers["cache-control"] == "no-store"
        assert refused.error == "there is nothing at this address"
        assert ALWAYS.items() <= refused.headers.items()


class TestList:
    def test_has_every_running_unit(self, panel: Panel, start: Callable[..., str]) -> None:
        start("other")
        document = panel.get("/api/panel").json
        assert document["units"] == [
            {"name": "bench", "kind": "simulated", "running": True},
            {"name": "other", "kind": "simulated", "running": True},
        ]
        assert (document["readOnly"], document["token"]) == (False, False)
        assert document["version"].count(".") == 3

    def test_has_the_named_units_alone(self, start: Callable[..., str], serve: Callable[..., Panel]) -> None:
        start("one")
        start("two")
        panel = serve("--unit", "two")
        assert [unit["name"] for unit in panel.get("/api/panel").json["units"]] == ["two"]
        assert panel.command("one", "get", "light").status == 404
        assert panel.get("/api/events?unit=one").status == 404

    def test_streams_know_when_a_unit_starts_and_stops(self, panel: Panel, start: Callable[..., str]) -> None:
        stream = panel.stream("bench")
        alone = panel.stream()
        assert names(alone.until("units")) == ["bench"]
        start("other")
        for each in (stream, alone):
            each.until("units", lambda document: names(document) == ["bench", "other"])
        hx_sim("stop", "other")
        for each in (stream, alone):
            each.until("units", lambda document: names(document) == ["bench"])


class TestProfiles:
    def test_are_the_texts_of_the_simulated_unit(self, panel: Panel) -> None:
        profiles = panel.get("/api/profiles").json
        assert "tunnel" in profiles
        assert panel.command("bench", "set", "light.profile = 0 10; 1 20").json["ok"]


class TestCommand:
    def test_is_executed_and_answered_as_the_unit_does(self, panel: Panel) -> None:
        answer = panel.command("bench", "set", "light = 20")
        assert answer.status == 200
        assert {**answer.json, "time": 0} == {"ok": True, "text": "", "time": 0}
        assert panel.command("bench", "get", "light").json["text"] == "20\n"
        assert hx_sim("get", "light").strip() == "20"

    def test_that_the_unit_refuses_is_answered_with_its_message(self, panel: Panel) -> None:
        answer = panel.command("bench", "set", "ligth = 20")
        assert answer.status == 200
        assert answer.json["ok"] is False
        assert "did you mean 'light'?" in answer.json["error"]

    @pytest.mark.parametrize("word", ["stop", "events", "own", "alarm", "take-part", "output", "record", "", "SET"])
    def test_of_another_kind_does_not_reach_the_unit(self, panel: Panel, word: str) -> None:
        assert panel.command("bench", word).status == 403
        assert hx_sim("list").split() == ["bench"]

    def test_names_the_nearest_allowed_one(self, panel: Panel) -> None:
        assert "did you mean 'set'?" in panel.command("bench", "sett").error

    def test_to_a_unit_that_is_not_running_names_the_nearest(self, panel: Panel) -> None:
        refused = panel.command("bnch", "get", "light")
        assert refused.status == 404
        assert refused.error == "no unit named 'bnch' is running; did you mean 'bench'?"

    def test_keeps_its_order_and_text(self, panel: Panel) -> None:
        text = 'a "quoted" \u00e4 \\ line'
        assert panel.command("bench", "set", "light = 1", "light = 2").json["ok"]
        assert panel.command("bench", "get", "light").json["text"] == "2\n"
        assert text in panel.command("bench", "get", text).json["error"]

    def test_cannot_be_two_lines_for_the_unit(self, panel: Panel) -> None:
        answer = panel.command("bench", "get", 'light"]}\n{"id":9,"command":["stop"]}\n')
        assert answer.json["ok"] is False
        assert hx_sim("list").split() == ["bench"]


class TestHxaux:
    def test_answers_with_the_document_of_the_tool(self, panel: Panel) -> None:
        document = panel.hxaux("bench", "voltage", "0").json
        assert document["object"] == "voltage"
        assert document["result"]["voltage"][0]["value"] == pytest.approx(24, abs=0.1)

    def test_changes_the_unit(self, panel: Panel) -> None:
        assert panel.hxaux("bench", "backlight", "set", "40").json["status"] == 0
        assert hx_sim("get", "backlight.level").strip() == "40"

    def test_passes_the_errors_of_the_tool_on(self, panel: Panel) -> None:
        document = panel.hxaux("bench", "voltage", "9").json
        assert (document["status"], document["errors"][0]["text"]) == (2, "number: 9 is outside 0 to 7")

    def test_looks_once_at_what_is_live(self, panel: Panel) -> None:
        assert "result" in panel.hxaux("bench", "monitor").json

    @pytest.mark.parametrize(
        "words",
        [
            ["upgrade", "ss", "/tmp/file"],
            ["verify", "ss", "/tmp/file"],
            ["completion", "bash"],
            ["backlight", "serve"],
            ["calibrate", "run"],
            ["video", "snapshot", "1", "x", "/tmp/file"],
            ["voltage", "--watch"],
            ["voltage", "--json"],
            ["monitor", "--count", "1000000"],
            ["--man"],
            ["--help"],
            ["-x"],
            [""],
            ["voltage 0"],
            ["locks", "reset", "x", "--force"],
            ["light", "--average"],
        ],
        ids=" ".join,
    )
    def test_refuses_what_is_not_on_its_list(self, panel: Panel, words: list[str]) -> None:
        refused = panel.hxaux("bench", *words)
        assert refused.status == 403, refused.body

    def test_takes_a_negative_number_for_a_value(self, panel: Panel) -> None:
        assert panel.hxaux("bench", "config", "heating", "-20").json["status"] == 0

    def test_names_the_nearest_call(self, panel: Panel) -> None:
        assert "did you mean 'voltage'" in panel.hxaux("bench", "voltaeg").error

    def test_does_not_interpret_its_words(self, panel: Panel) -> None:
        document = panel.hxaux("bench", "settings", "set", "key", "$(touch /tmp/x); `id` | cat").json
        assert document["status"] == 0
        value = panel.hxaux("bench", "settings", "get", "key").json["result"]
        assert "$(touch /tmp/x); `id` | cat" in value.values()

    def test_many_at_once_are_all_answered(self, panel: Panel) -> None:
        connections = [panel.connection() for _ in range(20)]
        for connection in connections:
            body = json.dumps({"words": ["inputs"]})
            connection.request("POST", "/api/units/bench/hxaux", body, {"Content-Type": "application/json"})
        for connection in connections:
            response = connection.getresponse()
            assert response.status == 200, response.read()
            assert json.loads(response.read())["object"] == "inputs"
            connection.close()


class TestReadOnly:
    @pytest.fixture
    def panel(self, unit: str, serve: Callable[..., Panel]) -> Panel:
        return serve("--read-only")

    def test_says_so(self, panel: Panel) -> None:
        assert panel.get("/api/panel").json["readOnly"] is True
        assert panel.stream("bench").until("snapshot")["readOnly"] is True

    @pytest.mark.parametrize(
        "words",
        [
            ["set", "light = 1"],
            ["do", "press", "front"],
            ["fail", "*", "open"],
            ["unfail"],
            ["remove", "/dev/adc-id"],
            ["restore", "/dev/adc-id"],
            ["ramp", "light", "1", "2", "3"],
            ["clear"],
        ],
        ids=" ".join,
    )
    def test_sends_no_command_that_changes(self, panel: Panel, words: list[str]) -> None:
        refused = panel.command("bench", *words)
        assert (refused.status, refused.error) == (403, "this panel is read-only")
        assert hx_sim("get", "light").strip() == "250"

    @pytest.mark.parametrize("words", [["get", "light"], ["faults"], ["log"], ["properties", "--json"], ["names"]])
    def test_sends_commands_that_read(self, panel: Panel, words: list[str]) -> None:
        assert panel.command("bench", *words).json["ok"]

    @pytest.mark.parametrize(
        "words", [["backlight", "set", "4"], ["led", "color", "red"], ["shutdown"], ["can", "set", "1", "500"]]
    )
    def test_calls_nothing_that_changes(self, panel: Panel, words: list[str]) -> None:
        assert panel.hxaux("bench", *words).status == 403

    @pytest.mark.parametrize("words", [["backlight", "get"], ["led", "color"], ["can", "get", "1"], ["eeprom", "list"]])
    def test_calls_what_reads(self, panel: Panel, words: list[str]) -> None:
        assert panel.hxaux("bench", *words).json["object"] == words[0]


class TestReal:
    def test_is_read_with_the_tool_and_has_no_commands(self, serve: Callable[..., Panel], unit: str) -> None:
        """Here on a simulated unit, which the server and so its calls of hxaux take for the machine."""
        panel = OnUnit(unit)
        try:
            assert panel.get("/api/panel").json["units"] == [{"name": "real", "kind": "real", "running": True}]
            stream = panel.stream("real")
            snapshot = stream.until("snapshot")
            assert snapshot["kind"] == "real"
            assert snapshot["readings"]["backlight"]["level"] == 128
            assert panel.hxaux("real", "backlight", "set", "77").json["status"] == 0
            assert hx_sim("get", "backlight.level").strip() == "77"
            stream.until("readings", lambda document: document["readings"]["backlight"]["level"] == 77)
            assert panel.command("real", "get", "light").status == 404
        finally:
            panel.stop()


class OnUnit(Panel):
    """A server that runs on a unit itself, as it would on a machine."""

    def __init__(self, unit: str) -> None:
        super().__init__("--real", launcher=["hx-sim", "run", "--unit", unit, "--"])


class TestPrograms:
    def test_use_the_unit_and_leave_it(self, panel: Panel, unit: str) -> None:
        stream = panel.stream("bench")
        assert stream.until("snapshot")["programs"] == []
        hx_sim("run", "--unit", unit, "--", "hxaux", "voltage", "0")
        assert stream.event(lambda event: event["event"] == "joined")["program"] == "hxaux"
        assert stream.event(lambda event: event["event"] == "request" and event["device"] == "/dev/adc-id")
        assert stream.event(lambda event: event["event"] == "left")["program"] == "hxaux"

    def test_that_joined_before_are_in_the_snapshot(self, panel: Panel, unit: str) -> None:
        program = subprocess.Popen(
            ["hx-sim", "run", "--unit", unit, "--", "hxaux", "monitor", "--every", "86400"], stdout=subprocess.PIPE
        )
        assert program.stdout is not None
        try:
            program.stdout.readline()
            programs = panel.stream("bench").until("snapshot")["programs"]
            assert [row["program"] for row in programs] == ["hxaux"]
        finally:
            program.terminate()
            program.wait()
            program.stdout.close()


class TestSnapshot:
    def test_has_the_state_of_the_unit(self, panel: Panel, unit: str) -> None:
        hx_sim("fail", "/dev/adc-id", "get 3", "EIO", "2")
        hx_sim("remove", "/dev/buzzer")
        snapshot = panel.stream("bench").until("snapshot")
        for row in snapshot["properties"].values():
            row.pop("healthy", None)
        assert snapshot["properties"] == json.loads(hx_sim("properties", "--json"))
        assert snapshot["actions"] == json.loads(hx_sim("actions", "--json"))
        assert snapshot["faults"] == json.loads(hx_sim("faults", "--json"))
        assert snapshot["removed"] == ["/dev/buzzer"]
        assert "/dev/adc-id" in snapshot["devices"]
        assert (snapshot["unit"], snapshot["kind"], snapshot["running"]) == ("bench", "simulated", True)

    def test_says_what_is_healthy(self, serve: Callable[..., Panel], start: Callable[..., str]) -> None:
        start("bench", "--set", "light = 77")
        stream = serve().stream("bench")
        snapshot = stream.until("snapshot", lambda document: "healthy" in document["properties"]["light"])
        light = snapshot["properties"]["light"]
        assert (light["value"], light["healthy"]) == ("77", "250")
        assert snapshot["properties"]["voltage.0"]["healthy"] == "23.996"
        assert hx_sim("list").split() == ["bench"]

    def test_is_followed_by_every_change(self, panel: Panel, unit: str) -> None:
        stream = panel.stream("bench")
        stream.until("snapshot")
        hx_sim("set", "voltage.0", "11.5")
        change = stream.change_of("voltage.0")
        assert (change["old"], change["new"]) == ("23.996", "11.495")
        assert panel.command("bench", "set", "inputs.1 = on").json["ok"]
        assert stream.change_of("inputs.1")["new"] == "on"

    def test_of_a_later_stream_has_the_changes(self, panel: Panel, unit: str) -> None:
        first = panel.stream("bench")
        first.until("snapshot")
        hx_sim("set", "light", "77")
        first.change_of("light")
        assert panel.stream("bench").until("snapshot")["properties"]["light"]["value"] == "77"

    def test_is_followed_by_failures_and_devices_whoever_changes_them(self, panel: Panel, unit: str) -> None:
        stream = panel.stream("bench")
        stream.until("snapshot")
        assert panel.command("bench", "fail", "/dev/adc-id", "open", "EIO", "1").json["ok"]
        assert stream.until("faults")["faults"][0]["node"] == "/dev/adc-id"
        hx_sim("run", "--unit", unit, "--", "sh", "-c", "hxaux voltage 0 || true")
        assert stream.until("faults", lambda document: document["faults"][0]["hits"] == 1)
        hx_sim("unfail")
        assert stream.until("faults")["faults"] == []
        hx_sim("remove", "/dev/buzzer")
        assert stream.until("devices")["removed"] == ["/dev/buzzer"]

    def test_shows_life_with_the_time(self, panel: Panel, unit: str) -> None:
        stream = panel.stream("bench")
        begun = stream.until("snapshot")["time"]
        stream.until("alive")
        assert stream.until("alive")["time"] > begun
