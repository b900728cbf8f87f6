# SPDX-License-Identifier: LicenseRef-HXAux
"""`hxaux metrics --listen` as a process, through real sockets."""
from __future__ import annotations

import pathlib
import signal
import subprocess
import threading
from collections.abc import Callable

import pytest

from fleet import BUILD, PATIENCE, MetricsServer, Unit, eventually, get, rest_of

Serve = Callable[..., MetricsServer]
GET = b"GET /metrics HTTP/1.1\r\nHost: unit\r\n\r\n"


@pytest.fixture
def server(unit: Unit, serve: Serve) -> MetricsServer:
    return serve(unit)


def idle_descriptors(server: MetricsServer) -> int:
    """How many are open when it has served everybody: its client sees the end a moment before it has closed its own."""
    process = pathlib.Path(f"/proc/{server.process.pid}")
    eventually("it sleeps", lambda: "\nState:\tS" in (process / "status").read_text())
    return len(list((process / "fd").iterdir()))


def test_serves_what_the_unit_measures_now(unit: Unit, server: MetricsServer) -> None:
    unit.set("backlight.level", 77)
    first = get(server.url)
    unit.set("backlight.level", 78)

    assert "\nhxaux_backlight_level 77\n" in first
    assert "\nhxaux_backlight_level 78\n" in get(server.url)
    assert 'hxaux_info{serial="U-77-004711"' in first


def test_answers_in_the_format_that_the_scraper_accepts(server: MetricsServer) -> None:
    newer = get(server.url, Accept="application/openmetrics-text;version=1.0.0,text/plain;version=0.0.4;q=0.5")

    assert newer.endswith("\n# EOF\n")
    assert "# TYPE hxaux_power_cycles_total counter\n" in get(server.url, Accept="text/plain")


@pytest.mark.parametrize(
    ("request_line", "status"),
    [
        (b"GET / HTTP/1.1", b"200"),
        (b"HEAD /metrics HTTP/1.1", b"200"),
        (b"GET /etc/passwd HTTP/1.1", b"404"),
        (b"HEAD / HTTP/1.0", b"200"),
        (b"GET / HTTP/1.1\r\nX: \xff\0", b"200"),
        (b"GET /%6detrics HTTP/1.1", b"404"),
        (b"POST /metrics HTTP/1.1", b"405"),
        (b"OPTIONS * HTTP/1.1", b"405"),
        (b"PRI * HTTP/2.0", b"400"),
        (b"DELETE / HTTP/1.1", b"405"),
        (b"\x16\x03\x01\x02", b"400"),
        (b"", b"400"),
        (b"GET /metrics", b"400"),
        (b"GET /metrics HTTP/1.1\r\nX: " + b"a" * 9000, b"431"),
        (b"\0" * 8192, b"431"),
    ],
)
def test_knows_only_get_of_its_pages(server: MetricsServer, request_line: bytes, status: bytes) -> None:
    answer = server.ask(request_line + b"\r\n\r\n")

    assert answer.startswith(b"HTTP/1.1 " + status + b" ")
    assert b"Connection: close\r\n" in answer


def test_a_request_may_arrive_in_pieces(server: MetricsServer) -> None:
    with server.connect() as connection:
        for byte in GET:
            connection.send(bytes([byte]))
        assert rest_of(connection).startswith(b"HTTP/1.1 200 OK\r\n")


def test_a_silent_client_is_ended_and_disturbs_nobody(server: MetricsServer) -> None:
    with server.connect() as silent:
        silent.send(b"GET /met")
        assert "hxaux_info" in get(server.url)
        assert rest_of(silent).startswith(b"HTTP/1.1 408 ")


def test_more_clients_than_it_serves_at_once_wait_for_their_turn(server: MetricsServer) -> None:
    silent = [server.connect() for _ in range(20)]

    assert "hxaux_info" in get(server.url)

    for each in silent:
        each.close()


def test_many_scrapers_cost_the_unit_one_reading_at_a_time(unit: Unit, server: MetricsServer) -> None:
    unit.control("log", "--clear")
    answers: list[str] = []
    threads = [threading.Thread(target=lambda: answers.append(get(server.url))) for _ in range(12)]
    for each in threads:
        each.start()
    for each in threads:
        each.join(PATIENCE)

    assert len(answers) == 12
    assert all("hxaux_light_lux" in each for each in answers)
    opened = [line for line in unit.control("log").splitlines() if "/dev/adc-id open" in line]
    assert 1 <= len(opened) < 12


def test_a_client_that_leaves_early_disturbs_nobody(server: MetricsServer) -> None:
    for _ in range(5):
        connection = server.connect()
        connection.sendall(GET)
        connection.close()

    assert "hxaux_info" in get(server.url)


def test_a_device_that_fails_is_counted_and_the_server_stays(unit: Unit, server: MetricsServer) -> None:
    unit.control("fail", "/dev/adc-id", "get", "EIO")
    failing = get(server.url)
    unit.control("unfail")

    assert 'hxaux_scrape_errors{device="/dev/adc-id"} 8\n' in failing
    assert 'hxaux_scrape_errors{device="/dev/adc-id"} 0\n' in get(server.url)


def test_a_light_sensor_that_never_gets_ready_is_an_error(unit: Unit, server: MetricsServer) -> None:
    unit.set("light.not-ready", 1000000)

    text = get(server.url)

    assert 'hxaux_scrape_errors{device="/dev/lightsensor"} 1\n' in text
    assert "hxaux_light_lux" not in text


def test_keeps_no_descriptor_of_its_scrapes(server: MetricsServer) -> None:
    server.ask(GET)  # it has read the production data
    before = idle_descriptors(server)

    for _ in range(10):
        server.ask(GET)

    assert idle_descriptors(server) == before


def test_looks_for_the_production_data_again_when_they_could_not_be_read(
    start: Callable[..., Unit], serve: Serve
) -> None:
    unit = start("blind", "absent=libjida.so")
    server = serve(unit)

    assert 'hxaux_scrape_errors{device="libjida.so"} 2\n' in get(server.url)


def test_a_busy_port_is_named(server: MetricsServer) -> None:
    done = subprocess.run(
        [BUILD / "hxaux", "metrics", "--listen", server.address], capture_output=True, text=True, check=False
    )

    assert done.returncode == 5
    assert f"{server.address} is in use" in done.stderr


def test_serves_ipv6_as_well(unit: Unit, serve: Serve) -> None:
    if not pathlib.Path("/proc/net/if_inet6").exists() or "lo" not in pathlib.Path("/proc/net/if_inet6").read_text():
        pytest.skip("this machine has no IPv6")
    server = serve(unit, "[::1]:0")

    assert server.url.startswith("http://[::1]:")


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_a_signal_ends_it(unit: Unit, number: signal.Signals) -> None:
    server = MetricsServer(unit)
    get(server.url)

    server.process.send_signal(number)

    assert server.process.wait(PATIENCE) in (-number, 128 + number)
    assert server.process.stdout is not None
    server.process.stdout.close()
