"""Per-element values of a job: one value, cell data of the mesh, a CSV, property cards, groups.

Called by job_cli after the mesh is built. Every fault names the place that gave the value.
"""

from __future__ import annotations

import csv
import math
from pathlib import Path

import numpy as np

from ..base import units
from ..base.findings import BadFile, Findings, count_of
from ..meshes.mesh_input import JobMesh
from ..meshes.raw_mesh import indices_of
from ..part.part_file import FIELDS, FieldRequest, Part

DIRECTION = ("fibre_x", "fibre_y", "fibre_z")
PERPENDICULAR = 1e-3  # a direction whose part in the element's plane is shorter counts as perpendicular


def read_csv(path: Path, mesh: JobMesh, findings: Findings) -> dict[str, np.ndarray]:
    """Columns of a CSV by quantity: (S,) arrays over the file's shell elements, nan where no row gives a value.

    The first row names the columns: element, and quantities with their unit as in the part file.
    """
    try:
        with open(path, newline="", encoding="utf-8-sig") as file:
            rows = list(csv.reader(file))
    except (OSError, UnicodeDecodeError, csv.Error) as error:
        raise BadFile(path, f"can't be read: {error}") from None
    if not rows:
        raise BadFile(path, "is empty; expected a first row with the names of the columns")
    columns = csv_columns(rows[0], path, findings)
    if "element" not in columns:
        findings.fault(f"{path}:1", "has no column element")
        return {}
    lines = [(number, row) for number, row in enumerate(rows[1:], 2) if any(cell.strip() for cell in row)]
    short = [number for number, row in lines if len(row) != len(rows[0])]
    if short:
        findings.fault(f"{path}:{short[0]}", f"{count_of(short, 'row')} without the {len(rows[0])} cells of the head")
        return {}
    values = csv_numbers(path, lines, len(rows[0]), findings)
    if values is None:
        return {}
    numbers = values[:, columns.pop("element")[0]]
    index = indices_of(mesh.shell_numbers, numbers)
    if (index < 0).any():
        bad = [f"{n:g}" for n in numbers[index < 0]]
        findings.fault(
            f"{path}:{lines[int((index < 0).argmax())][0]}", f"{count_of(bad, 'row')} for elements that the mesh hasn't"
        )
    if len(np.unique(index)) != len(index):
        findings.fault(str(path), "an element has two rows")
    result = {}
    for name, (column, kind, unit) in columns.items():
        result[name] = np.full(len(mesh.shell_numbers), math.nan)
        result[name][index[index >= 0]] = units.to_inside(values[index >= 0, column], kind, unit)
    if set(DIRECTION) & set(result):
        if set(DIRECTION) <= set(result):
            result["fibre_direction"] = np.column_stack([result.pop(name) for name in DIRECTION])
        else:
            findings.fault(f"{path}:1", "needs all three of fibre_x, fibre_y, fibre_z")
    return result


def csv_columns(head: list[str], path: Path, findings: Findings) -> dict[str, tuple[int, str, str]]:
    """Quantity -> (column, kind, unit)."""
    known = {"element": "number", "thickness": "length"} | dict.fromkeys(DIRECTION, "number")
    known |= {name: kind for name, (kind, width) in FIELDS.items() if width == 1}
    columns = {}
    for column, title in enumerate(head):
        for name, kind in known.items():
            unit = units.split_key(title.strip(), name, kind)
            if unit is not None and unit in units.UNITS[kind]:
                if name in columns:
                    findings.fault(f"{path}:1", f"the column {title.strip()} is given a second time")
                columns[name] = (column, kind, unit)
                break
        else:
            findings.fault(
                f"{path}:1",
                f"the column {title.strip()!r} is not known; expected one of "
                + ", ".join(units.expected(n, k) for n, k in known.items()),
            )
    return columns


def csv_numbers(path: Path, lines: list, width: int, findings: Findings) -> np.ndarray | None:
    try:
        values = np.array([[float(cell) for cell in row] for _, row in lines]).reshape(-1, width)
    except ValueError:
        values = None
    if values is not None and np.isfinite(values).all():
        return values
    for number, row in lines:
        for cell in row:
            try:
                good = math.isfinite(float(cell))
            except ValueError:
                good = False
            if not good:
                findings.fault(f"{path}:{number}", f"expected a finite number, found {cell!r}")
                return None
    return None


class Fields:
    """The values of a job over its triangles, gathered from their sources."""

    def __init__(self, part: Part, mesh: JobMesh, findings: Findings):
        self.part, self.mesh, self.findings = part, mesh, findings
        self.csv = read_csv(part.csv, mesh, findings) if part.csv else {}

    def given(self, name: str) -> bool:
        return name in self.part.fields or name in self.csv

    def values(self, name: str, default: float | None = None) -> np.ndarray:
        """(T,) or (T, 3) of a quantity: the CSV first, the part file where it says nothing; the default where
        neither has the quantity. An element without a value is a fault."""
        request = self.part.fields.get(name)
        kind, width = FIELDS[name]
        result = (
            self.requested(request, width)
            if request
            else np.full(
                (len(self.mesh.triangles), 3) if width == 3 else len(self.mesh.triangles),
                math.nan if default is None or self.given(name) else default,
            )
        )
        if name in self.csv:
            rows = self.csv[name][self.mesh.source]
            result = np.where(np.isnan(rows), result, rows)
        bad = np.isnan(result) if width == 1 else np.isnan(result).any(axis=1)
        if bad.any() and self.given(name):
            place = str(self.part.csv) if name in self.csv else request.place
            self.findings.fault(place, f"{name}: no value for {count_of(self.numbers(bad), 'element')}")
        return np.where(np.isnan(result), 0.0, result)

    def requested(self, request: FieldRequest, width: int) -> np.ndarray:
        count = len(self.mesh.triangles)
        shape = (count, 3) if width == 3 else (count,)
        if request.value is not None:
            return np.broadcast_to(np.asarray(request.value, float), shape).copy()
        data = self.mesh.cell_data.get(request.cell_data)
        if data is None:
            has = ", ".join(name for name in self.mesh.cell_data if ":" not in name) or "none"
            self.findings.fault(request.place, f"the mesh has no cell data {request.cell_data!r}; it has {has}")
            return np.zeros(shape)
        data = np.asarray(data, float).reshape(len(data), -1)[self.mesh.source]
        if data.shape[1] != width:
            self.findings.fault(
                request.place, f"cell data {request.cell_data!r} has {data.shape[1]} components, " f"expected {width}"
            )
            return np.zeros(shape)
        data = np.where(np.isfinite(data), data, math.nan)
        return units.to_inside(data if width == 3 else data[:, 0], request.kind, request.unit)

    def numbers(self, mask: np.ndarray) -> np.ndarray:
        """The mesh file's numbers of marked triangles, each once."""
        return np.unique(self.mesh.numbers[mask])

    def thickness(self) -> np.ndarray:
        """(T,) mm: CSV, then cell data or groups, then property cards, then the one value; without any a fault."""
        mesh, request, source = self.mesh, self.part.mesh, self.mesh.source
        by_shell = mesh.card_thickness.copy()
        for name, value in request.thickness_by_group.items():
            if name not in mesh.groups:
                self.findings.fault(
                    request.place,
                    f"thickness_by_group: the mesh has no group {name!r}; it has " + (", ".join(mesh.groups) or "none"),
                )
            else:
                by_shell[mesh.groups[name]] = value
        result = by_shell[source]
        if request.thickness:
            given = self.requested(request.thickness, 1)
            result = given if request.thickness.cell_data else np.where(np.isnan(result), given, result)
        if "thickness" in self.csv:
            rows = self.csv["thickness"][source]
            result = np.where(np.isnan(rows), result, rows)
        if np.isnan(result).any():
            self.findings.fault(
                request.place,
                f"{count_of(self.numbers(np.isnan(result)), 'element')} without a "
                "thickness; give thickness_mm in [mesh] (or --thickness)",
            )
        bad = (result <= 0) | np.isinf(result)
        if bad.any():
            self.findings.fault(
                request.place, f"{count_of(self.numbers(bad), 'element')} with a thickness that " "isn't above 0"
            )
        return result

    def axes(self, normals: np.ndarray) -> np.ndarray:
        """(T, 3, 3): the fibre direction laid into the element's plane, the direction across, and the normal."""
        request = self.part.fields.get("fibre_direction")
        normals = np.where(normals.any(axis=1, keepdims=True), normals, [0.0, 0.0, 1.0])  # no area: any normal will do
        wanted = (
            self.values("fibre_direction")
            if self.given("fibre_direction")
            else np.tile([1.0, 0.0, 0.0], (len(normals), 1))
        )
        length = np.linalg.norm(wanted, axis=1)
        if (length == 0).any() and self.given("fibre_direction"):
            self.findings.fault(
                request.place if request else str(self.part.csv),
                f"{count_of(self.numbers(length == 0), 'element')} with a fibre direction of length 0",
            )
        wanted = wanted / np.where(length > 0, length, 1.0)[:, None]
        flat = wanted - np.einsum("ij,ij->i", wanted, normals)[:, None] * normals
        steep = np.linalg.norm(flat, axis=1) < PERPENDICULAR
        if steep.any() and self.given("fibre_direction"):
            place = request.place if request else str(self.part.csv)
            text = f"the fibre direction is perpendicular to {count_of(self.numbers(steep), 'element')}"
            if request and request.value is not None and "fibre_direction" not in self.csv:
                self.findings.warn(place, text + "; there the global axis nearest to the wall is taken")
            else:
                self.findings.fault(place, text)
        axis = np.eye(3)[np.abs(normals).argmin(axis=1)]
        flat[steep] = (axis - np.einsum("ij,ij->i", axis, normals)[:, None] * normals)[steep]
        flat /= np.linalg.norm(flat, axis=1, keepdims=True)
        return np.stack([flat, np.cross(normals, flat), normals], axis=1)
