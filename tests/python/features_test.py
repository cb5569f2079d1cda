"""The table of features: each test that it names is there, and each option is one of its program."""

import re
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
TABLE = (ROOT / "docs/tools_features.md").read_text()
ROWS = re.findall(r"(?m)^\| (.+) \| `(keld-\w+)(.*)` \| `(.+)::(\w+)` \|$", TABLE)


def test_every_feature_has_a_test_and_a_command():
    lost = []
    for feature, program, words, path, name in ROWS:
        file = ROOT / "tests/python" / path
        if not file.is_file() or f"def {name}(" not in file.read_text():
            lost.append(f"{feature}: no test {path}::{name}")
        page = (ROOT / f"docs/man/{program}.1").read_text().replace("\\-", "-")
        lost += [
            f"{feature}: no {option}" for option in re.findall(r"(?<!\w)--?[a-z][\w-]*", words) if option not in page
        ]

    assert lost == [] and len(ROWS) == len(re.findall(r"(?m)^\| .*::", TABLE)) > 40
