# SPDX-License-Identifier: LicenseRef-HXAux
"""Alerts and dashboard: what they say, and that what they name exists."""
from __future__ import annotations

import json
import pathlib
import re

import yaml

from fleet import RULES, SOURCE, Unit, engine, metric_names, names_in, run

DASHBOARD = RULES.parent / "hxaux-dashboard.json"
UPGRADE = SOURCE / "packaging/ansible/roles/hxaux_upgrade/templates/hxaux_upgrade.prom.j2"


def expressions() -> dict[str, list[str]]:
    """Of alerts and recorded metrics."""
    rules = [rule for group in yaml.safe_load(RULES.read_text(encoding="utf-8"))["groups"] for rule in group["rules"]]
    return {
        "alert": [rule["expr"] for rule in rules if "alert" in rule],
        "record": [rule["expr"] for rule in rules if "record" in rule],
        "recorded": [rule["record"] for rule in rules if "record" in rule],
    }


def existing(unit: Unit) -> set[str]:
    """Everything that a unit, the rules and the rolling upgrade publish."""
    upgrade = metric_names(UPGRADE.read_text(encoding="utf-8"))
    return metric_names(unit.hxaux("metrics").stdout) | set(expressions()["recorded"]) | upgrade


def promtool(*words: str | pathlib.Path) -> str:
    program = engine("promtool")
    assert program is not None
    done = run(program, *words, check=False)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


def test_the_rules_are_rules() -> None:
    assert "SUCCESS" in promtool("check", "rules", RULES)


def test_the_alerts_pass_their_unit_tests() -> None:
    assert "SUCCESS" in promtool("test", "rules", RULES.with_name("hxaux.rules.test.yml"))


def test_every_alert_has_a_unit_test_that_fires() -> None:
    tests = yaml.safe_load(RULES.with_name("hxaux.rules.test.yml").read_text(encoding="utf-8"))["tests"]
    fired = {each["alertname"] for test in tests for each in test["alert_rule_test"] if each.get("exp_alerts")}
    alerts = set(re.findall(r"- alert: (\w+)", RULES.read_text(encoding="utf-8")))

    assert alerts == fired


def test_every_metric_that_an_alert_names_exists(unit: Unit) -> None:
    named = names_in(expressions()["alert"] + expressions()["record"])

    assert named
    assert named <= existing(unit)


def test_every_metric_that_the_dashboard_shows_exists(unit: Unit) -> None:
    board = json.loads(DASHBOARD.read_text(encoding="utf-8"))
    targets = [target["expr"] for panel in board["panels"] for target in panel["targets"]]
    named = names_in(targets + [each["definition"] for each in board["templating"]["list"] if "definition" in each])

    assert len(targets) == len({(target) for target in targets})
    assert named <= existing(unit)


def test_the_dashboard_shows_every_metric(unit: Unit) -> None:
    board = DASHBOARD.read_text(encoding="utf-8")

    assert [
        name for name in sorted(existing(unit)) if name not in board and not name.endswith("timestamp_seconds")
    ] == []


def test_the_panels_of_the_dashboard_do_not_overlap() -> None:
    board = json.loads(DASHBOARD.read_text(encoding="utf-8"))
    cells = [
        (place["x"] + column, place["y"] + line)
        for place in (panel["gridPos"] for panel in board["panels"])
        for column in range(place["w"])
        for line in range(place["h"])
    ]

    assert len(cells) == len(set(cells))
    assert max(column for column, _ in cells) < 24
