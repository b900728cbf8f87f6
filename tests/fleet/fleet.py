# SPDX-License-Identifier: LicenseRef-HXAux
"""Units, and the engines of an operator around them, as the tests use them. HX_BUILD is the build tree."""
from __future__ import annotations

import json
import os
import pathlib
import re
import select
import shutil
import socket
import subprocess
import time
import urllib.error
import urllib.parse
import urllib.request
from collections.abc import Callable, Iterable, Mapping, Sequence
from typing import Any, TypeVar

BUILD = pathlib.Path(os.environ["HX_BUILD"])
SOURCE = pathlib.Path(__file__).resolve().parent.parent.parent
RULES = SOURCE / "packaging/prometheus/hxaux.rules.yml"
PATIENCE = 120.0
"""Seconds after which a test that waits has failed."""

Value = TypeVar("Value")


def engine(name: str) -> str | None:
    """A server of an operator: installed, or unpacked by scripts/install-deps.sh."""
    unpacked = SOURCE / "build/monitoring/usr/bin" / name
    return str(unpacked) if unpacked.exists() else shutil.which(name)


def at_its_place(program: str) -> list[str]:
    """The command of a server that looks for its own files where its package puts them, unpacked or not."""
    share = SOURCE / "build/monitoring/usr/share"
    if not program.startswith(str(SOURCE)):
        return [program]
    mount = 'mount -t overlay -o "lowerdir=$0:/usr/share" overlay /usr/share && exec "$@"'
    root = [] if os.getuid() == 0 else ["--map-root-user"]
    return ["unshare", "--mount", *root, "sh", "-c", mount, str(share), program]


def run(*words: str | pathlib.Path, check: bool = True, **more: Any) -> subprocess.CompletedProcess[str]:
    return subprocess.run(list(map(str, words)), check=check, capture_output=True, text=True, **more)


def hx_sim(*words: str) -> str:
    return run(BUILD / "hx-sim", *words).stdout


class Unit:
    """A unit that runs until it is stopped."""

    def __init__(self, name: str, *settings: str, scale: float = 1) -> None:
        self.name = name
        words = [word for line in settings for word in ("--set", line)]
        hx_sim("start", name, "--scale", str(scale), *words)

    def control(self, *words: str) -> str:
        return hx_sim(words[0], "--unit", self.name, *words[1:])

    def set(self, key: str, value: object) -> None:
        self.control("set", key, str(value))

    def get(self, key: str) -> str:
        return self.control("get", key).strip()

    def command(self, *words: str) -> list[str]:
        return [str(BUILD / "hx-sim"), "run", "--unit", self.name, "--", *words]

    def hxaux(self, *words: str, check: bool = True) -> subprocess.CompletedProcess[str]:
        return run(*self.command("hxaux", *words), check=check)

    def leave_lock(self, lock: str) -> None:
        """A program takes it and is killed."""
        program = subprocess.Popen(
            self.command(str(BUILD / "tests/hx-child"), "take", lock), stdout=subprocess.PIPE, text=True
        )
        assert program.stdout is not None
        assert program.stdout.readline() == "taken\n"
        program.kill()
        program.wait()
        program.stdout.close()

    def stop(self) -> None:
        hx_sim("stop", self.name)


class Server:
    """A program that serves until it is stopped; its output goes to a file."""

    def __init__(self, folder: pathlib.Path, name: str, *words: str | pathlib.Path, **more: Any) -> None:
        self.log = folder / f"{name}.log"
        with self.log.open("w", encoding="utf-8") as log:
            self.process = subprocess.Popen(list(map(str, words)), stdout=log, stderr=subprocess.STDOUT, **more)

    def stop(self) -> None:
        if self.process.poll() is None:
            self.process.terminate()
        self.process.wait(PATIENCE)


class MetricsServer:
    """`hxaux metrics --listen` on a unit."""

    def __init__(self, unit: Unit, *words: str) -> None:
        command = unit.command("hxaux", "metrics", "--listen", *(words or ("127.0.0.1:0",)))
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        assert self.process.stdout is not None
        line = self.process.stdout.readline()
        assert line.startswith("metrics: http://"), line
        self.url = line.split(": ", 1)[1].strip()
        self.address = self.url.split("/")[2]

    def connect(self) -> socket.socket:
        host, port = self.address.rsplit(":", 1)
        return socket.create_connection((host, int(port)), timeout=PATIENCE)

    def ask(self, request: bytes) -> bytes:
        """Everything that comes back for these bytes."""
        with self.connect() as connection:
            connection.sendall(request)
            return rest_of(connection)

    def stop(self) -> int:
        self.process.terminate()
        status = self.process.wait(PATIENCE)
        assert self.process.stdout is not None
        self.process.stdout.close()
        return status


def rest_of(connection: socket.socket) -> bytes:
    parts = []
    while part := connection.recv(65536):
        parts.append(part)
    return b"".join(parts)


def free_ports(count: int) -> list[int]:
    """Ports that no program uses now."""
    sockets = [socket.create_server(("127.0.0.1", 0)) for _ in range(count)]
    ports = [int(each.getsockname()[1]) for each in sockets]
    for each in sockets:
        each.close()
    return ports


def get(url: str, **headers: str) -> str:
    with urllib.request.urlopen(urllib.request.Request(url, headers=headers), timeout=PATIENCE) as answer:
        return str(answer.read().decode())


def eventually(what: str, look: Callable[[], Value | None], patience: float = PATIENCE) -> Value:
    """Asks an engine that has no events of its own until it answers what is looked for."""
    until = time.monotonic() + patience
    while time.monotonic() < until:
        try:
            if found := look():
                return found
        except (urllib.error.URLError, ConnectionError):
            pass  # not listening yet
        select.select([], [], [], 0.1)
    raise AssertionError(f"{what}: not within {patience} s")


def scaled_rules(interval: float) -> str:
    """The rules for another scrape interval than the minute that they are written for."""
    factor = interval / 60
    seconds = {"m": 60, "d": 86400}

    def shorter(match: re.Match[str]) -> str:
        return f"{match[1]}{int(match[2]) * seconds[match[3]] * factor:.0f}s"

    text = re.sub(r"(for: |\[)(\d+)([md])\b", shorter, RULES.read_text(encoding="utf-8"))
    return text.replace(", 3600)", f", {3600 * factor:.0f})").replace("> 300", f"> {300 * factor:.0f}")


class Prometheus(Server):
    """Scrapes these targets, and looks at the alerts every second."""

    def __init__(
        self,
        folder: pathlib.Path,
        jobs: Mapping[str, Mapping[str, str]],
        interval: float,
        alertmanager: str | None = None,
    ) -> None:
        self.port = free_ports(1)[0]
        self.url = f"http://127.0.0.1:{self.port}"
        jobs = {**jobs, "prometheus": {"itself": f"127.0.0.1:{self.port}"}}
        (folder / "rules.yml").write_text(scaled_rules(interval), encoding="utf-8")
        (folder / "prometheus.yml").write_text(json.dumps(self.config(jobs, interval, alertmanager)), encoding="utf-8")
        program = engine("prometheus")
        assert program is not None
        words: list[str | pathlib.Path] = [
            "--config.file",
            folder / "prometheus.yml",
            "--storage.tsdb.path",
            folder / "data",
        ]
        super().__init__(folder, "prometheus", program, *words, "--web.listen-address", f"127.0.0.1:{self.port}")
        eventually("prometheus is ready", lambda: get(self.url + "/-/ready"))

    @staticmethod
    def config(jobs: Mapping[str, Mapping[str, str]], interval: float, alertmanager: str | None) -> dict[str, Any]:
        """YAML contains JSON. The targets of a job by the names that they get."""
        config: dict[str, Any] = {
            "global": {
                "scrape_interval": f"{interval:g}s",
                "scrape_timeout": f"{interval:g}s",
                "evaluation_interval": "1s",
            },
            "rule_files": ["rules.yml"],
            "scrape_configs": [
                {
                    "job_name": job,
                    "static_configs": [
                        {"targets": [address], "labels": {"instance": name}} for name, address in targets.items()
                    ],
                }
                for job, targets in jobs.items()
            ],
        }
        if alertmanager:
            managers = [{"static_configs": [{"targets": [alertmanager]}]}]
            config["alerting"] = {"alertmanagers": managers}
        return config

    def query(self, expression: str) -> list[tuple[dict[str, str], float]]:
        words = urllib.parse.urlencode({"query": expression})
        answer = json.loads(get(f"{self.url}/api/v1/query?{words}"))
        return [(each["metric"], float(each["value"][1])) for each in answer["data"]["result"]]

    def alerts(self) -> set[tuple[str, str]]:
        """Name and unit of every alert that fires."""
        found = json.loads(get(self.url + "/api/v1/alerts"))["data"]["alerts"]
        return {
            (str(each["labels"]["alertname"]), str(each["labels"]["instance"]))
            for each in found
            if each["state"] == "firing"
        }

    def scrapes(self, instance: str, since: float) -> int:
        """How often a unit was scraped, or tried to be, since a time of the clock."""
        window = max(1, round((time.time() - since) * 1000))
        found = self.query(f'count_over_time(up{{job="hxaux",instance="{instance}"}}[{window}ms])')
        return int(found[0][1]) if found else 0


def metric_names(text: str) -> set[str]:
    """The metrics of a text, by the names of their samples."""
    return {match[1] for match in re.finditer(r"^([a-z_]+)[ {]", text, re.MULTILINE)}


def names_in(expressions: Iterable[str]) -> set[str]:
    """The metrics of ours that expressions name."""
    return {name for text in expressions for name in re.findall(r"\bhxaux[a-z_:]*", re.sub(r'"[^"]*"', "", text))}


def memory(processes: Sequence[int]) -> int:
    """KiB that no other process shares."""
    total = 0
    for process in processes:
        lines = pathlib.Path(f"/proc/{process}/smaps_rollup").read_text(encoding="ascii").splitlines()
        total += sum(int(line.split()[1]) for line in lines if line.startswith(("Private_Clean", "Private_Dirty")))
    return total
