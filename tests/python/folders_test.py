"""The folders of the package import from lower ones only, in the order of the table in docs/tools.md."""

import re
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


def test_folders_look_down():
    table = (ROOT / "docs/tools.md").read_text().split("## The package")[1]
    order = re.findall(r"^\| `(\w+)` \|", table, re.M)
    upward = [
        f"{path.relative_to(ROOT)}: {other}"
        for path in (ROOT / "python/keld_tools").glob("*/*.py")
        for other in re.findall(r"^\s*from \.\.(\w+)[. ]", path.read_text(), re.M)
        if order.index(other) > order.index(path.parent.name)
    ]

    assert len(order) == 9 and upward == []
