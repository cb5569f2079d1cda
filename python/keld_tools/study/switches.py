"""A job with one cause of warpage switched off, by its own files written anew. Called by causes.

Each switch takes a Job and returns the files that change (suffix -> content), or the words why there is nothing to
switch off.
"""

from __future__ import annotations

import re
from collections.abc import Callable
from dataclasses import dataclass
from pathlib import Path

import numpy as np

from ..base.units import DYN_CM2_PER_MPA
from ..job import working_files
from ..meshes import surface
from ..results.geometry_file import PartGeometry, after_title, text_of

INPUTS = (".PG1", ".PRC", ".CPU", ".MAL", ".BC1", ".RS1", ".PT1", ".CT1")
HEADING = ["one cause switched off"]
EVEN = 0.5  # first eigenvalue of fibres that lie evenly in the wall
FEEBLE = 1e-6  # thickness of a skin without stiffness, as a share of the wall's
UNEVEN, SPRING_IN = "uneven shrinkage", "spring-in"
FACET = 2  # wall model in [Keld_Extension] whose corners spring in by a load of their own

Switch = dict[str, bytes] | str


@dataclass
class Job:
    """A job's files and what the readers made of them."""

    files: dict[str, bytes]
    part: PartGeometry


def files_of(base: Path) -> dict[str, bytes]:
    paths = {suffix: Path(f"{base}{suffix}") for suffix in INPUTS}
    return {suffix: path.read_bytes() for suffix, path in paths.items() if path.is_file()}


def even_temperatures(job: Job) -> Switch:
    """Both sides of each wall at their mean."""
    data = job.part.cell_data
    if "temperature_lower_C" not in data:
        return "the job has no temperatures"
    lower, upper = data["temperature_lower_C"], data["temperature_upper_C"]
    if np.array_equal(lower, upper):
        return "both sides have one temperature"
    mean = 0.5 * (lower + upper)
    suffix, text = working_files.temperatures(HEADING, mean, mean, len(job.part.runners))
    return {suffix: text.encode(), ".CT1": b""}


def even_shrinkage(job: Job) -> Switch:
    """Fibres that lie evenly in every wall, and one kind of polymer: one expansion for all directions in the wall."""
    data = job.part.cell_data
    count = len(job.part.triangles)
    fraction = data.get("kind_fraction", np.ones(count))
    kinds = np.unique(fraction > 0.5)
    if not directed(job) and len(kinds) < 2:
        return "the polymer has no direction, and there is one kind of it"
    most = np.full(count, float(np.count_nonzero(fraction > 0.5) * 2 >= count))
    stress = [data.get(name, np.zeros(count)) * DYN_CM2_PER_MPA for name in ("stress1_MPa", "stress2_MPa")]
    return {".RS1": orientation_file(job, stress, most, np.full(count, EVEN))}


def no_stress(job: Job) -> Switch:
    data = job.part.cell_data
    if "stress1_MPa" not in data or not (data["stress1_MPa"].any() or data["stress2_MPa"].any()):
        return "the job has no frozen-in stress"
    nothing = np.zeros(len(job.part.triangles))
    return {".RS1": orientation_file(job, [nothing, nothing], data["kind_fraction"], data["orientation"])}


def no_spring_in(job: Job) -> Switch:
    """Every wall doubled by a skin without stiffness: edges of four triangles belong to no bent wall.

    The turn of a bent wall comes in at edges of exactly two triangles (docs/model.md); the skin is a millionth of the
    wall, far below the digits of the results.
    """
    if wall_model(job) != FACET:
        return "the wedge has no spring-in of its own; it is in the shape of its folds"
    text = text_of(job.part.path)
    head, *lines = text[after_title(job.part.path, text) :].split("\n")
    count, nodes, *factors = head.split()
    elements, rest = lines[: int(count)], lines[int(count) :]
    fields = [record.split() for record in elements]
    doubled = [f"{int(count) + i} {skin(f)}" for i, f in enumerate((f for f in fields if f[3] != "0"), 1)]
    total = int(count) + len(doubled)
    body = "\n".join([f"{total} {nodes} {' '.join(factors)}", *elements, *doubled, *rest])
    order = doubled_rows(job)
    changed = {".PG1": (working_files.title(HEADING) + body).encode()}
    for suffix in (".RS1", ".PT1", ".CT1"):
        if suffix in job.files:
            changed[suffix] = repeated(job.files[suffix], order, int(count))
    return changed


def skin(record: list[str]) -> str:
    """A triangle's record without its number, with a thickness that the check of thickness is to pass over."""
    number, a, b, c, thickness, _, *others = record
    return f"{a} {b} {c} {float(thickness) * FEEBLE:.9g} -1 {' '.join(others)}"


def doubled_rows(job: Job) -> np.ndarray:
    """Element numbers of the triangles, in the order of the mesh file."""
    return job.part.triangle_numbers


def repeated(content: bytes, numbers: np.ndarray, count: int) -> bytes:
    """A per-element file with the records of some elements once more, under the numbers that follow."""
    text = content.decode("utf-8", errors="replace").replace("\r\n", "\n")
    start = text.index("\n", text.index("*/")) + 1
    records = [line.split(None, 1) for line in text[start:].rstrip().split("\n")]
    by_number = {int(number): values for number, values in records}
    more = [f"{count + i} {by_number[int(n)]}" for i, n in enumerate(numbers, 1) if int(n) in by_number]
    return (text[:start] + "\n".join([" ".join(record) for record in records] + more) + "\n").encode()


def directed(job: Job) -> bool:
    """Whether expansion or stiffness of the polymer has a direction: a filler, or two values that differ."""
    if re.search(r"string=\s*20011\b.*?value=\s*([1-9])", job.files.get(".PRC", b"").decode(errors="replace")):
        return True
    text = job.files.get(".MAL", b"").decode(errors="replace")
    for label in ("Expansion", "Modulus"):
        for line in re.findall(rf"^\s*{label}\s*=\s*([^\n]*)", text, re.M):
            numbers = re.findall(r"[-+]?\d[\d.eE+-]*", line)
            if numbers[:1] == ["2"] and len(numbers) > 2 and float(numbers[1]) != float(numbers[2]):
                return True
    return False


def wall_model(job: Job) -> int:
    text = job.files.get(".CPU", b"").decode(errors="replace").partition("[Keld_Extension]")[2]
    found = re.search(r"=[^=\n]*=[^=\n]*=\s*(\d+)", text)
    return int(found[1]) if found else 1


def orientation_file(job: Job, stress, fraction: np.ndarray, orientation: np.ndarray) -> bytes:
    """.RS1 with the job's own directions, else the global x axis laid into each wall."""
    part = job.part
    normals = surface.unit_normals(part.points_mm, part.triangles)
    wanted = part.cell_data.get("fibre_direction", np.tile([1.0, 0.0, 0.0], (len(normals), 1)))
    flat = wanted - np.einsum("ij,ij->i", wanted, normals)[:, None] * normals
    steep = np.linalg.norm(flat, axis=1) < 1e-3
    axis = np.eye(3)[np.abs(normals).argmin(axis=1)]
    flat[steep] = (axis - np.einsum("ij,ij->i", axis, normals)[:, None] * normals)[steep]
    flat /= np.linalg.norm(flat, axis=1, keepdims=True)
    axes = np.stack([flat, np.cross(normals, flat), normals], axis=1)
    return working_files.stress(HEADING, stress[0], stress[1], fraction, orientation, axes, len(part.runners)).encode()


SWITCHES: dict[str, Callable[[Job], Switch]] = {
    "temperatures of the sides": even_temperatures,
    UNEVEN: even_shrinkage,
    "frozen-in stress": no_stress,
    SPRING_IN: no_spring_in,
}
