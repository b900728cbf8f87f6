# SPDX-License-Identifier: LicenseRef-HXAux
"""A unit, the panel's server and the page in a browser, as the tests use them."""
from __future__ import annotations

import json
import os
import pathlib
import signal
import subprocess

from selenium.common.exceptions import ElementClickInterceptedException, StaleElementReferenceException
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.remote.webdriver import WebDriver
from selenium.webdriver.remote.webelement import WebElement

PATIENCE = int(os.environ.get("HX_PATIENCE", "60"))  # seconds, of whatever is waited for
SIM = os.environ.get("HX_SIM", "hx-sim")
PANEL = os.environ.get("HX_PANEL", "hx-panel")


def run(*words: str) -> str:
    return subprocess.run(words, check=True, capture_output=True, text=True, timeout=PATIENCE).stdout


class Unit:
    """A simulated unit in the background."""

    def __init__(self, name: str, *options: str) -> None:
        self.name = name
        self.start(*options)

    def start(self, *options: str) -> None:
        run(SIM, "start", self.name, *options)

    def stop(self) -> None:
        run(SIM, "stop", self.name)

    def get(self, name: str) -> str:
        return run(SIM, "get", name, "--unit", self.name).rstrip("\n")

    def set(self, name: str, value: str) -> None:
        run(SIM, "set", name, value, "--unit", self.name)

    def do(self, *words: str) -> None:
        run(SIM, *words, "--unit", self.name)

    def wait(self, *condition: str) -> None:
        """Until the unit is so; the time that it may take is long, so that a slow machine is no failure."""
        run(SIM, "wait", *condition, "--timeout", f"{PATIENCE - 10}s", "--unit", self.name)

    def hxaux(self, *words: str) -> str:
        """What a program on the unit reads."""
        return run(SIM, "run", "--unit", self.name, "--", "hxaux", *words)

    def begin(self, *words: str) -> subprocess.Popen[str]:
        """A program on the unit that is still running."""
        command = [SIM, "run", "--unit", self.name, "--", *words]
        return subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    def properties(self) -> dict[str, dict]:
        return json.loads(run(SIM, "properties", "--json", "--unit", self.name))


class Server:
    """hx-panel on a port of its own."""

    def __init__(self, *options: str, port: int = 0, before: list[str] | None = None) -> None:
        self.options = options
        self.before = before or []  # what runs it
        self.port = port
        self.start()

    def start(self) -> None:
        command = [*self.before, PANEL, "--listen", f"127.0.0.1:{self.port}", *self.options]
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        assert self.process.stdout
        self.url = self.process.stdout.readline().strip()
        assert self.url.startswith("http://"), "hx-panel has not printed its address"
        self.port = int(self.url.rstrip("/").rsplit(":", 1)[1])

    def stop(self) -> None:
        self.process.send_signal(signal.SIGTERM)
        self.process.wait(PATIENCE)
        assert self.process.stdout
        self.process.stdout.close()


class Page:
    """The page, in the words of a user."""

    def __init__(self, browser: WebDriver) -> None:
        self.browser = browser

    def open(self, url: str, unit: str = "") -> None:
        self.browser.get("about:blank")
        self.browser.get(f"{url}#{unit}")

    def open_live(self, url: str, unit: str) -> None:
        self.open(url, unit)
        self.until_live()

    def until_live(self) -> None:
        self.until("return document.body.dataset.status === 'live'")
        self.until("return document.querySelector('#properties tbody tr') !== null")

    def until(self, body: str, *values: object) -> object:
        """Looks at every frame until the function's body returns something true."""
        script = f"""
            const done = arguments[arguments.length - 1];
            const seen = function () {{ {body} }};
            const look = () => {{
                const got = seen.apply(null, arguments);
                got ? done(got) : requestAnimationFrame(look);
            }};
            look();"""
        return self.browser.execute_async_script(script, *values)

    def js(self, body: str, *values: object):
        return self.browser.execute_script(body, *values)

    def find(self, selector: str) -> WebElement:
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def all(self, selector: str) -> list[WebElement]:
        return self.browser.find_elements(By.CSS_SELECTOR, selector)

    def text(self, selector: str) -> str:
        return self.find(selector).get_property("textContent")

    def control(self, name: str) -> WebElement:
        """The control of a property."""
        return self.find(f'.row[data-property="{name}"] :is(input, select, output)')

    def button(self, text: str, inside: str = "body") -> WebElement:
        element = self.js(
            """return [...document.querySelectorAll(arguments[0])].find((each) =>
                (each.getAttribute('aria-label') ?? each.textContent) === arguments[1])""",
            f"{inside} button",
            text,
        )
        assert element, f"there is no button '{text}'"
        return element

    def click(self, element: WebElement) -> None:
        """As a user does, who looks again when the page has moved under the pointer."""
        for _ in range(20):
            self.until_it_rests(element)
            self.js(
                """const [element] = arguments;
                delete element.dataset.clicked;
                element.addEventListener('click', () => { element.dataset.clicked = true; }, {once: true, capture: true});""",
                element,
            )
            try:
                element.click()
                if self.js("return arguments[0].dataset.clicked", element):
                    return
            except ElementClickInterceptedException:
                pass
            except StaleElementReferenceException:
                return  # the click has removed it
        raise AssertionError("the page moves at each click")

    def until_it_rests(self, element: WebElement) -> None:
        self.until(
            """const [element] = arguments;
            element.scrollIntoView({block: 'center'});
            const at = element.getBoundingClientRect().top;
            const rests = Number(element.dataset.top) === at;
            element.dataset.top = at;
            return rests;""",
            element,
        )

    def type(self, element: WebElement, text: str) -> None:
        """Replaces what a field has, and presses Enter."""
        self.js("arguments[0].scrollIntoView({block: 'center'}); arguments[0].select()", element)
        element.send_keys(text, Keys.ENTER)

    def choose(self, element: WebElement, value: str) -> None:
        self.click(element)
        self.js(
            "arguments[0].value = arguments[1]; arguments[0].dispatchEvent(new Event('change', {bubbles: true}))",
            element,
            value,
        )

    def slide(self, element: WebElement, value: int) -> None:
        self.js(
            "arguments[0].value = arguments[1]; arguments[0].dispatchEvent(new Event('input', {bubbles: true}))",
            element,
            value,
        )

    def log(self) -> list[str]:
        """The visible rows of the list of requests."""
        return [row.get_property("textContent") for row in self.all("#log-list [role=option]:not([hidden])")]

    def picture(self, path: pathlib.Path, width: int, height: int) -> None:
        self.resize(width, height)
        self.until("return [...document.querySelectorAll('canvas')].every((each) => each.width === each.clientWidth)")
        self.browser.save_screenshot(str(path))

    def resize(self, width: int, height: int) -> None:
        size = {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False}
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", size)
        self.until("return window.innerWidth === arguments[0]", width)

    def theme(self, name: str) -> None:
        features = [{"name": "prefers-color-scheme", "value": name}]
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": features})
