# SPDX-License-Identifier: LicenseRef-HXAux
"""Many clients, slow ones and dead ones: the others, and the unit, do not notice."""
from __future__ import annotations

import json
import os
import re
import signal
import socket
import subprocess
import threading
from collections.abc import Callable

import pytest

from panel import PATIENCE, Background, EventSocket, Panel, hx_sim, process_of, programs, stopped


def flood(unit: str) -> Background:
    """Lines of a program, each an event, as fast as the unit takes them, with a count; the light changes as well."""

    def work(over: threading.Event) -> None:
        client = EventSocket(unit)
        count = 0
        while not over.is_set():
            for _ in range(50):
                count += 1
                client.send("output", "flood", f"{count:06} " + "x" * 200)
            client.send("set", f"light = {count % 1000 + 1}")
            for _ in range(51):
                client.lines.readline()
        client.close()

    return Background(work)


class TestSlowReader:
    def test_costs_no_memory_and_nobody_else(self, panel: Panel, unit: str) -> None:
        """It reads nothing, while more arrives than its socket and the server keep together."""
        panel.slow_stream("bench")
        good = panel.stream("bench")
        good.until("snapshot")
        before = panel.memory()
        flooding = flood(unit)
        seen = 0
        while seen < 12 << 20:
            seen += len(json.dumps(good.until("events")))
        flooding.stop()
        assert panel.memory() < before + 8 * 1024
        assert panel.command("bench", "get", "led.startup").json["ok"]

    def test_continues_with_a_snapshot(self, panel: Panel, unit: str) -> None:
        slow = panel.slow_stream("bench")
        slow.until("snapshot")
        good = panel.stream("bench")
        good.until("snapshot")
        flooding = flood(unit)
        seen = 0
        while seen < 6 << 20:
            seen += len(json.dumps(good.until("events")))
        flooding.stop()
        hx_sim("set", "light", "4321")
        good.event(lambda event: event.get("name") == "light" and event["new"] == "4321")
        slow.until("snapshot", lambda document: document["properties"]["light"]["value"] == "4321")

    def test_of_a_snapshot_in_small_pieces_gets_all_of_it(self, panel: Panel, unit: str) -> None:
        with panel.socket() as client:
            client.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 2048)
            client.sendall(f"GET /api/events?unit=bench HTTP/1.0\r\nHost: {panel.host}\r\n\r\n".encode())
            text = b""
            while b"\n\n" not in text:
                text += client.recv(100)
        document = text.partition(b"data: ")[2].partition(b"\n")[0]
        assert json.loads(document)["unit"] == "bench"


class TestEvents:
    def test_beyond_a_limit_are_counted_and_changes_are_joined(self, panel: Panel, unit: str) -> None:
        stream = panel.stream("bench")
        stream.until("snapshot")
        client = EventSocket(unit)
        for number in range(6000):
            client.send("output", "program", str(number))
        client.send("set", "light = 5")
        client.send("output", "program", "end")
        got, skipped = 0, 0
        light: list[str] = []
        while not light:
            for event in stream.until("events")["events"]:
                got += event["event"] == "output" and event["line"] != "end"
                skipped += event.get("count", 0) if event["event"] == "skipped" else 0
                light += [event["new"]] if event.get("name") == "light" else []
        assert light == ["5"]
        assert skipped > 0
        assert got + skipped in (6000, 6001)
        client.close()

    def test_that_change_one_property_often_are_one_change(self, panel: Panel, unit: str) -> None:
        stream = panel.stream("bench")
        stream.until("snapshot")
        client = EventSocket(unit)
        for number in range(1, 1001):
            client.send("set", f"light = {number}")
        changes = []
        while not changes or changes[-1]["new"] != "1000":
            of_window = [each for each in stream.until("events")["events"] if each.get("name") == "light"]
            assert len(of_window) <= 1
            changes += of_window
        assert changes[0]["old"] == "250"
        assert [each["new"] for each in changes[:-1]] == [each["old"] for each in changes[1:]]
        client.close()

    def test_reach_thirty_streams_alike(self, panel: Panel, unit: str) -> None:
        streams = [panel.stream("bench") for _ in range(30)]
        for stream in streams:
            stream.until("snapshot")
        hx_sim("set", "light", "7")
        hx_sim("set", "inputs.2", "on")
        for stream in streams:
            assert stream.change_of("inputs.2")["new"] == "on"


class TestConnections:
    def test_have_a_limit_that_streams_do_not_reach(self, panel: Panel) -> None:
        for _ in range(32):
            panel.stream("bench").until("snapshot")
        refused = panel.get("/api/events?unit=bench")
        assert refused.status == 503
        assert refused.headers["retry-after"] == "5"
        assert panel.get("/api/panel").status == 200
        panel.streams[0][1].close()
        panel.streams[0][0].close()

    def test_five_hundred_at_once_keep_nobody_out_and_end_no_stream(self, panel: Panel, unit: str) -> None:
        stream = panel.stream("bench")
        stream.until("snapshot")
        silent = [panel.socket() for _ in range(500)]
        assert panel.get("/api/panel").status == 200
        assert panel.command("bench", "set", "light = 3").json["ok"]
        assert stream.change_of("light")["new"] == "3"
        assert len(os.listdir(f"/proc/{panel.process.pid}/fd")) < 100
        for each in silent:
            each.close()

    def test_five_hundred_requests_at_once_are_all_answered(self, panel: Panel) -> None:
        connections = [panel.connection() for _ in range(500)]
        for connection in connections:
            connection.request("GET", "/api/panel", headers={"Connection": "close"})
        for connection in connections:
            response = connection.getresponse()
            assert response.status == 200
            response.read()
            connection.close()

    def test_that_write_byte_by_byte_are_ended(self, panel: Panel) -> None:
        """64 clients that never finish their request, and never pause for long."""
        text = b"GET / HTTP/1.1\r\nX: " + b"y" * 100000

        def work(over: threading.Event) -> None:
            clients = [panel.socket() for _ in range(64)]
            for at in range(len(text)):
                if over.wait(0.2):
                    break
                for client in clients:
                    try:
                        client.send(text[at : at + 1])
                    except OSError:
                        client.close()
                        clients = [each for each in clients if each is not client]
                        clients.append(panel.socket())
                        break
            for client in clients:
                client.close()

        slow = Background(work)
        for _ in range(3):
            assert panel.get("/").status == 200
        slow.stop()

    def test_that_end_in_the_middle_leave_nothing(self, panel: Panel) -> None:
        before = len(os.listdir(f"/proc/{panel.process.pid}/fd"))
        head = f"POST /api/units/bench/command HTTP/1.1\r\nHost: {panel.host}\r\nContent-Type: application/json\r\n"
        whole = f"{head}Content-Length: 31\r\n\r\n".encode() + b'{"command":["set","light = 1"]}'
        for length in range(0, len(whole), 7):
            with panel.socket() as client:
                client.sendall(whole[:length])
        assert panel.get("/").status == 200
        assert hx_sim("get", "light").strip() == "250"
        wait_until(lambda: len(os.listdir(f"/proc/{panel.process.pid}/fd")) <= before)

    def test_that_never_become_a_request_are_ended(self, panel: Panel) -> None:
        texts = [
            b"",
            b"\r\n\r\n",
            b"\x00" * 1000,
            b"\xff" * 1000,
            b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03",
            b"GET / HT",
        ]
        clients = [panel.socket() for _ in texts]
        for client, text in zip(clients, texts):
            client.sendall(text)
        for client in clients:
            assert client.recv(1) == b""
            client.close()

    def test_several_requests_in_one_packet_are_answered_in_order(self, panel: Panel) -> None:
        head = f"Host: {panel.host}\r\n".encode()
        text = b"GET /api/panel HTTP/1.1\r\n" + head + b"\r\nGET /nothing HTTP/1.1\r\n" + head + b"\r\n"
        answer = panel.raw(text + b"GET / HTTP/1.1\r\n" + head + b"Connection: close\r\n\r\n")
        assert re.findall(rb"HTTP/1.1 (\d+)", answer) == [b"200", b"404", b"200"]


def wait_until(holds: Callable[[], bool]) -> None:
    """For what has no event: looks again and again."""
    over = threading.Event()
    for _ in range(int(PATIENCE * 20)):
        if holds():
            return
        over.wait(0.05)
    raise AssertionError("it does not become true")


class TestUnit:
    def test_that_restarts_is_followed_again(self, panel: Panel, start: Callable[..., str]) -> None:
        stream = panel.stream("bench")
        stream.until("snapshot")
        hx_sim("stop", "bench")
        assert stream.until("gone") == {}
        start("bench", "--set", "light = 77")
        assert stream.until("snapshot")["properties"]["light"]["value"] == "77"
        hx_sim("set", "light", "78")
        assert stream.change_of("light")["new"] == "78"

    def test_that_is_killed_is_gone_and_comes_back(self, panel: Panel, start: Callable[..., str]) -> None:
        stream = panel.stream("bench")
        stream.until("snapshot")
        os.kill(process_of("bench"), signal.SIGKILL)
        assert stream.until("gone") == {}
        assert panel.command("bench", "get", "light").status == 404
        start("bench")
        assert stream.until("snapshot")["running"] is True
        assert panel.command("bench", "get", "light").json["text"] == "250\n"

    def test_that_is_stopped_answers_nothing_and_blocks_nobody(self, panel: Panel, start: Callable[..., str]) -> None:
        start("other")
        stream = panel.stream("bench")
        stream.until("snapshot")
        with stopped("bench"):
            waiting = panel.connection()
            body = json.dumps({"command": ["get", "light"]})
            waiting.request("POST", "/api/units/bench/command", body, {"Content-Type": "application/json"})
            assert panel.command("other", "get", "light").json["text"] == "250\n"
            assert panel.stream("other").until("snapshot")["unit"] == "other"
            stream.until("alive")
            assert waiting.getresponse().status == 504
            waiting.close()
        assert panel.command("bench", "get", "light").json["text"] == "250\n"

    def test_that_does_not_answer_at_first_is_gone_until_it_does(self, panel: Panel, unit: str) -> None:
        with stopped("bench"):
            stream = panel.stream("bench")
            assert stream.until("gone") == {}
        assert stream.until("snapshot")["running"] is True

    def test_several_at_once_have_streams_of_their_own(self, panel: Panel, start: Callable[..., str]) -> None:
        names = ["bench"] + [start(f"unit-{number}") for number in range(5)]
        streams = {name: panel.stream(name) for name in names}
        for name in names:
            assert streams[name].until("snapshot")["unit"] == name
        for number, name in enumerate(names):
            assert panel.command(name, "set", f"light = {number + 1}").json["ok"]
        for number, name in enumerate(names):
            assert streams[name].change_of("light")["new"] == str(number + 1)

    def test_publishes_nothing_when_nobody_looks(self, panel: Panel, unit: str) -> None:
        stream = panel.stream("bench")
        stream.until("snapshot")
        connection, _ = panel.streams.pop()
        stream.close()
        connection.close()
        sockets = f"/proc/{process_of('bench')}/fd"
        before = len(os.listdir(sockets))
        hx_sim("set", "light", "3")  # the server notices when it sends
        wait_until(lambda: len(os.listdir(sockets)) < before)


class TestServer:
    @pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
    def test_ends_in_order_with_streams_and_commands_waiting(
        self, panel: Panel, unit: str, number: signal.Signals
    ) -> None:
        stream = panel.stream("bench")
        stream.until("snapshot")
        with stopped("bench"):
            waiting = panel.connection()
            body = json.dumps({"command": ["get", "light"]})
            waiting.request("POST", "/api/units/bench/command", body, {"Content-Type": "application/json"})
            panel.get("/")
            panel.process.send_signal(number)
            assert panel.process.wait(PATIENCE) == -number
        waiting.close()
        assert hx_sim("get", "light").strip() == "250"

    def test_that_is_killed_leaves_the_unit_as_it_was(self, panel: Panel, unit: str) -> None:
        panel.stream("bench").until("snapshot", lambda document: "healthy" in document["properties"]["light"])
        panel.process.kill()
        panel.process.wait(PATIENCE)
        assert hx_sim("get", "light").strip() == "250"
        assert hx_sim("log") == ""

    def test_answers_on_the_same_port_after_a_restart(self, serve: Callable[..., Panel], unit: str) -> None:
        first = serve()
        first.stream("bench").until("snapshot")
        port = first.port
        assert first.stop() == -signal.SIGTERM
        second = serve("--listen", f"127.0.0.1:{port}")
        assert second.port == port
        assert second.get("/").status == 200

    def test_at_a_port_in_use_says_so(self, panel: Panel) -> None:
        refused = programs(["--listen", panel.host])
        assert refused.returncode == 5
        assert refused.stdout == ""
        assert f"127.0.0.1:{panel.port} is in use" in refused.stderr
        assert "--listen" in refused.stderr

    def test_ends_programs_that_take_too_long(self, panel: Panel, unit: str) -> None:
        """The driver of the voltages never answers."""
        hx_sim("run", "--unit", unit, "--", "hxaux", "voltage", "0")
        connection = panel.connection()
        with stopped("bench"):
            body = json.dumps({"words": ["voltage"]})
            connection.request("POST", "/api/units/bench/hxaux", body, {"Content-Type": "application/json"})
            assert connection.getresponse().status == 504
            children = subprocess.run(["pgrep", "-P", str(panel.process.pid)], capture_output=True, check=False)
            assert children.stdout == b""
        connection.close()
