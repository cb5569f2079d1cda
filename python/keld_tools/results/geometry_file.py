"""Reading .PG1 and the per-element files that belong to it, as keld reads them. Called by view_cli and compensate."""

from __future__ import annotations

import warnings
from dataclasses import dataclass, field
from pathlib import Path

import numpy as np

from ..base.findings import BadFile, Findings
from ..base.units import CM_PER_MM, DYN_CM2_PER_MPA


@dataclass
class PartGeometry:
    """Indices from 0; triangles and runners in the file's order."""

    path: Path
    points_mm: np.ndarray  # (N, 3) by node number
    triangles: np.ndarray  # (T, 3)
    triangle_numbers: np.ndarray  # (T,) element numbers of the file
    thickness_mm: np.ndarray  # (T,)
    runners: np.ndarray  # (R, 2)
    runner_numbers: np.ndarray  # (R,)
    diameter_mm: np.ndarray  # (R,)
    gates: np.ndarray  # node indices
    element_nodes: np.ndarray  # (E, 3) by element number, 0-based; third -1 for a runner
    cell_data: dict[str, np.ndarray] = field(default_factory=dict)  # name with unit -> (T,) or (T, 3)


def text_of(path: Path) -> str:
    try:
        return path.read_bytes().decode("utf-8", errors="replace").replace("\r\n", "\n")
    except OSError as error:
        raise BadFile(path, f"can't be read: {error.strerror}") from None


def after_title(path: Path, text: str) -> int:
    """Place behind the title block's last line. Raises BadFile where the block isn't in order."""
    close = text.find("*/")
    if close < 0 or not 0 <= text.find("/*") < text.find("\n", close) % (len(text) + 1):
        raise BadFile(path, "has no title block /* ... */ at its start")
    end = text.find("\n", close)
    return len(text) if end < 0 else end + 1


def numbers_of(path: Path, lines: list[str], first_line: int, what: str) -> np.ndarray:
    """All numbers of some lines, in one go. Raises BadFile with the line of the first that is none, or not finite."""
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        try:
            values = np.fromstring(" ".join(lines), sep=" ")
            if np.isfinite(values).all():
                return values
        except (DeprecationWarning, ValueError):
            pass
    for number, line in enumerate(lines, first_line):
        for word in line.split():
            try:
                good = np.isfinite(float(word))
            except ValueError:
                good = False
            if not good:
                raise BadFile(path, f"expected a finite number in {what}, found {word[:40]!r}", number)
    raise BadFile(path, f"the numbers of {what} can't be read", first_line)


def table(path: Path, lines: list[str], first_line: int, widths: set[int], what: str) -> np.ndarray:
    """(n, greatest width) of lines with one record each; a field that a record hasn't is nan."""
    counts = np.array([len(line.split()) for line in lines], np.int64)
    bad = ~np.isin(counts, list(widths))
    if bad.any():
        at = int(bad.argmax())
        wanted = " or ".join(map(str, sorted(widths)))
        raise BadFile(path, f"{what} has {counts[at]} fields, expected {wanted}", first_line + at)
    flat = numbers_of(path, lines, first_line, what)
    width = max(widths)
    result = np.full((len(lines), width), np.nan)
    result[np.arange(width) < counts[:, None]] = flat
    return result


def permuted(path: Path, numbers: np.ndarray, what: str, first_line: int) -> np.ndarray:
    """Record numbers as integers 1..n, each once."""
    index = numbers.astype(np.int64)
    seen = np.zeros(len(index) + 1, bool)
    inside = (index == numbers) & (index >= 1) & (index <= len(index))
    seen[index[inside]] = True
    if not inside.all() or not seen[1:].all():
        at = int((~inside).argmax()) if not inside.all() else 0
        raise BadFile(path, f"{what} numbers must be 1 to {len(index)}, each once", first_line + at)
    return index


def read_geometry(path: Path) -> PartGeometry:
    """The mesh of a .PG1. Raises BadFile naming the line of the first fault."""
    text = text_of(path)
    start = after_title(path, text)
    line_no = text.count("\n", 0, start) + 1
    lines = text[start:].split("\n")
    head = numbers_of(path, lines[:1], line_no, "the header")
    if len(head) != 4 or head[0] != int(head[0]) or head[1] != int(head[1]) or min(head) <= 0:
        raise BadFile(
            path, "expected element count, node count, thickness factor and coordinate factor, all above 0", line_no
        )
    count, nodes = int(head[0]), int(head[1])
    if len(lines) < 1 + count + nodes:
        raise BadFile(
            path, f"ends too early: {count} elements and {nodes} nodes are announced, " f"{len(lines) - 1} lines follow"
        )
    elements = table(path, lines[1 : 1 + count], line_no + 1, {8, 9}, "an element record")
    node_line = line_no + 1 + count
    points = table(path, lines[1 + count : 1 + count + nodes], node_line, {5, 10}, "a node record")
    numbers = permuted(path, elements[:, 0], "element", line_no + 1)
    order = permuted(path, points[:, 0], "node", node_line) - 1
    corners = elements[:, 1:4].astype(np.int64)
    low = np.array([1, 1, 0])
    bad = ((corners != elements[:, 1:4]) | (corners < low) | (corners > nodes)).any(axis=1)
    if bad.any():
        raise BadFile(path, f"an element has a node that isn't 1 to {nodes}", line_no + 1 + int(bad.argmax()))
    xyz = np.empty((nodes, 3))
    xyz[order] = points[:, 1:4] * head[3] / CM_PER_MM
    runner = corners[:, 2] == 0
    thickness = elements[:, 4] * head[2] / CM_PER_MM
    by_number = np.empty((count, 3), np.int64)
    by_number[numbers - 1] = corners - 1
    gates = order[points[:, 4] > 0]
    return PartGeometry(
        path,
        xyz,
        corners[~runner] - 1,
        numbers[~runner],
        thickness[~runner],
        corners[runner, :2] - 1,
        numbers[runner],
        thickness[runner],
        gates,
        by_number,
    )


def read_prior(base: Path, part: PartGeometry, findings: Findings) -> None:
    """Stress, directions and temperatures of .RS1, .PT1 or .CT1 as cell data; a file that doesn't fit is told."""
    for suffix, use in ((".RS1", use_stress), (".PT1", use_temperature), (".CT1", use_temperature)):
        path = Path(f"{base}{suffix}")
        if not path.is_file() or suffix == ".CT1" and any("temperature" in name for name in part.cell_data):
            continue
        try:
            use(path, part, {".RS1": 15, ".PT1": 2, ".CT1": 3}[suffix])
        except BadFile as error:
            findings.warnings.append(f"{error}; left out of the result")


def prior_records(path: Path, part: PartGeometry, width: int) -> np.ndarray:
    """(E, width) of a per-element file with as many records as the mesh has elements."""
    text = text_of(path)
    start = after_title(path, text)
    lines = text[start:].rstrip().split("\n")
    if len(lines) != len(part.element_nodes):
        raise BadFile(path, f"has {len(lines)} records, the mesh {len(part.element_nodes)} elements")
    records = table(path, lines, text.count("\n", 0, start) + 1, {width}, "a record")
    if (records[:, 0] < 1).any() or (records[:, 0] > len(lines)).any():
        raise BadFile(path, f"an element number isn't 1 to {len(lines)}")
    return records


def kept_rows(records: np.ndarray, kept: np.ndarray, part: PartGeometry, path: Path) -> np.ndarray:
    rows = records[kept]
    if len(rows) < len(part.triangles):
        raise BadFile(path, f"has {len(rows)} records of triangles, the mesh has {len(part.triangles)}")
    return rows[: len(part.triangles)]


def use_stress(path: Path, part: PartGeometry, width: int) -> None:
    records = prior_records(path, part, width)
    rows = kept_rows(records, part.element_nodes[records[:, 0].astype(np.int64) - 1, 2] >= 0, part, path)
    part.cell_data |= {
        "stress1_MPa": rows[:, 1] / DYN_CM2_PER_MPA,
        "stress2_MPa": rows[:, 2] / DYN_CM2_PER_MPA,
        "kind_fraction": rows[:, 4],
        "orientation": rows[:, 5],
        "fibre_direction": rows[:, 6:9].copy(),
    }


def use_temperature(path: Path, part: PartGeometry, width: int) -> None:
    """keld looks for runners of .PT1 in its compact table, where the first places hold triangles alone."""
    records = prior_records(path, part, width)
    number = records[:, 0].astype(np.int64)
    kept = part.element_nodes[number - 1, 2] >= 0
    if width == 2:
        kept |= number <= len(part.triangles)
    rows = kept_rows(records, kept, part, path)
    part.cell_data |= {"temperature_lower_C": rows[:, -1].copy(), "temperature_upper_C": rows[:, 1].copy()}
