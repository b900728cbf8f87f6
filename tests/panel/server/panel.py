# SPDX-License-Identifier: LicenseRef-HXAux
"""A server of the panel, its clients, and units, as the tests use them. HX_BUILD is the build tree."""
from __future__ import annotations

import contextlib
import dataclasses
import http.client
import json
import os
import pathlib
import signal
import socket
import subprocess
import threading
import time
from collections.abc import Callable, Iterator, Mapping, Sequence
from typing import Any

BUILD = pathlib.Path(os.environ["HX_BUILD"])
PATIENCE = 120.0
"""Seconds after which a test that waits has failed."""


def hx_sim(*words: str) -> str:
    return subprocess.run([BUILD / "hx-sim", *words], check=True, capture_output=True, text=True).stdout


class EventSocket:
    """A client of a unit, beside the panel."""

    def __init__(self, unit: str) -> None:
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(PATIENCE)
        self.socket.connect(str(folder(unit) / "events"))
        self.lines = self.socket.makefile("r", encoding="utf-8")
        self.lines.readline()

    def send(self, *words: str) -> None:
        self.socket.sendall(json.dumps({"id": 1, "command": words}).encode() + b"\n")

    def ask(self, *words: str) -> str:
        self.send(*words)
        answer = json.loads(self.lines.readline())
        assert answer["ok"], answer
        return str(answer["text"])

    def close(self) -> None:
        self.lines.close()
        self.socket.close()


def folder(unit: str) -> pathlib.Path:
    return pathlib.Path(os.environ["XDG_RUNTIME_DIR"]) / f"hx-sim-{os.getuid()}" / unit


def process_of(unit: str) -> int:
    return int((folder(unit) / "pid").read_text(encoding="ascii").split()[0])


@contextlib.contextmanager
def stopped(unit: str) -> Iterator[None]:
    """The unit does not answer."""
    process = process_of(unit)
    os.kill(process, signal.SIGSTOP)
    try:
        yield
    finally:
        os.kill(process, signal.SIGCONT)


@dataclasses.dataclass
class Answer:
    status: int
    headers: Mapping[str, str]
    body: bytes

    @property
    def json(self) -> Any:
        return json.loads(self.body)

    @property
    def error(self) -> str:
        return str(self.json["error"])


class Stream:
    """An event stream, message by message."""

    def __init__(self, response: http.client.HTTPResponse) -> None:
        self.response = response
        self.lines: Iterator[bytes] = iter(response.readline, b"")
        self.events: list[Any] = []  # of a message that has been read

    def next(self) -> tuple[str, Any]:
        """The next message: its name and its document."""
        name, data = next(self.lines), next(self.lines)
        assert name.startswith(b"event: ") and data.startswith(b"data: ") and next(self.lines) == b"\n", (name, data)
        return name[7:].decode().strip(), json.loads(data[6:])

    def until(self, name: str, found: Callable[[Any], bool] = lambda _: True) -> Any:
        """The first message of this name for which this is true."""
        return self._first(lambda message, document: document if message == name and found(document) else None)

    def event(self, found: Callable[[Any], bool]) -> Any:
        """The first event for which this is true."""

        def event_in(message: str, document: Any) -> Any:
            self.events += document["events"] if message == "events" else []
            while self.events:
                event = self.events.pop(0)
                if found(event):
                    return event
            return None

        return event_in("", None) or self._first(event_in)

    def _first(self, wanted: Callable[[str, Any], Any]) -> Any:
        begun = time.monotonic()
        while time.monotonic() < begun + PATIENCE:
            result = wanted(*self.next())
            if result is not None:
                return result
        raise AssertionError("it does not come")

    def change_of(self, name: str) -> Any:
        return self.event(lambda event: event.get("name") == name and event["event"] == "property")

    def close(self) -> None:
        self.response.close()


class Panel:
    """A server on a free port of the loopback interface."""

    def __init__(self, *words: str, launcher: Sequence[str] = ()) -> None:
        listen = [] if "--listen" in words else ["--listen", "127.0.0.1:0"]
        command = [*launcher, str(BUILD / "hx-panel"), *listen, *words]
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        assert self.process.stdout is not None
        self.url = self.process.stdout.readline().strip()
        assert self.url.startswith("http://127.0.0.1:"), self.url
        self.port = int(self.url.rstrip("/").rpartition(":")[2])
        self.host = f"127.0.0.1:{self.port}"
        self.streams: list[tuple[http.client.HTTPConnection, Stream]] = []

    def connection(self) -> http.client.HTTPConnection:
        return http.client.HTTPConnection("127.0.0.1", self.port, timeout=PATIENCE)

    def socket(self) -> socket.socket:
        return socket.create_connection(("127.0.0.1", self.port), timeout=PATIENCE)

    def request(
        self, method: str, path: str, body: bytes | str | None = None, headers: Mapping[str, str] | None = None
    ) -> Answer:
        connection = self.connection()
        try:
            connection.request(method, path, body=body, headers=dict(headers or {}))
            response = connection.getresponse()
            return Answer(response.status, {k.lower(): v for k, v in response.getheaders()}, response.read())
        finally:
            connection.close()

    def get(self, path: str, **headers: str) -> Answer:
        return self.request("GET", path, headers={name.replace("_", "-"): value for name, value in headers.items()})

    def post(self, path: str, document: Any, headers: Mapping[str, str] | None = None) -> Answer:
        given = {"Content-Type": "application/json", **(headers or {})}
        return self.request("POST", path, json.dumps(document), given)

    def command(self, unit: str, *words: str) -> Answer:
        return self.post(f"/api/units/{unit}/command", {"command": words})

    def hxaux(self, unit: str, *words: str) -> Answer:
        return self.post(f"/api/units/{unit}/hxaux", {"words": words})

    def raw(self, text: bytes) -> bytes:
        """Everything that the server answers to these bytes until it closes the connection."""
        with self.socket() as client:
            client.sendall(text)
            return b"".join(iter(lambda: client.recv(65536), b""))

    def stream(self, unit: str | None = None, **headers: str) -> Stream:
        return self.stream_on(self.connection(), unit, **headers)

    def slow_stream(self, unit: str) -> Stream:
        """One whose socket keeps little."""
        connection = self.connection()
        connection.sock = socket.socket()
        connection.sock.settimeout(PATIENCE)
        connection.sock.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        connection.sock.connect(("127.0.0.1", self.port))
        return self.stream_on(connection, unit)

    def stream_on(self, connection: http.client.HTTPConnection, unit: str | None, **headers: str) -> Stream:
        given = {name.replace("_", "-"): value for name, value in headers.items()}
        connection.request("GET", "/api/events" + (f"?unit={unit}" if unit else ""), headers=given)
        response = connection.getresponse()
        assert response.status == 200, response.read()
        stream = Stream(response)
        self.streams.append((connection, stream))
        return stream

    def memory(self) -> int:
        """KiB that it has now."""
        lines = pathlib.Path(f"/proc/{self.process.pid}/status").read_text(encoding="ascii").splitlines()
        return int(next(line.split()[1] for line in lines if line.startswith("VmRSS:")))

    def stop(self) -> int:
        """Closes the streams and ends the server: its exit status."""
        for connection, stream in self.streams:
            stream.close()
            connection.close()
        self.process.terminate()
        status = self.process.wait(PATIENCE)
        assert self.process.stdout is not None
        self.process.stdout.close()
        return status


class Background:
    """Work in a thread, until the test ends."""

    def __init__(self, work: Callable[[threading.Event], None]) -> None:
        self.over = threading.Event()
        self.failure: BaseException | None = None
        self.thread = threading.Thread(target=self._run, args=[work])
        self.thread.start()

    def _run(self, work: Callable[[threading.Event], None]) -> None:
        try:
            work(self.over)
        except BaseException as failure:  # for the thread that waits
            self.failure = failure

    def stop(self) -> None:
        self.over.set()
        self.thread.join()
        if self.failure is not None:
            raise self.failure


def programs(words: Sequence[str]) -> subprocess.CompletedProcess[str]:
    """hx-panel with these words, until it ends."""
    return subprocess.run([BUILD / "hx-panel", *words], capture_output=True, text=True, timeout=PATIENCE)
