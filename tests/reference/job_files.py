"""Readers of a job's files for the reference analysis. Called by job_answer.

Nothing is shared with the program: a record stands on a line of its own, as it does in every job of the tests, and
a file that doesn't keep its format raises. Lengths are cm, temperatures K, stresses dyn/cm2.
"""

from __future__ import annotations

import re
from dataclasses import dataclass, field
from pathlib import Path

import numpy as np

KELVIN = 273.15


@dataclass
class Process:
    melt: tuple[float, float]  # K, of the two polymer kinds
    ambient: float  # K
    filled: bool
    by_weight: bool
    filler_fraction: float  # by weight or by volume
    two_kinds: bool
    boundary: tuple[int, ...]  # three geometry nodes, all 0 where the analysis chooses
    boundary_given: bool = False  # by the boundary file


@dataclass
class Polymer:
    pvt: list[float]
    expansion: list[float]  # 1/K
    modulus: list[float]
    poisson: list[float]
    shear: list[float]


@dataclass
class Filler:
    expansion: float = 3.5e-6
    modulus: float = 7e11
    poisson: float = 0.23
    density: float = 2.5


@dataclass
class Mesh:
    points: np.ndarray  # (N + 1, 3) cm, row 0 unused
    nodes: np.ndarray  # (E + 1, 3) by element number, third 0 for a runner
    thickness: np.ndarray  # (E + 1,) cm
    order: list[int]  # element numbers as the file has them
    factors: tuple[float, float]  # thickness, coordinates
    corrected: bool  # every record has its ninth field

    def part(self) -> list[int]:
        """Numbers of the triangles, in file order."""
        return [e for e in self.order if self.nodes[e, 2] > 0]

    def runners(self) -> list[int]:
        return [e for e in self.order if self.nodes[e, 2] == 0]


@dataclass
class Fields:
    """What filling and cooling left, a row for each triangle in file order."""

    stress: np.ndarray  # (T, 2) along the first and the second direction
    kind_fraction: np.ndarray  # (T,)
    orientation: np.ndarray  # (T,)
    axes: np.ndarray  # (T, 3, 3), directions in rows
    sides: np.ndarray  # (T, 2) K, lower and upper
    stress_valid: bool = True
    from_cool: bool = False
    warnings: list[str] = field(default_factory=list)  # as the report words them


def lines_of(path: Path) -> list[str]:
    return path.read_bytes().decode("latin-1").replace("\r\n", "\n").split("\n")


def after_title(path: Path) -> list[str]:
    """Lines behind the title block, blank ones left out."""
    lines = lines_of(path)
    end = next(i for i, line in enumerate(lines) if "*/" in line)
    if not any("/*" in line for line in lines[: end + 1]):
        raise ValueError(f"{path}: title block without a beginning")
    return [line for line in lines[end + 1 :] if line.strip()]


def value_lines(lines: list[str], tag: str, skip: int, count: int) -> list[float]:
    """The numbers behind the third equals sign of `count` lines, `skip` lines below the tag."""
    first = next(i for i, line in enumerate(lines) if line.startswith(tag)) + 1 + skip
    # the character right behind an equals sign is no data
    return [float(line.split("=", 3)[3][1:].split()[0]) for line in lines[first : first + count]]


def read_process(base: Path) -> Process:
    conditions = lines_of(base.with_suffix(".PRC"))
    v = value_lines(conditions, "[Flpk_ProcessData]", 0, 15)
    ambient = value_lines(conditions, "[Keld_ProcessData]", 0, 1)[0]
    settings = value_lines(lines_of(base.with_suffix(".CPU")), "[Keld_ComputeData]", 2, 10)
    boundary, given = tuple(int(n) for n in settings[4:7]), False
    fixed = base.with_suffix(".BC1")
    if fixed.exists():
        lines = lines_of(fixed)
        for i, line in enumerate(lines):
            if line.startswith("[Keld_FixBC]"):
                boundary, given = tuple(int(lines[i + k].split()[0]) for k in (1, 2, 3)), True
    return Process(
        melt=(v[1] + KELVIN, v[14] + KELVIN),
        ambient=ambient + KELVIN,
        filled=int(v[10]) == 1,
        by_weight=int(v[11]) == 1,
        filler_fraction=v[12] / 100.0 if int(v[10]) == 1 else 0.0,
        two_kinds=int(v[13]) == 1,
        boundary=boundary,
        boundary_given=given,
    )


class Sheet:
    """A polymer block, read record by record from the line below its tag."""

    def __init__(self, text: str) -> None:
        self.text, self.place = text, 0

    def rest_of_line(self) -> None:
        self.place = self.text.index("\n", self.place) + 1

    def number(self) -> float:
        match = re.compile(r"\s*([-+0-9.eE]+)").match(self.text, self.place)
        if not match:
            raise ValueError(f"no number in '{self.text[self.place : self.place + 20]}'")
        self.place = match.end()
        return float(match[1])

    def numbers(self, labelled: bool = True, most: int = 99) -> list[float]:
        """A count and as many numbers, behind a label that ends in "="."""
        if labelled:
            self.place = self.text.index("=", self.place) + 1
        values = [self.number() for _ in range(min(int(self.number()), most))]
        self.rest_of_line()
        return values


def pair(values: list[float], falling: bool = False) -> list[float]:
    """One value stands for two; two are put in order."""
    if len(values) == 1:
        return values * 2
    return sorted(values, reverse=falling) if len(values) == 2 else values


def read_kind(text: str, tag: str) -> tuple[Polymer, Filler]:
    sheet = Sheet(text[text.index("\n" + tag) + 1 :])
    for _ in range(8):  # the tag, two integers, two names, three remarks
        sheet.rest_of_line()
    for _ in range(4):  # temperatures and three records that are only told
        sheet.numbers()
    pvt = sheet.numbers()
    sheet.numbers()
    sheet.numbers(labelled=False)
    expansion = pair(sheet.numbers())
    modulus = pair(sheet.numbers(), falling=True)
    poisson = pair(sheet.numbers())
    if sheet.numbers():
        raise ValueError("a sheet that ends at its reserved record is no job of the reference")
    for _ in range(2):
        sheet.numbers(most=1)
    read = dict(enumerate(sheet.numbers(most=6)))
    filler = Filler()
    for place, name in ((2, "expansion"), (3, "modulus"), (4, "poisson"), (5, "density")):
        if read.get(place, -1.0) >= 0.0:
            setattr(filler, name, read[place])
    for _ in range(2):
        sheet.numbers(most=1)
    for _ in range(4):
        sheet.numbers()
    shear = sheet.numbers() or [modulus[0] / ((poisson[0] + 1.0) * 2.0)]
    return Polymer(pvt, expansion, modulus, poisson, shear), filler


def read_polymers(base: Path, two_kinds: bool) -> tuple[list[Polymer], Filler]:
    text = "\n".join(lines_of(base.with_suffix(".MAL"))) + "\n"
    first, filler = read_kind(text, "[First_Kind]")
    if not two_kinds:
        return [first, first], filler
    second, filler = read_kind(text, "[Second_Kind]")
    return [first, second], filler


def read_mesh(base: Path) -> Mesh:
    lines = after_title(base.with_suffix(".PG1"))
    header = lines[0].split()
    elements, nodes = int(header[0]), int(header[1])
    thickness_factor, coordinate_factor = float(header[2]), float(header[3])
    mesh = Mesh(
        points=np.zeros((nodes + 1, 3)),
        nodes=np.zeros((elements + 1, 3), dtype=int),
        thickness=np.zeros(elements + 1),
        order=[],
        factors=(thickness_factor, coordinate_factor),
        corrected=True,
    )
    for line in lines[1 : 1 + elements]:
        values = line.split()
        e = int(values[0])
        mesh.order.append(e)
        mesh.nodes[e] = [int(n) for n in values[1:4]]
        mesh.thickness[e] = float(values[4]) * thickness_factor
        mesh.corrected = mesh.corrected and len(values) > 8
    for line in lines[1 + elements : 1 + elements + nodes]:
        values = line.split()
        mesh.points[int(values[0])] = [float(x) * coordinate_factor for x in values[1:4]]
    return mesh


def read_stress(base: Path, mesh: Mesh, fields: Fields) -> None:
    """Fills stress, orientation and axes; neutral values where the file is absent or refused."""
    path = base.with_suffix(".RS1")
    if not path.exists():
        fields.stress_valid = False
        fields.warnings.append("!! Warring !! Residual stress(*.RS1/RS2) file doesn't exist.")
        return
    records = [line.split() for line in after_title(path)]
    kept = np.array([[float(x) for x in r] for r in records if mesh.nodes[int(r[0]), 2] > 0])
    axes = kept[:, 6:15].reshape(-1, 3, 3)
    lengths = np.linalg.norm(axes, axis=2)
    axes = axes / lengths[:, :, None]
    products = np.abs(np.einsum("tac,tbc->tab", axes, axes))[:, [0, 1, 0], [1, 2, 2]]
    if np.any(lengths < 0.98) or np.any(lengths > 1.02) or np.any(products > 0.02):
        fields.stress_valid = False
        fields.warnings.append(
            "** Warning **  The Residual Stress file is not correct format. The computation process will neglect "
            "residual stress effect and use isotropic properties."
        )
    if len(records) != len(mesh.order):
        fields.stress_valid = False
        fields.warnings.append("!! Warring !!  Residual stress(.RS1/RS2) file element number inconsistent.")
    if fields.stress_valid:
        fields.stress, fields.axes = kept[:, 1:3], axes
        fields.kind_fraction, fields.orientation = kept[:, 4], kept[:, 5]


def read_temperatures(base: Path, mesh: Mesh, fields: Fields) -> None:
    path = base.with_suffix(".PT1")
    if not path.exists():
        fields.warnings.append("!! Warring !!  Part temperature(*.PT1/PT2) file doesn't exist.")
        path, fields.from_cool = base.with_suffix(".CT1"), True
    records = [line.split() for line in after_title(path)]
    kept = [r for r in records if mesh.nodes[int(r[0]), 2] > 0]
    if len(records) != len(mesh.order) or (not fields.from_cool and mesh.runners()):
        raise ValueError(f"{path}: such a file is no job of the reference")
    # a cooling file has the upper side first
    fields.sides = np.array([[float(r[-1]), float(r[1])] for r in kept]) + KELVIN


def read_fields(base: Path, mesh: Mesh) -> Fields:
    count = len(mesh.part())
    fields = Fields(
        stress=np.zeros((count, 2)),
        kind_fraction=np.ones(count),
        orientation=np.ones(count),
        axes=np.tile(np.eye(3), (count, 1, 1)),
        sides=np.zeros((count, 2)),
    )
    read_stress(base, mesh, fields)
    read_temperatures(base, mesh, fields)
    return fields
