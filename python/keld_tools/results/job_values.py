"""Job, process and material of a finished job as words and values, out of .PRC and .MAL. Called by the report."""

from __future__ import annotations

import re
from pathlib import Path

import numpy as np

from ..base.units import DYN_CM2_PER_MPA
from .finished_job import FinishedJob

Pairs = list[tuple[str, str]]
UNITS = {"temperature": "C", "time": "s", "pressure": "MPa", "rate": "cm3/s", "percentage": "%"}


def tables(job: FinishedJob) -> list[tuple[str, Pairs]]:
    """(heading, rows) of each table; a file that isn't there gives no rows."""
    found = [
        ("Part", part_of(job)),
        ("Process", value_lines(Path(f"{job.base}.PRC"))),
        ("Material", material_of(Path(f"{job.base}.MAL"))),
    ]
    return [(heading, rows) for heading, rows in found if rows]


def part_of(job: FinishedJob) -> Pairs:
    size = np.ptp(job.part.points_mm[job.nodes], axis=0)
    rows = [
        ("size", " x ".join(f"{s:.4g}" for s in size) + " mm"),
        ("wall", f"{spread(job.part.thickness_mm)} mm"),
        ("triangles, nodes", f"{len(job.part.triangles)}, {len(job.nodes)}"),
        ("held at nodes", ", ".join(str(node + 1) for node in job.boundary)),
    ]
    for name, words, unit in (
        ("temperature_lower_C", "ejection, lower side", "C"),
        ("temperature_upper_C", "ejection, upper side", "C"),
        ("stress1_MPa", "frozen-in stress along", "MPa"),
        ("stress2_MPa", "frozen-in stress across", "MPa"),
        ("orientation", "orientation of the fibres", ""),
    ):
        if name in job.part.cell_data:
            rows.append((words, f"{spread(job.part.cell_data[name])} {unit}".strip()))
    return rows


def spread(values: np.ndarray) -> str:
    """Least to greatest value, one where both agree."""
    low, high = f"{values.min():.4g}", f"{values.max():.4g}"
    return low if low == high else f"{low} to {high}"


def text_or_nothing(path: Path) -> str:
    return path.read_text(encoding="utf-8", errors="replace") if path.is_file() else ""


def value_lines(path: Path) -> Pairs:
    """Label and value of the lines `label string= n flag= n value= x`."""
    rows = []
    for label, value in re.findall(r"^\s*(.*?)\s+string=.*?value=\s*(\S+)", text_or_nothing(path), re.M):
        unit = next((u for word, u in UNITS.items() if word in label.lower() and "by" not in label.split()), "")
        rows.append((label, f"{value} {unit}".strip()))
    return rows


def material_of(path: Path) -> Pairs:
    """Name and elastic data of the kinds; moduli leave dyn/cm2."""
    text, rows = text_or_nothing(path), []
    for label, words, factor, unit in (
        ("Producer", "", 1.0, ""),
        ("Grade", "", 1.0, ""),
        ("Modulus", "modulus", DYN_CM2_PER_MPA, " MPa"),
        ("Poisson", "Poisson ratio", 1.0, ""),
        ("Expansion", "expansion", 1e-6, " um/m K"),
    ):
        for line in re.findall(rf"^\s*{label}\s*=\s*([^\n]*)", text, re.M):
            if not words:
                rows.append((label.lower(), line.strip()))
                continue
            numbers = [float(n) / factor for n in re.findall(r"[-+]?\d[\d.eE+-]*", line)[1:]]
            if numbers:
                rows.append((words, " and ".join(f"{n:.4g}" for n in numbers) + unit))
    return rows
