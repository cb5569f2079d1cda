"""keld-job: a whole family of working files from a part file, or from a mesh and a thickness.

Called by the executable keld-job. Nothing is written before everything is read and checked.
"""

from __future__ import annotations

import argparse
import sys
from pathlib import Path

from .. import __version__
from ..base import atomic, keld_program, ownership
from ..base.findings import BadFile, Findings
from ..base.program import run_program, view_command, whole_output
from ..base.progress import Progress
from ..job import checks, job_files, working_files
from ..job.summary import summary_of
from ..meshes import formats, mesh_input
from ..part import part_file, polymers
from ..part.part_file import Part


def arguments(argv: list[str] | None) -> argparse.Namespace:
    parser = argparse.ArgumentParser(
        prog="keld-job", description="Write the working files of a KELD job from PART.toml, or from a mesh."
    )
    parser.add_argument("input", nargs="?", metavar="PART.toml|MESH", help="part file, or a mesh for a first try")
    parser.add_argument("-o", "--output", metavar="BASE", help="base name of the job's files")
    parser.add_argument("--thickness", type=float, metavar="MM", help="wall thickness for elements without their own")
    parser.add_argument("--polymer", metavar="NAME", help="polymer of the library for a first try (default PP)")
    parser.add_argument(
        "--unit", metavar="UNIT", help="length unit of the mesh for a first try (default: the file's, or mm)"
    )
    parser.add_argument(
        "--repair", type=float, metavar="MM", help="collapse edges shorter than this, drop what is empty"
    )
    parser.add_argument("--orient", action="store_true", help="turn triangles so that neighbours agree")
    parser.add_argument("--leave-out", action="store_true", help="pass over elements that can be no wall, as solids")
    parser.add_argument("--overwrite", action="store_true", help="replace files that these tools didn't write")
    parser.add_argument("--run", action="store_true", help="run keld on the job too; no solution is a fault")
    parser.add_argument("--keld", metavar="PROGRAM", help="the keld that --run takes")
    parser.add_argument("--polymers", action="store_true", help="list the library, with the source of each number")
    parser.add_argument("--version", action="version", version=f"keld-job {__version__}")
    return parser.parse_args(argv)


@whole_output
def main(argv: list[str] | None = None) -> int:
    """Exit status: 0 for a job that is written (with --run: solved), 1 for any fault."""
    options = arguments(argv)
    if options.polymers:
        print(polymers.listing())
        return 0
    if not options.input:
        print("keld-job: give a part file or a mesh; keld-job --help tells more", file=sys.stderr)
        return 1
    status = run_program("keld-job", options, run, options.output or options.input, "nothing is written")
    if status == 0 and options.run:
        status = run_program("keld-job", options, run_job, str(options.base), "the job is written, but not solved")
    return status


def run(options: argparse.Namespace, findings: Findings, progress: Progress) -> str:
    """Read, check, write; returns the summary. Faults stay in `findings`, then nothing is written."""
    part = read_request(options, findings)
    progress("reading the mesh")
    mesh = None
    if part.mesh.path.name:
        try:
            mesh = mesh_input.build(formats.read_raw(part.mesh.path), part.mesh, findings)
        except BadFile as error:
            findings.faults.append(f"{part.mesh.place}: {error}" if part.mesh.place else str(error))
    filled = part.filler is not None
    checks.check_polymer(part.polymer, filled, part.places["polymer"], findings)
    if part.second:
        checks.check_polymer(part.second, filled, part.places["second_polymer"], findings)
    if mesh is None:
        return ""
    progress("checking")
    files = job_files.texts(part, mesh, findings, progress)
    check_target(part, options, findings)
    if files is None or findings.faults:
        return ""
    progress("writing")
    atomic.write_family(
        part.base,
        {suffix: text.encode(errors="replace") for suffix, text in files.contents.items()},
        tuple(s for s in working_files.SUFFIXES if s not in files.contents),
        last=".PG1",
    )
    options.base = part.base
    return summary_of(part, mesh, files, options.run)


def run_job(options: argparse.Namespace, findings: Findings, progress: Progress) -> str:
    """keld on the job that was written; a run without a solution is a fault, whatever its exit status."""
    program = keld_program.find_keld(options.keld)
    progress("keld runs")
    outcome = keld_program.run_keld(program, options.base)
    if fault := outcome.fault():
        findings.fault(str(options.base), fault)
    return f"{outcome.summary()}\nnext: {view_command(options.base)}"


def read_request(options: argparse.Namespace, findings: Findings) -> Part:
    """The part file, or the part of a first try, with the command line's own values in their place."""
    path = Path(options.input)
    first_try = path.suffix.lower() != ".toml"
    if first_try:
        document = {
            "mesh": {"file": path.name} | ({"length_unit": options.unit} if options.unit else {}),
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
        part.mesh.thickness_mm = part_file.FieldRequest(
            options.thickness, kind="length", unit="mm", place="--thickness"
        )
    if options.repair is not None:
        if not 0 < options.repair < float("inf"):
            findings.fault("command line", f"--repair {options.repair:g} isn't above 0")
        part.mesh.repair_below_mm = options.repair
    part.mesh.leave_out |= options.leave_out
    part.mesh.orient |= options.orient
    if options.output:
        part.base = Path(options.output)
    elif first_try:
        findings.fault("command line", "a mesh needs -o BASE, the base name of the files to write")
    return part


def check_target(part: Part, options: argparse.Namespace, findings: Findings) -> None:
    """The folder must be there, and every file of an earlier job of the same name one of the tools' own."""
    if not part.base.parent.is_dir():
        findings.fault(str(part.base.parent), "there is no such folder to write to")
    files = [Path(f"{part.base}{suffix}") for suffix in working_files.SUFFIXES]
    ownership.refuse_foreign(files, options.overwrite, findings)
