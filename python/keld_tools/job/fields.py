"""Per-element values of a job: one value, cell data of the mesh, a CSV, property cards, groups.

Called by job_cli after the mesh is built. Every fault names the place that gave the value.
"""

from __future__ import annotations

import math

import numpy as np

from ..base import units
from ..base.findings import Findings, count_of
from ..meshes import surface
from ..meshes.mesh_input import JobMesh
from ..meshes.raw_mesh import named
from ..part.part_file import FIELDS, FieldRequest, Part
from .element_csv import read_values
from .orientation import TRACE_SLACK, full_tensor, principal_in_wall

PERPENDICULAR = 1e-3  # a direction whose part in the element's plane is shorter counts as perpendicular


class Fields:
    """The values of a job over its triangles, gathered from their sources."""

    def __init__(self, part: Part, mesh: JobMesh, findings: Findings):
        self.part, self.mesh, self.findings = part, mesh, findings
        # quantity of the CSV, or of a tensor -> (T,) or (T, 3), nan where the CSV has no value
        self.csv = read_values(part.csv, part.csv_mapping, mesh, findings, mesh.notes) if part.csv else {}

        if request := part.fields.get("orientation_tensor"):
            self.lay_tensor(request)

    def lay_tensor(self, request: FieldRequest) -> None:
        """Direction and share of a tensor of the part file or of cell data, where the CSV gives none."""
        given = [name for name in ("fibre_direction", "orientation") if name in self.part.fields or name in self.csv]
        if given:
            self.findings.fault(request.place, f"{given[0]} is given too; a tensor says both")
            return
        tensor = self.requested(request, 6)
        if np.isnan(tensor).any():
            bad = self.numbers(np.isnan(tensor).any(axis=1))
            self.findings.fault(request.place, f"orientation_tensor: no value for {count_of(bad, 'element')}")
            return
        trace = tensor[:, :3].sum(axis=1)
        if len(trace) and np.abs(trace - 1.0).max() > TRACE_SLACK:
            far = trace[np.abs(trace - 1.0).argmax()]
            self.findings.fault(request.place, f"a11 + a22 + a33 of an orientation tensor is 1, found {far:g}")
            return
        normals = surface.unit_normals(self.mesh.points_mm, self.mesh.triangles)
        direction, share = principal_in_wall(full_tensor(tensor), normals)
        self.csv |= {"fibre_direction": direction, "orientation": share}

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
            rows = self.csv[name]
            result = np.where(np.isnan(rows), result, rows)
        bad = np.isnan(result) if width == 1 else np.isnan(result).any(axis=1)
        if bad.any() and self.given(name):
            place = str(self.part.csv) if name in self.csv or request is None else request.place
            self.findings.fault(place, f"{name}: no value for {count_of(self.numbers(bad), 'element')}")
        return np.where(np.isnan(result), 0.0, result)

    def requested(self, request: FieldRequest, width: int) -> np.ndarray:
        count = len(self.mesh.triangles)
        shape = (count, width) if width > 1 else (count,)
        if request.value is not None:
            return np.broadcast_to(np.asarray(request.value, float), shape).copy()
        raw = self.mesh.cell_data.get(request.cell_data or "")
        if raw is None:
            has = ", ".join(name for name in self.mesh.cell_data if ":" not in name) or "none"
            self.findings.fault(request.place, f"the mesh has no cell data {request.cell_data!r}; it has {has}")
            return np.zeros(shape)
        data = np.asarray(raw, float).reshape(len(raw), -1)[self.mesh.source]
        if width == 6 and data.shape[1] == 9:
            data = data[:, [0, 4, 8, 1, 2, 5]]  # of a whole tensor, row by row
        if data.shape[1] != width:
            self.findings.fault(
                request.place, f"cell data {request.cell_data!r} has {data.shape[1]} components, " f"expected {width}"
            )
            return np.zeros(shape)
        data = np.where(np.isfinite(data), data, math.nan)
        return units.to_inside(data if width > 1 else data[:, 0], request.kind, request.unit)

    def numbers(self, mask: np.ndarray) -> np.ndarray:
        """The mesh file's numbers of marked triangles, each once."""
        return np.unique(self.mesh.numbers[mask])

    def thickness(self) -> np.ndarray:
        """(T,) mm: CSV, then cell data or groups, then property cards, then the one value; without any a fault."""
        mesh, request, source = self.mesh, self.part.mesh, self.mesh.source
        place = request.place or str(request.path)
        by_shell = mesh.card_thickness_mm.copy()
        for name, value in request.thickness_by_group_mm.items():
            group = named(mesh.groups, name)
            if group is None:
                self.findings.fault(
                    place,
                    f"thickness_by_group: the mesh has no group {name!r}; it has " + (", ".join(mesh.groups) or "none"),
                )
            else:
                by_shell[mesh.groups[group]] = value
        result = by_shell[source]
        if request.thickness_mm:
            given = self.requested(request.thickness_mm, 1)
            result = given if request.thickness_mm.cell_data else np.where(np.isnan(result), given, result)
        if "thickness" in self.csv:
            rows = self.csv["thickness"]
            result = np.where(np.isnan(rows), result, rows)
        if np.isnan(result).any():
            self.findings.fault(
                place,
                f"{count_of(self.numbers(np.isnan(result)), 'element')} without a "
                "thickness; give thickness_mm in [mesh] (or --thickness)",
            )
        bad = (result <= 0) | np.isinf(result)
        if bad.any():
            self.findings.fault(
                place, f"{count_of(self.numbers(bad), 'element')} with a thickness that " "isn't above 0"
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
