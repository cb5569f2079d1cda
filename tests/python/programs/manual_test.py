"""Each program tells its options by --help, has a manual page that tells the same ones, and is short."""

import re
from pathlib import Path

import pytest
from keld_tools.programs import job_cli, study_cli, view_options

ROOT = Path(__file__).resolve().parents[3]
ARGUMENTS = {"keld-job": job_cli.arguments, "keld-study": study_cli.arguments, "keld-view": view_options.arguments}


@pytest.mark.parametrize("program", ARGUMENTS)
def test_the_manual_page_tells_every_option_of_help_and_no_other(program, capsys):
    with pytest.raises(SystemExit) as ended:
        ARGUMENTS[program](["--help"])
    told = re.findall(r"(?<![\w-])--?[a-z][\w-]*", capsys.readouterr().out.split("\noptions:")[1])

    page = (ROOT / f"docs/man/{program}.1").read_text().replace("\\-", "-")
    heads = re.findall(r"(?m)^\.TP\n(.*)$", page.split(".SH OPTIONS")[1].split(".SH ")[0])
    explained = re.findall(r"(?<![\w-])--?[a-z][\w-]*", " ".join(heads))

    assert ended.value.code == 0 and len(told) > 5
    assert set(explained) | {"-h"} == set(told)


def test_programs_are_short():
    lines = {path.name: path.read_text().count("\n") for path in (ROOT / "python/keld_tools/programs").glob("*.py")}
    lines |= {name: (ROOT / "python" / name).read_text().count("\n") for name in ARGUMENTS}

    assert len(lines) >= 7 and max(lines.values()) < 200, lines
