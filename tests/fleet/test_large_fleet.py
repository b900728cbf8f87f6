# SPDX-License-Identifier: LicenseRef-HXAux
"""100 units on this machine under the real Prometheus, alert manager and node exporter: every fault raises its alert."""
from __future__ import annotations

import dataclasses
import http.server
import json
import os
import pathlib
import threading
import time
from collections.abc import Callable, Mapping, Sequence
from contextlib import ExitStack

import pytest

from fleet import MetricsServer, Prometheus, Server, Unit, at_its_place, engine, eventually, free_ports, get, memory

pytestmark = [
    pytest.mark.large,
    pytest.mark.skipif(engine("prometheus-alertmanager") is None, reason="needs scripts/install-deps.sh fleet"),
]
COUNT = int(os.environ.get("HX_FLEET_UNITS", "100"))
INTERVAL = 10.0
LONG = 600.0
SETTINGS_LOCK = "FILE_HXAUXINI_IS_IN_USE"


class Receiver:
    """What the alert manager calls when alerts begin and end."""

    def __init__(self) -> None:
        receiver = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_POST(self) -> None:
                body = json.loads(self.rfile.read(int(self.headers["Content-Length"])))
                for alert in body["alerts"]:
                    key = (alert["labels"]["alertname"], alert["labels"]["instance"])
                    receiver.notified.setdefault(key, set()).add(alert["status"])
                self.send_response(200)
                self.end_headers()

            def log_message(self, *_: object) -> None:
                pass

        self.notified: dict[tuple[str, str], set[str]] = {}
        self.server = http.server.HTTPServer(("127.0.0.1", 0), Handler)
        self.url = f"http://127.0.0.1:{self.server.server_port}/"
        self.thread = threading.Thread(target=self.server.serve_forever)
        self.thread.start()

    def stop(self) -> None:
        self.server.shutdown()
        self.thread.join()
        self.server.server_close()


def alert_manager(folder: pathlib.Path, receiver: Receiver, ended: ExitStack) -> str:
    config = {
        "route": {
            "receiver": "test",
            "group_by": ["alertname", "instance"],
            "group_wait": "1s",
            "group_interval": "1s",
            "repeat_interval": "1h",
        },
        "receivers": [{"name": "test", "webhook_configs": [{"url": receiver.url, "send_resolved": True}]}],
    }
    (folder / "alertmanager.yml").write_text(json.dumps(config), encoding="utf-8")
    program = engine("prometheus-alertmanager")
    assert program is not None
    address = f"127.0.0.1:{free_ports(1)[0]}"
    words = ["--config.file", str(folder / "alertmanager.yml"), "--storage.path", str(folder / "alertmanager")]
    words += ["--web.listen-address", address, "--cluster.listen-address="]
    server = Server(folder, "alertmanager", *at_its_place(program), *words)
    ended.callback(server.stop)
    eventually("the alert manager is ready", lambda: get(f"http://{address}/-/ready"))
    return address


def node_exporter(folder: pathlib.Path, ended: ExitStack) -> tuple[str, pathlib.Path]:
    """Its address, and the folder of its text files."""
    texts = folder / "textfile"
    texts.mkdir()
    program = engine("prometheus-node-exporter")
    assert program is not None
    address = f"127.0.0.1:{free_ports(1)[0]}"
    words = ["--collector.disable-defaults", "--collector.textfile", f"--collector.textfile.directory={texts}"]
    server = Server(folder, "node-exporter", program, *words, f"--web.listen-address={address}")
    ended.callback(server.stop)
    eventually("the node exporter is ready", lambda: get(f"http://{address}/metrics"))
    return address, texts


def cpu_seconds(process: int) -> float:
    """Of a process and its children that have ended."""
    words = pathlib.Path(f"/proc/{process}/stat").read_text(encoding="ascii").rsplit(")", 1)[1].split()
    return sum(map(int, words[11:15])) / os.sysconf("SC_CLK_TCK")


def figures(prometheus: Prometheus, servers: Mapping[str, MetricsServer], seconds: float) -> str:
    """What the fleet costs, measured while nothing else happens."""

    def one(expression: str) -> float:
        return prometheus.query(expression)[0][1]

    pids = [server.process.pid for server in servers.values()]
    before = sum(map(cpu_seconds, pids))
    began = time.monotonic()
    time.sleep(seconds)  # nosleep: what is measured is this time
    spent = (sum(map(cpu_seconds, pids)) - before) / (time.monotonic() - began) * INTERVAL / len(pids)
    rows = {
        "samples of a scrape": one('avg(scrape_samples_scraped{job="hxaux"})'),
        "duration of a scrape at the scraper, seconds": one('avg(scrape_duration_seconds{job="hxaux"})'),
        "its longest, seconds": one('max(scrape_duration_seconds{job="hxaux"})'),
        "processor time of a scrape on the unit, seconds": spent,
        "memory of a unit's server, KiB": memory(pids) / len(pids),
        "memory of Prometheus, KiB": memory([prometheus.process.pid]),
        "series of Prometheus": one("prometheus_tsdb_head_series"),
    }
    return "".join(f"{name}: {value:.6g}\n" for name, value in rows.items())


@dataclasses.dataclass
class Fault:
    unit: str
    alert: str
    begin: Callable[[], object]
    repair: Callable[[], object]

    @property
    def key(self) -> tuple[str, str]:
        return self.alert, self.unit


def faults_of(units: Mapping[str, Unit], servers: dict[str, MetricsServer]) -> list[Fault]:
    """One of every kind, each on a unit of its own."""

    def changed(name: str, alert: str, key: str, bad: object, good: object) -> Fault:
        return Fault(name, alert, lambda: units[name].set(key, bad), lambda: units[name].set(key, good))

    def controlled(name: str, alert: str, begin: str, *repair: str) -> Fault:
        unit = units[name]
        return Fault(
            name, alert, lambda: unit.control(*begin.split()), lambda: [unit.control(*line.split()) for line in repair]
        )

    def server_again() -> None:
        servers["u008"] = MetricsServer(units["u008"], servers["u008"].address)

    lock = units["u005"]
    return [
        changed("u001", "HxauxSupplyOutOfRange", "voltage.0", 12, 24),
        changed("u002", "HxauxTemperatureHigh", "temperature.pm.0", 90, 45),
        changed("u003", "HxauxTemperatureRising", "temperature.pm.0", 84, 45),
        changed("u004", "HxauxHardwareError", "diagnostics.error", 7, 0),
        Fault(
            "u005",
            "HxauxStaleLock",
            lambda: lock.leave_lock(SETTINGS_LOCK),
            lambda: lock.hxaux("locks", "reset", SETTINGS_LOCK),
        ),
        controlled("u006", "HxauxUpgradeInterrupted", "cut ss", "supply off", "supply on"),
        controlled("u007", "HxauxLightSensorStopped", "fail /dev/lightsensor 0x80020048 EIO", "unfail"),
        Fault("u008", "HxauxUnitVanished", lambda: servers["u008"].stop(), server_again),
        controlled("u009", "HxauxDeviceFails", "remove /dev/dig-io", "restore /dev/dig-io"),
    ]


def scrapes_until(prometheus: Prometheus, faults: Sequence[Fault], act: Callable[[Fault], object], fires: bool) -> None:
    """Each alert fires, or is over, after two scrapes of its unit at most."""
    began = {}
    for fault in faults:
        act(fault)
        began[fault.unit] = time.time()
    waiting = {fault.key for fault in faults}
    late = {}

    def look() -> bool:
        firing = prometheus.alerts()
        for key in waiting & firing if fires else waiting - firing:
            waiting.discard(key)
            late[key] = prometheus.scrapes(key[1], began[key[1]])
        return not waiting

    eventually(f"the alerts {'fire' if fires else 'are over'}", look, LONG)
    assert {key: count for key, count in late.items() if count > 2} == {}


def test_a_hundred_units_raise_and_clear_an_alert_for_every_fault(
    tmp_path: pathlib.Path, ended: ExitStack, start: Callable[..., Unit]
) -> None:
    receiver = Receiver()
    ended.callback(receiver.stop)
    manager = alert_manager(tmp_path, receiver, ended)
    node, texts = node_exporter(tmp_path, ended)
    units = {f"u{number:03}": start(f"u{number:03}") for number in range(COUNT)}
    servers = {name: MetricsServer(unit) for name, unit in units.items()}
    ended.callback(lambda: [server.stop() for server in servers.values()])
    addresses = {name: server.address for name, server in servers.items()}
    units["u000"].hxaux("metrics", "--output", str(texts / "hxaux.prom"))
    prometheus = Prometheus(tmp_path, {"hxaux": addresses, "node": {"textfile": node}}, INTERVAL, manager)
    ended.callback(prometheus.stop)
    eventually("all are scraped", lambda: len(prometheus.query('up{job="hxaux"} == 1')) == COUNT, LONG)
    eventually("the text file is there", lambda: prometheus.query('hxaux_info{job="node",serial="U-77-004711"}'), LONG)
    history = 'min(count_over_time(hxaux_temperature_celsius{job="hxaux"}[5m])) >= 5'
    eventually("a history of temperatures", lambda: prometheus.query(history), LONG)
    assert {name for name, _ in prometheus.alerts()} <= {"HxauxMetricsOld"}  # nobody writes the file again
    print(figures(prometheus, servers, 3 * INTERVAL))

    faults = faults_of(units, servers)
    expected = {fault.key for fault in faults}
    scrapes_until(prometheus, faults, lambda fault: fault.begin(), fires=True)
    eventually("they are notified", lambda: expected <= set(receiver.notified), LONG)
    scrapes_until(prometheus, faults, lambda fault: fault.repair(), fires=False)
    eventually("that is notified", lambda: all("resolved" in receiver.notified[key] for key in expected), LONG)
    broken = {fault.unit for fault in faults}
    assert {key for key in receiver.notified if key[1] not in broken and key[0] != "HxauxMetricsOld"} == set()
