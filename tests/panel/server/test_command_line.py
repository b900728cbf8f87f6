# SPDX-License-Identifier: LicenseRef-HXAux
"""The words of the program."""
from __future__ import annotations

import pytest

from panel import BUILD, programs


class TestUsage:
    @pytest.mark.parametrize(
        "words, problem",
        [
            (["--unti", "x"], "there is no option '--unti'; did you mean '--unit'?"),
            (["--listen", "8460"], "'8460' is not an address such as 127.0.0.1:8080"),
            (["--listen", "127.0.0.1:99999"], "is not an address"),
            (["--listen", "127.0.0.1:+1"], "is not an address"),
            (["--listen", "example.org:80"], "is not an address"),
            (["--listen", "[::1:80"], "is not an address"),
            (["--listen", "127.0.0.1:0", "--listen", "127.0.0.1:1"], "is given twice"),
            (["--listen"], "needs a value"),
            (["--unit", "../x"], "a unit's name is made of"),
            (["serv"], "there is no command 'serv'; did you mean 'serve'?"),
            (["serve", "bench"], "too many arguments: 'bench'; usage: hx-panel [OPTIONS]"),
            (["--listen", "192.0.2.1:0"], "the panel needs a token"),
        ],
    )
    def test_error_names_the_mistake(self, words: list[str], problem: str) -> None:
        refused = programs(words)
        assert (refused.returncode, refused.stdout) == (2, "")
        assert refused.stderr.startswith("hx-panel: ")
        assert problem in refused.stderr
        assert refused.stderr.count("\n") == 1

    def test_unit_that_is_not_running_is_named_with_the_nearest(self, unit: str) -> None:
        refused = programs(["--listen", "127.0.0.1:0", "--unit", "bnech"])
        assert refused.returncode == 6
        assert refused.stderr == "hx-panel: no unit named 'bnech' is running; did you mean 'bench'?\n"

    def test_address_of_another_machine_cannot_be_used(self, token: object) -> None:
        refused = programs(["--listen", "192.0.2.1:0", "--token-file", str(token)])
        assert refused.returncode == 1
        assert "cannot listen at 192.0.2.1:0" in refused.stderr


class TestInformation:
    def test_help_lists_the_options(self) -> None:
        text = programs(["--help"]).stdout
        for option in ("--unit", "--real", "--listen", "--read-only", "--token-file"):
            assert option in text
        assert "Exit statuses" in text

    def test_version_and_manual_exist(self) -> None:
        assert programs(["--version"]).stdout.startswith("hx-panel ")
        assert programs(["--man"]).stdout.startswith('.\\" Made')
        assert (BUILD / "hx-panel.1").read_text(encoding="utf-8") == programs(["--man"]).stdout

    def test_completion_offers_options_and_units(self, unit: str) -> None:
        def offered(*words: str) -> list[str]:
            lines = programs(["completion", "words", "--", *words]).stdout.splitlines()
            return [line.partition("\t")[0] for line in lines]

        assert offered("--re") == ["--read-only", "--real"]
        assert offered("--unit", "") == ["bench"]
        assert "--token-file" in offered("--real", "--")
