"""A CSV of values per element, or per point that is mapped onto the elements. Called by fields.

The first row names the columns with their units: element, or x, y and z of a point, and quantities as in the part
file. Cells are parted by commas, semicolons (then a comma may be the decimal sign) or tabs; a blank cell is no value.
"""

from __future__ import annotations

import csv
import io
import math
import warnings
from dataclasses import dataclass
from pathlib import Path

import numpy as np
from scipy.spatial import cKDTree

from ..base import units
from ..base.findings import BadFile, Findings, count_of
from ..meshes import surface
from ..meshes.mesh_input import JobMesh
from ..meshes.raw_mesh import indices_of
from ..part.part_file import FIELDS
from .orientation import TRACE_SLACK, laid_into_walls

DIRECTION = ("fibre_x", "fibre_y", "fibre_z")
PLACE = ("x", "y", "z")
TENSOR = ("a11", "a22", "a33", "a12", "a13", "a23")  # second-order orientation tensor in global axes
KNOWN = {"element": "number", "thickness": "length"} | dict.fromkeys(PLACE, "length")
KNOWN |= dict.fromkeys((*DIRECTION, *TENSOR), "number")
KNOWN |= {name: kind for name, (kind, width) in FIELDS.items() if width == 1}
NEIGHBOURS = 4
FAR = 0.1  # of the part's extent: an element farther than this from all points is worth a warning


@dataclass
class Table:
    """Rows of a CSV that have at least one cell."""

    path: Path
    values: np.ndarray  # (rows, columns) in inside units, nan for a blank cell
    lines: list[int]  # line of each row
    columns: dict[str, int]  # quantity -> column

    def column(self, name: str) -> np.ndarray:
        return self.values[:, self.columns[name]]


def read_values(
    path: Path, mapping: str | None, mesh: JobMesh, findings: Findings, notes: list[str]
) -> dict[str, np.ndarray]:
    """Quantity -> (T,) or (T, 3) over the job's triangles, nan where the CSV has no value.

    mapping: "element", "nearest", "inverse_distance", or None: by number where there is a column element, else by
    the inverse distance of the four nearest points. Empty after a fault.
    """
    table = read_table(path, findings)
    if table is None:
        return {}
    placed = all(name in table.columns for name in PLACE)
    if mapping is None:
        mapping = "element" if "element" in table.columns or not placed else "inverse_distance"
    if mapping == "element" and "element" not in table.columns:
        findings.fault(f"{path}:1", "has no column element, nor x, y and z of points")
        return {}
    if mapping != "element" and not placed:
        findings.fault(f"{path}:1", "has no columns x, y and z (each with its unit: x_mm) to map its points by")
        return {}
    names = [name for name in table.columns if name not in ("element", *PLACE)]
    quantities = as_directions(table, {name: table.column(name) for name in names}, mapping != "element", findings)
    if mapping == "element":
        row = row_of_triangles(table, mesh, findings)
        spread = {name: np.where(_wide(row < 0, v), np.nan, v[row]) for name, v in quantities.items()}
    else:
        spread = by_place(table, quantities, mapping, mesh, findings, notes)
    return laid_into_walls(spread, surface.unit_normals(mesh.points_mm, mesh.triangles))


def _wide(mask: np.ndarray, values: np.ndarray) -> np.ndarray:
    return mask[:, None] if values.ndim == 2 else mask


def read_table(path: Path, findings: Findings) -> Table | None:
    try:
        text = path.read_text(encoding="utf-8-sig")
    except (OSError, UnicodeDecodeError) as error:
        raise BadFile(path, f"can't be read: {error}") from None
    head, _, body = text.partition("\n")
    if not head.strip():
        raise BadFile(path, "is empty; expected a first row with the names of the columns")
    delimiter = max(",;\t", key=head.count)
    titles = next(csv.reader([head], delimiter=delimiter))
    columns = named_columns(titles, path, findings)
    values = plain_numbers(body, delimiter, len(titles))
    if values is not None:
        lines = list(range(2, 2 + len(values)))
    else:
        cells = filled_rows(path, body, delimiter, len(titles), findings)
        values = numbers_of(path, cells, len(titles), delimiter == ";", findings) if cells else None
        lines = [number for number, _ in cells]
    if values is None:
        return None
    for name, (column, unit) in columns.items():
        values[:, column] = units.to_inside(values[:, column], KNOWN[name], unit)
    return Table(path, values, lines, {name: column for name, (column, _) in columns.items()})


def plain_numbers(body: str, delimiter: str, width: int) -> np.ndarray | None:
    """(rows, width) of a table without a blank line or cell, quotes or decimal commas; None of any other."""
    try:
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            values = np.loadtxt(io.StringIO(body), delimiter=delimiter, comments=None, ndmin=2)
    except (ValueError, UserWarning):
        return None
    whole = values.shape == (body.count("\n") + (not body.endswith("\n")), width)
    return values if whole and np.isfinite(values).all() else None


def filled_rows(path: Path, body: str, delimiter: str, width: int, findings: Findings) -> list[tuple[int, list[str]]]:
    """Line and cells of every row that isn't blank; none after a fault."""
    try:
        rows = list(enumerate(csv.reader(io.StringIO(body, newline=""), delimiter=delimiter), 2))
    except csv.Error as error:
        raise BadFile(path, f"can't be read: {error}") from None
    filled = [(number, row) for number, row in rows if any(cell.strip() for cell in row)]
    short = [number for number, row in filled if len(row) != width]
    if not filled:
        findings.fault(str(path), "has no row of values behind the names of the columns")
    if short:
        findings.fault(f"{path}:{short[0]}", f"{count_of(short, 'row')} without the {width} cells of the head")
    return [] if short else filled


def named_columns(head: list[str], path: Path, findings: Findings) -> dict[str, tuple[int, str]]:
    """Quantity -> (column, unit)."""
    columns: dict[str, tuple[int, str]] = {}
    for column, title in enumerate(head):
        for name, kind in KNOWN.items():
            unit = units.split_key(title.strip(), name, kind)
            if unit is not None and unit in units.UNITS[kind]:
                if name in columns:
                    findings.fault(f"{path}:1", f"the column {title.strip()} is given a second time")
                columns[name] = (column, unit)
                break
        else:
            findings.fault(
                f"{path}:1",
                f"the column {title.strip()!r} is not known; expected one of "
                + ", ".join(units.expected(n, k) for n, k in KNOWN.items()),
            )
    return columns


def numbers_of(path: Path, lines: list, width: int, decimal_comma: bool, findings: Findings) -> np.ndarray | None:
    """(rows, width), nan for a blank cell; None after a fault. One pass where every cell is a number."""

    def number(cell: str) -> float:
        cell = cell.strip()
        return float(cell.replace(",", ".") if decimal_comma else cell) if cell else math.nan

    try:
        values = np.array([[number(cell) for cell in row] for _, row in lines]).reshape(-1, width)
        blank = np.isnan(values)
        if np.isfinite(values[~blank]).all() and not any(
            lines[r][1][c].strip() for r, c in zip(*np.nonzero(blank))
        ):  # "nan" as text is no blank
            return values
    except ValueError:
        pass
    for line, row in lines:
        for cell in row:
            try:
                good = not cell.strip() or math.isfinite(number(cell))
            except ValueError:
                good = False
            if not good:
                findings.fault(f"{path}:{line}", f"expected a finite number, found {cell!r}")
                return None
    return None


def row_of_triangles(table: Table, mesh: JobMesh, findings: Findings) -> np.ndarray:
    """(T,) the table's row of each triangle's element, -1 where it has none."""
    numbers = table.column("element")
    index = indices_of(mesh.shell_numbers, numbers)
    if (index < 0).any():
        bad = [f"{n:g}" for n in numbers[index < 0]]
        line = table.lines[int((index < 0).argmax())]
        findings.fault(f"{table.path}:{line}", f"{count_of(bad, 'row')} for elements that the mesh hasn't")
    if len(np.unique(index)) != len(index):
        findings.fault(str(table.path), "an element has two rows")
    row = np.full(len(mesh.shell_numbers), -1)
    row[index[index >= 0]] = np.flatnonzero(index >= 0)
    return row[mesh.source]


def as_directions(
    table: Table, values: dict[str, np.ndarray], averaged: bool, findings: Findings
) -> dict[str, np.ndarray]:
    """Fibre directions as vectors or, where they are to be averaged, as dyads without a sign; tensors as rows of six."""
    place = f"{table.path}:1"
    parts = {name: values.pop(name) for name in (*DIRECTION, *TENSOR) if name in values}
    given, tensor = set(DIRECTION) & set(parts), set(TENSOR) & set(parts)
    if given and len(given) < 3:
        findings.fault(place, "needs all three of fibre_x, fibre_y, fibre_z")
    elif given and not averaged:
        values["fibre_direction"] = np.column_stack([parts[name] for name in DIRECTION])
    elif given:
        values["dyad"] = dyads(table, np.column_stack([parts[name] for name in DIRECTION]), findings)
    if tensor and not {"a11", "a22", "a12"} <= tensor:
        findings.fault(place, "needs a11, a22 and a12 at least for an orientation tensor")
    elif tensor and (given or "orientation" in values):
        findings.fault(place, "gives the orientation twice: as a tensor, and by fibre_x ... or orientation")
    elif tensor:
        values["tensor"] = tensors(table, parts, findings)
    return values


def dyads(table: Table, direction: np.ndarray, findings: Findings) -> np.ndarray:
    length = np.linalg.norm(direction, axis=1)
    if (length == 0).any():
        line = table.lines[int((length == 0).argmax())]
        findings.fault(f"{table.path}:{line}", "has a fibre direction of length 0")
    x, y, z = (direction / np.where(length == 0, 1.0, length)[:, None]).T
    return np.column_stack([x * x, y * y, z * z, x * y, x * z, y * z])


def tensors(table: Table, parts: dict[str, np.ndarray], findings: Findings) -> np.ndarray:
    """(rows, 6) in the order of TENSOR; a33 completes the trace, the others are 0 where the file hasn't them."""
    nothing = np.zeros(len(table.lines))
    parts.setdefault("a33", 1.0 - parts["a11"] - parts["a22"])
    rows = np.column_stack([parts.get(name, nothing) for name in TENSOR])
    trace = rows[:, :3].sum(axis=1)
    bad = np.abs(trace - 1.0) > TRACE_SLACK
    if bad.any():
        at = int(bad.argmax())
        text = f"a11 + a22 + a33 of an orientation tensor is 1, found {trace[at]:g}"
        findings.fault(f"{table.path}:{table.lines[at]}", text)
    return rows


def by_place(
    table: Table, quantities: dict[str, np.ndarray], mapping: str, mesh: JobMesh, findings: Findings, notes: list[str]
) -> dict[str, np.ndarray]:
    """Values at the triangles' centres from the nearest point, or weighted by 1 / distance of the four nearest."""
    points = np.column_stack([table.column(name) for name in PLACE])
    if np.isnan(points).any():
        line = table.lines[int(np.isnan(points).any(axis=1).argmax())]
        findings.fault(f"{table.path}:{line}", "has a point without its x, y or z")
        return {}
    centres = mesh.points_mm[mesh.triangles].mean(axis=1)
    result, farthest, near = {}, 0.0, {}
    for name, values in quantities.items():
        known = ~(np.isnan(values) if values.ndim == 1 else np.isnan(values).any(axis=1))
        if not known.any() or not len(centres):
            result[name] = np.full((len(centres), *values.shape[1:]), np.nan)
            continue
        if known.tobytes() not in near:  # quantities are mostly known at the same points
            near[known.tobytes()] = nearest(points[known], centres, mapping, mesh.extent_mm)
        distance, index, weight = near[known.tobytes()]
        result[name] = np.einsum("ij,ij...->i...", weight, values[known][index])
        farthest = max(farthest, float(distance.max()))
    notes.append(
        f"{len(points)} points of {table.path.name} mapped by "
        f"{'the nearest point' if mapping == 'nearest' else 'inverse distance of four'}; the greatest distance of an "
        f"element from its nearest point is {farthest:.4g} mm"
    )
    if farthest > FAR * mesh.extent_mm:
        findings.warn(
            str(table.path),
            f"an element lies {farthest:.4g} mm from the nearest point, of a part of {mesh.extent_mm:.4g} mm; are place and "
            "length unit those of the mesh?",
        )
    return result


def nearest(
    points: np.ndarray, centres: np.ndarray, mapping: str, extent: float
) -> tuple[np.ndarray, np.ndarray, np.ndarray]:
    """Per centre: distance of the nearest point (T,), the points taken (T, k), and their weights (T, k)."""
    count = min(NEIGHBOURS, len(points)) if mapping == "inverse_distance" else 1
    distance, index = cKDTree(points).query(centres, count)
    distance, index = distance.reshape(-1, count), index.reshape(-1, count)
    weight = 1.0 / np.maximum(distance, 1e-9 * extent)
    return distance[:, 0], index, weight / weight.sum(axis=1, keepdims=True)
