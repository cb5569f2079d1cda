"""The answers of measures as a table for the console and as a CSV. Called by the programs."""

from __future__ import annotations

import csv
import io

from .measures import Answer

COLUMNS = (
    "measure",
    "kind",
    "unit",
    "nominal",
    "moulded",
    "deviation",
    "lower",
    "upper",
    "shrinkage_percent",
    "within",
)
WORDS = {True: "in", False: "OUT", None: "-"}


def cells(answer: Answer) -> list[str]:
    """One row: numbers to a tenth of a micron or of a thousandth of a degree."""
    low, high = answer.measure.tolerance or (None, None)
    number = [answer.nominal, answer.moulded, answer.deviation, low, high]
    shrinkage = "" if answer.shrinkage_percent is None else f"{answer.shrinkage_percent:.3f}"
    return [
        answer.measure.name,
        answer.measure.kind,
        answer.measure.unit,
        *("" if n is None else f"{n:.4f}" for n in number),
        shrinkage,
        WORDS[answer.within],
    ]


def console(answers: list[Answer]) -> str:
    rows = [list(COLUMNS), *map(cells, answers)]
    rows[0][8] = "shrinkage %"
    widths = [max(len(row[i]) for row in rows) for i in range(len(COLUMNS))]
    left = (0, 1, 2, 9)
    lines = [
        "  ".join(c.ljust(w) if i in left else c.rjust(w) for i, (c, w) in enumerate(zip(row, widths))).rstrip()
        for row in rows
    ]
    out = sum(a.within is False for a in answers)
    asked = sum(a.within is not None for a in answers)
    return "\n".join([*lines, f"{asked - out} of {asked} measures within their tolerance" if asked else ""]).rstrip()


def csv_text(answers: list[Answer]) -> str:
    stream = io.StringIO()
    csv.writer(stream, lineterminator="\n").writerows([COLUMNS, *map(cells, answers)])
    return stream.getvalue()
