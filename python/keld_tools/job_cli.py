"""keld-job: a whole family of working files from a part file, or from a mesh and a thickness.

Called by the executable keld-job. Nothing is written before everything is read and checked.
"""

from __future__ import annotations

import argparse
import sys
from pathlib import Path

import numpy as np

from . import __version__, atomic, checks, mesh_input, part_file, polymers, surface, working_files
from .fields import Fields
from .findings import BadFile, Findings
from .mesh_input import JobMesh
from .part_file import Part
from .program import run_program
from .progress import Progress

SUFFIXES = (".PG1", ".PRC", ".CPU", ".MAL", ".BC1", ".RS1", ".PT1", ".CT1")


def arguments(argv: list[str] | None) -> argparse.Namespace:
    parser = argparse.ArgumentParser(
        prog="keld-job", description="Write the working files of a KELD job from PART.toml, or from a mesh."
    )
    parser.add_argument("input", nargs="?", metavar="PART.toml|MESH", help="part file, or a mesh for a first try")
    parser.add_argument("-o", "--output", metavar="BASE", help="base name of the job's files")
    parser.add_argument("--thickness", type=float, metavar="MM", help="wall thickness for elements without their own")
    parser.add_argument("--polymer", metavar="NAME", help="polymer of the library for a first try (default PP)")
    parser.add_argument("--unit", metavar="UNIT", help="length unit of the mesh for a first try (default mm)")
    parser.add_argument("--overwrite", action="store_true", help="replace a job that keld-job didn't write")
    parser.add_argument("--polymers", action="store_true", help="list the library, with the source of each number")
    parser.add_argument("--version", action="version", version=f"keld-job {__version__}")
    return parser.parse_args(argv)


def main(argv: list[str] | None = None) -> int:
    """Exit status: 0 for a job that is written, 1 for any fault."""
    options = arguments(argv)
    if options.polymers:
        print(polymers.listing())
        return 0
    if not options.input:
        print("keld-job: give a part file or a mesh; keld-job --help tells more", file=sys.stderr)
        return 1
    return run_program("keld-job", options, run, options.output or options.input, "nothing is written")


def run(options: argparse.Namespace, findings: Findings, progress: Progress) -> str:
    """Read, check, write; returns the summary. Faults stay in `findings`, then nothing is written."""
    part = read_request(options, findings)
    progress("reading the mesh")
    mesh = None
    if part.mesh.path.name and (part.mesh.path.suffix or not part.mesh.path.is_dir()):
        try:
            mesh = mesh_input.build(mesh_input.read_raw(part.mesh.path), part.mesh, findings)
        except BadFile as error:
            findings.faults.append(f"{part.mesh.place}: {error}" if part.mesh.place else str(error))
    filled = part.filler is not None
    checks.check_polymer(part.polymer, filled, part.places["polymer"], findings)
    if part.second:
        checks.check_polymer(part.second, filled, part.places["second_polymer"], findings)
    if mesh is None:
        return ""
    progress("checking")
    contents = texts(part, mesh, findings, progress)
    check_target(part, options, findings)
    if findings.faults:
        return ""
    progress("writing")
    atomic.write_family(
        part.base,
        {suffix: text.encode(errors="replace") for suffix, text in contents.items()},
        tuple(s for s in SUFFIXES if s not in contents),
        last=".PG1",
    )
    return summary_of(part, mesh, contents)


def read_request(options: argparse.Namespace, findings: Findings) -> Part:
    """The part file, or the part of a first try, with the command line's own values in their place."""
    path = Path(options.input)
    first_try = path.suffix.lower() != ".toml"
    if first_try:
        document = {
            "mesh": {"file": path.name, "length_unit": options.unit or "mm"},
            "polymer": {"name": options.polymer or "PP"},
            "title": path.stem,
        }
        part = part_file.read_part(document, path, {}, findings, path.parent)
        part.places = dict.fromkeys(part.places, str(path))
        part.mesh.place = ""
    else:
        part = part_file.read_part_file(path, findings)
        if options.polymer or options.unit:
            findings.fault("command line", "--polymer and --unit belong to a mesh; a part file has keys for both")
    if options.thickness is not None:
        if not 0 < options.thickness < float("inf"):
            findings.fault("command line", f"--thickness {options.thickness:g} isn't above 0")
        part.mesh.thickness = part_file.FieldRequest(options.thickness, kind="length", unit="mm", place="--thickness")
    if options.output:
        part.base = Path(options.output)
    elif first_try:
        findings.fault("command line", "a mesh needs -o BASE, the base name of the files to write")
    return part


def texts(part: Part, mesh: JobMesh, findings: Findings, progress: Progress) -> dict[str, str]:
    """Suffix -> text of every file of the job; only complete when `findings` has no fault."""
    if part.mesh.runner_diameter is not None:
        mesh.diameter = np.where(np.isnan(mesh.diameter), part.mesh.runner_diameter, mesh.diameter)
    elif not part.mesh.place and np.isnan(mesh.diameter).any():  # a first try has nothing to say on runners
        findings.warn(str(part.mesh.path), f"{len(mesh.runners)} two-node elements without a diameter left out")
        mesh.runners, mesh.diameter = mesh.runners[:0], mesh.diameter[:0]
    fields = Fields(part, mesh, findings)
    thickness = fields.thickness() if len(mesh.triangles) else np.zeros(0)
    checks.check_mesh(mesh, np.nan_to_num(thickness), str(part.mesh.path), findings)
    if not len(mesh.triangles):
        return {}
    progress("values per element")
    lower, upper = side_temperatures(fields)
    checks.check_conditions(part, np.concatenate([lower, upper]), findings)
    gates = mesh_input.find_nodes(mesh, part.mesh.gate_nodes, "gate node", part.places["mesh"], findings)
    fixed = mesh_input.find_nodes(mesh, part.boundary_nodes, "boundary node", part.places["boundary"], findings)
    if part.boundary_nodes and len(fixed) == len(part.boundary_nodes):
        checks.check_boundary(mesh, fixed, part.places["boundary"], findings)
    heading = [working_files.MADE_BY, part.title or part.base.name]
    contents = {".RS1": stress_text(part, mesh, fields, heading, findings)}
    if findings.faults:
        return {}
    progress("forming the files")
    contents[".PG1"] = working_files.geometry(
        heading, mesh.points, mesh.triangles, thickness, mesh.runners, mesh.diameter, gates
    )
    suffix, contents_of = working_files.temperatures(heading, lower, upper, len(mesh.runners))
    contents[suffix] = contents_of
    contents[".PRC"] = working_files.process(part, float(np.mean([lower, upper])))
    contents[".CPU"] = working_files.settings(part.direct_solver, part.cycle_limit)
    contents[".MAL"] = working_files.material(part)
    contents[".BC1"] = working_files.boundary([n + 1 for n in fixed]) if fixed else ""
    return {suffix: text for suffix, text in contents.items() if text}


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
            rows = fields.csv[name][fields.mesh.source]
            sides.append(np.where(np.isnan(rows), common, rows))
    return sides[0], sides[1]


def stress_text(part: Part, mesh: JobMesh, fields: Fields, heading: list[str], findings: Findings) -> str:
    """.RS1, or nothing for a job without stress, fibres or a direction."""
    stress = [fields.values(name, 0.0) for name in ("stress1", "stress2")]
    orientation = fields.values("orientation", 1.0)
    fraction = fields.values("kind_fraction", 1.0)
    checks.check_fields(part, np.array(stress), orientation, fraction, findings)
    axes = fields.axes(surface.unit_normals(mesh.points, mesh.triangles))
    given = any(fields.given(n) for n in ("stress1", "stress2", "orientation", "kind_fraction", "fibre_direction"))
    directed = part.filler or part.polymer.anisotropic or part.second
    if not (given or directed) or findings.faults:
        return ""
    return working_files.stress(heading, *stress, fraction, orientation, axes, len(mesh.runners))


def check_target(part: Part, options: argparse.Namespace, findings: Findings) -> None:
    """The folder must be there, and an earlier job of the same name must be one of keld-job's own."""
    if not part.base.parent.is_dir():
        findings.fault(str(part.base.parent), "there is no such folder to write to")
    earlier = Path(f"{part.base}.PG1")
    if earlier.is_file() and not options.overwrite:
        with open(earlier, "rb") as file:
            if working_files.MADE_BY.encode() not in file.read(400):
                findings.fault(str(earlier), "is there and not made by keld-job; --overwrite replaces that job")


def summary_of(part: Part, mesh: JobMesh, contents: dict[str, str]) -> str:
    size = np.ptp(mesh.points[np.unique(mesh.triangles)], axis=0)
    lines = [
        f"{part.base}: {len(mesh.triangles)} triangles, {len(mesh.runners)} runners, {len(mesh.points)} nodes, "
        f"{size[0]:.4g} x {size[1]:.4g} x {size[2]:.4g} mm",
        f"polymer: {part.polymer.title}",
    ]
    lines += [f"note: {note}" for note in mesh.notes]
    lines.append("written: " + " ".join(sorted(contents)))
    lines.append(f"next: keld {part.base} 1@ INSTALL/ 2@   then   keld-view {part.base}")
    return "\n".join(lines)
