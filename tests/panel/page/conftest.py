# SPDX-License-Identifier: LicenseRef-HXAux
"""One browser for all tests; units and servers of a folder of their own."""
from __future__ import annotations

import os
import pathlib
import shutil
import tempfile
from collections.abc import Iterator

import pytest
from selenium import webdriver
from selenium.webdriver.chrome.service import Service

from panel import PATIENCE, Page, Server, Unit


@pytest.fixture(scope="session", autouse=True)
def runtime() -> Iterator[pathlib.Path]:
    """Units of nobody else; a short path, because sockets are below it."""
    folder = pathlib.Path(tempfile.mkdtemp(prefix="hxp", dir="/tmp"))
    before = os.environ.get("XDG_RUNTIME_DIR")
    os.environ["XDG_RUNTIME_DIR"] = str(folder)
    yield folder
    shutil.rmtree(folder, ignore_errors=True)
    if before is None:
        del os.environ["XDG_RUNTIME_DIR"]
    else:
        os.environ["XDG_RUNTIME_DIR"] = before


@pytest.fixture(scope="session")
def downloads(tmp_path_factory: pytest.TempPathFactory) -> pathlib.Path:
    return tmp_path_factory.mktemp("downloads")


@pytest.fixture(scope="session")
def browser(runtime: pathlib.Path, downloads: pathlib.Path) -> Iterator[webdriver.Chrome]:
    options = webdriver.ChromeOptions()
    for word in (
        "--headless=new",
        "--no-sandbox",
        "--disable-gpu",
        "--disable-dev-shm-usage",
        "--window-size=1280,1000",
    ):
        options.add_argument(word)
    options.add_argument("--autoplay-policy=no-user-gesture-required")
    options.add_experimental_option("prefs", {"download.default_directory": str(downloads)})
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    environment = {**os.environ, "TMPDIR": str(runtime)}  # the browser does not remove all of its folders
    driver = webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver", env=environment))
    driver.set_script_timeout(PATIENCE)
    driver.set_page_load_timeout(PATIENCE)
    yield driver
    driver.quit()


@pytest.fixture(scope="module")
def unit() -> Iterator[Unit]:
    unit = Unit("unit-1")
    yield unit
    unit.stop()


@pytest.fixture(scope="module")
def server(unit: Unit) -> Iterator[Server]:
    server = Server()
    yield server
    server.stop()


@pytest.fixture
def page(browser: webdriver.Chrome) -> Iterator[Page]:
    page = Page(browser)
    page.resize(1280, 1000)
    page.theme("light")
    browser.get_log("browser")
    yield page
    problems = [entry["message"] for entry in browser.get_log("browser") if entry["level"] == "SEVERE"]
    browser.get("about:blank")
    expected = ("net::ERR", " 401 ", " 404 ", " 502 ")  # servers and units stop while the page asks them
    assert [each for each in problems if not any(text in each for text in expected)] == []


@pytest.fixture
def live(page: Page, server: Server, unit: Unit) -> Page:
    """The page of a running unit."""
    page.open_live(server.url, unit.name)
    return page
