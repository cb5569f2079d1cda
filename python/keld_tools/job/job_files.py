"""The text of every file of a job, from the part file and the mesh. Called by job_cli.

Gathers the values per element, has them checked, and hands them to working_files.
"""

from __future__ import annotations

from dataclasses import dataclass
from typing import NamedTuple

import numpy as np

from ..base.findings import Findings
from ..base.progress import Progress
from ..meshes import mesh_input, surface
from ..meshes.mesh_input import JobMesh
from ..meshes.raw_mesh import named
from ..part.drawing import Box, Measure
from ..part.part_file import Part
from . import checks, free_shrinkage, origin, working_files
from .fields import Fields
from .origin import Origin


class Shrinking(NamedTuple):
    """Means over the part, weighted by area."""

    orientation: float
    change_k: float  # from ejection to ambient


@dataclass
class JobFiles:
    """A job that can be written, and what its summary tells of it."""

    contents: dict[str, str]  # suffix -> text
    thickness_mm: np.ndarray  # (T,)
    shrinking: Shrinking


def texts(part: Part, mesh: JobMesh, findings: Findings, progress: Progress) -> JobFiles | None:
    """Every file of the job; None after a fault."""
    if part.mesh.runner_diameter_mm is not None:
        mesh.diameter_mm = np.where(np.isnan(mesh.diameter_mm), part.mesh.runner_diameter_mm, mesh.diameter_mm)
    elif not part.mesh.place and np.isnan(mesh.diameter_mm).any():  # a first try has nothing to say on runners
        findings.warn(str(part.mesh.path), f"{len(mesh.runners)} two-node elements without a diameter left out")
        mesh.runners, mesh.diameter_mm = mesh.runners[:0], mesh.diameter_mm[:0]
    fields = Fields(part, mesh, findings)
    thickness = fields.thickness() if len(mesh.triangles) else np.zeros(0)
    checks.check_mesh(mesh, np.nan_to_num(thickness), str(part.mesh.path), findings)
    if not len(mesh.triangles):
        return None
    progress("values per element")
    lower, upper = side_temperatures(fields)
    checks.check_conditions(part, np.concatenate([lower, upper]), findings)
    gates = mesh_input.find_nodes(mesh, part.mesh.gate_nodes, "gate node", part.places["mesh"], findings)
    fixed = mesh_input.find_nodes(mesh, part.boundary_nodes, "boundary node", part.places["boundary"], findings)
    if part.boundary_nodes and len(fixed) == len(part.boundary_nodes):
        checks.check_boundary(mesh, fixed, part.places["boundary"], findings)
    orientation = fields.values("orientation", part.polymer.orientation)
    area = np.linalg.norm(surface.crosses(mesh.points_mm, mesh.triangles), axis=1)
    shrinking = Shrinking(
        float(np.average(orientation, weights=area if area.any() else None)),
        free_shrinkage.mean_change(lower, upper, part.conditions.ambient_temperature_c, area),
    )
    for name, polymer in (("polymer", part.polymer), ("second_polymer", part.second)):
        if polymer:
            free_shrinkage.set_expansion(polymer, part.filler, *shrinking, part.places[name], findings)
    heading = [working_files.MADE_BY, part.title or part.base.name]
    contents = {".RS1": stress_text(part, mesh, fields, orientation, heading, findings)}
    if findings.faults:
        return None
    progress("forming the files")
    contents[".PG1"] = working_files.geometry(
        heading, mesh.points_mm, mesh.triangles, thickness, mesh.runners, mesh.diameter_mm, gates
    )
    suffix, contents_of = working_files.temperatures(heading, lower, upper, len(mesh.runners))
    contents[suffix] = contents_of
    contents[".PRC"] = working_files.process(part, float(np.mean([lower, upper])))
    contents[".CPU"] = working_files.settings(part.solver, part.cycle_limit, part.wall_model)
    contents[".MAL"] = working_files.material(part)
    contents[".BC1"] = working_files.boundary([n + 1 for n in fixed]) if fixed else ""
    contents[origin.SUFFIX] = origin.text_of(origin_of(part, mesh, findings))
    return JobFiles({suffix: text for suffix, text in contents.items() if text}, thickness, shrinking)


def origin_of(part: Part, mesh: JobMesh, findings: Findings) -> Origin:
    """What goes along with the job for measuring; node numbers of the mesh file become those of the job."""
    groups = {name: mask[mesh.source] for name, mask in mesh.groups.items()}
    drawing = part.drawing
    for measure in drawing.measures:
        measure.places = own_numbers(mesh, measure.places, f"{measure.where} {measure.name}", findings)
        measure.faces = own_faces(groups, measure, findings)
    if drawing.datum:
        drawing.datum = own_numbers(mesh, drawing.datum, "[datum]", findings)
    return Origin(part.mesh.path, mesh.to_mm, groups, drawing, part.title)


def own_faces(groups: dict[str, np.ndarray], measure: Measure, findings: Findings) -> list[str | Box]:
    """Groups as the mesh writes their names; boxes stay what they are."""
    faces: list[str | Box] = []
    for face in measure.faces:
        group = named(groups, face) if isinstance(face, str) else face
        if group is None:
            has = ", ".join(groups) or "none"
            findings.fault(measure.where, f"{measure.name}: the mesh has no group {face!r}; it has {has}")
        faces.append(face if group is None else group)
    return faces


def own_numbers(mesh: JobMesh, places: list, place: str, findings: Findings) -> list:
    """Nodes of the mesh file as numbers of the job, from 1; points stay what they are."""
    found = []
    for entry in places:
        index = mesh_input.find_nodes(mesh, [entry], "node", place, findings) if isinstance(entry, int) else None
        found += [entry] if index is None else [n + 1 for n in index]
    return found


def side_temperatures(fields: Fields) -> tuple[np.ndarray, np.ndarray]:
    """(T,) lower and upper ejection temperature; a side without its own takes the value for both."""
    both = "ejection_temperature"
    names = [f"{both}_{side}" for side in ("lower", "upper")]
    if not any(fields.given(name) for name in (both, *names)):
        fields.findings.fault(fields.part.places["conditions"], f"has no {both}_C")
    common = fields.values(both) if fields.given(both) else None
    sides = []
    for name in names:
        if not fields.given(name):
            if common is None and any(fields.given(n) for n in names):
                fields.findings.fault(fields.part.places["conditions"], f"has one side only: {name}_C is missing")
            sides.append(common if common is not None else np.zeros(len(fields.mesh.triangles)))
        elif name in fields.part.fields or common is None:
            sides.append(fields.values(name))
        else:  # rows of a CSV over the common value
            rows = fields.csv[name]
            sides.append(np.where(np.isnan(rows), common, rows))
    return sides[0], sides[1]


def stress_text(
    part: Part, mesh: JobMesh, fields: Fields, orientation: np.ndarray, heading: list[str], findings: Findings
) -> str:
    """.RS1, or nothing for a job without stress, fibres or a direction."""
    stress = [fields.values(name, 0.0) for name in ("stress1", "stress2")]
    fraction = fields.values("kind_fraction", 1.0)
    checks.check_fields(part, np.array(stress), orientation, fraction, findings)
    axes = fields.axes(surface.unit_normals(mesh.points_mm, mesh.triangles))
    given = any(fields.given(n) for n in ("stress1", "stress2", "orientation", "kind_fraction", "fibre_direction"))
    directed = part.filler or part.polymer.anisotropic or part.second
    if not (given or directed) or findings.faults:
        return ""
    return working_files.stress(heading, stress[0], stress[1], fraction, orientation, axes, len(mesh.runners))
