"""Reading .WR1: displacement and sink mark per geometry node, in mm. Called by view_cli."""

from __future__ import annotations

import re
from dataclasses import dataclass
from pathlib import Path

import numpy as np

from ..base.findings import BadFile
from .geometry_file import numbers_of, text_of


@dataclass
class Results:
    """Row i belongs to geometry node i + 1."""

    total_mm: np.ndarray  # (N, 3)
    length_mm: np.ndarray  # (N,) of the total displacement
    sink_mm: np.ndarray  # (N,)
    thermal_mm: np.ndarray  # (N, 3)
    in_mold_mm: np.ndarray | None  # (N, 3); None in a run without usable stress


def section(path: Path, text: str, tag: str, width: int) -> np.ndarray | None:
    """(N, width) rows of a section without their numbers; None when the file hasn't its tag."""
    head = re.search(r"^\[" + tag + r"\][^\n]*\n[^\n]*Glength=[ ]*(\d+)[^\n]*Item=[ ]*(\d+)[^\n]*\n", text, re.M)
    if not head:
        if f"[{tag}]" in text:
            raise BadFile(path, f"the section [{tag}] has no line with Glength and Item")
        return None
    count, items = int(head[1]), int(head[2])
    end = text.find("[EOF]", head.end())
    if end < 0:
        raise BadFile(path, f"the section [{tag}] doesn't end with [EOF]: the file is cut off")
    lines = text[head.end() : end].rstrip("\n").split("\n")[items:]
    first = text.count("\n", 0, head.end()) + 1 + items
    if items != width or len(lines) != count:
        raise BadFile(
            path, f"the section [{tag}] has {len(lines)} rows for {items} columns, expected {count} for {width}"
        )
    values = numbers_of(path, lines, first, f"[{tag}]")
    if len(values) != count * (width + 1):
        raise BadFile(
            path, f"the section [{tag}] has {len(values)} numbers, expected {count} rows of {width + 1}", first
        )
    values = values.reshape(count, width + 1)
    if (values[:, 0] != np.arange(1, count + 1)).any():
        at = int((values[:, 0] != np.arange(1, count + 1)).argmax())
        raise BadFile(path, f"expected row {at + 1} of [{tag}]", first + at)
    return values[:, 1:]


def read_results(path: Path, nodes: int) -> Results:
    """The results of a run on a mesh of `nodes` nodes. Raises BadFile when they are damaged or of another mesh."""
    text = text_of(path)
    main = section(path, text, "Keld_ResultsStr", 5)
    if main is None:
        raise BadFile(path, "has no section [Keld_ResultsStr]")
    if len(main) != nodes:
        raise BadFile(path, f"has results of {len(main)} nodes, the mesh has {nodes}: they belong to another mesh")
    in_mold = section(path, text, "Keld_Residual_ResultsStr", 4)
    thermal = section(path, text, "Keld_Thermal_ResultsStr", 4)
    if thermal is None:
        raise BadFile(path, "has no section [Keld_Thermal_ResultsStr]: the file is cut off")
    for name, block in (("Keld_Residual_ResultsStr", in_mold), ("Keld_Thermal_ResultsStr", thermal)):
        if block is not None and len(block) != nodes:
            raise BadFile(path, f"[{name}] has {len(block)} rows, expected {nodes}")
    return Results(main[:, :3], main[:, 3], main[:, 4], thermal[:, :3], None if in_mold is None else in_mold[:, :3])
