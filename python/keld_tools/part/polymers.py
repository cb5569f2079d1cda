"""The polymer and filler of a job, and the package's library of generic materials.

Used by part_file (which fills them), checks (which tests them) and working_files (which writes them).
"""

from __future__ import annotations

import difflib
import re
import tomllib
from dataclasses import dataclass, field
from functools import cache
from pathlib import Path


@dataclass
class Polymer:
    """Elastic data of one kind; lists of two hold the value along the orientation and the one across it."""

    title: str = ""
    modulus_dyn_cm2: list[float] = field(default_factory=list)  # one or two
    poisson: list[float] = field(default_factory=list)  # one or two
    shear_modulus_dyn_cm2: float | None = None  # None: from modulus and poisson
    expansion_per_k: list[float] = field(default_factory=list)  # one or two
    shrinkage_percent: list[float] = field(default_factory=list)  # one or two; sets the expansion where given
    published_percent: list[tuple[float, float]] = field(default_factory=list)  # least and most along and across
    orientation: float = 1.0  # share of the fibres along their direction where a part file gives none
    specific_volume_cgs: list[float] = field(default_factory=list)  # density alone, or 3, 10 or 13 coefficients

    @property
    def anisotropic(self) -> bool:
        return any(len(v) == 2 and v[0] != v[1] for v in (self.modulus_dyn_cm2, self.poisson, self.expansion_per_k))

    @staticmethod
    def pair_as_given(values: list[float]) -> tuple[float, float]:
        """Along and across: one value is doubled."""
        return values[0], values[-1]

    def pair(self, values: list[float], falling: bool = False) -> tuple[float, float]:
        """Two entries as KELD holds them: one is doubled, two are put in order."""
        first, second = sorted((values * 2)[:2] if len(values) == 1 else values, reverse=falling)
        return first, second


@dataclass
class Filler:
    """Fibres or particles that KELD mixes with the polymer."""

    percent: float = 0.0
    by_weight: bool = True
    modulus_dyn_cm2: float = 7e11
    poisson: float = 0.23
    expansion_per_k: float = 3.5e-6
    density_g_cm3: float = 2.5


@cache
def library() -> dict:
    """The tables of polymers.toml by name, "sources" among them."""
    return tomllib.loads(Path(__file__).with_name("polymers.toml").read_text(encoding="utf-8"))


def names() -> list[str]:
    return [name for name in library() if name != "sources"]


def nearest(name: str) -> list[str]:
    """Names of the library that resemble one that isn't in it: "pa66 gf30" is PA66-GF30."""

    def plain(text: str) -> str:
        return re.sub(r"[^a-z0-9]", "", text.lower())

    by_plain = {plain(known): known for known in names()}
    close = difflib.get_close_matches(plain(name), by_plain, 3, 0.6)
    return [by_plain[key] for key in close]


def plain_values(table: dict) -> dict:
    """A library table without ranges and sources: what a user would write in a part file."""
    values = {key: entry["value"] for key, entry in table.items() if isinstance(entry, dict) and "value" in entry}
    return values | ({"filler": plain_values(table["filler"])} if "filler" in table else {})


def published_shrinkage(name: str) -> list[tuple[float, float]]:
    """Least and most percent along and across, as published for the class of a material of the library."""
    entry = library()[name]["shrinkage_percent"]
    return [(entry[way][0], entry[way][1]) for way in ("along", "across")]


def as_list(value) -> list:
    return value if isinstance(value, list) else [value]


def listing() -> str:
    """Every number of the library with its range and source, for `keld-job --polymers`."""
    sources = library()["sources"]
    lines = []
    for name in names():
        table = library()[name]
        lines.append(f"{name}: {table['title']}")
        for prefix, part in (("", table), ("filler ", table.get("filler", {}))):
            for key, entry in part.items():
                if isinstance(entry, dict) and "value" in entry:
                    shown = ", ".join(f"{v:g}" for v in as_list(entry["value"]))
                    lines.append(f"    {prefix + key:30} {shown:<16} (range {entry['range']}; [{entry['source']}])")
        entry = table["shrinkage_percent"]
        ways = " along, ".join("{:g} to {:g}".format(*entry[way]) for way in ("along", "across")) + " across"
        lines.append(f"    {'published shrinkage_percent':30} {ways} ([{entry['source']}])")
        lines.append("")
    return "\n".join(lines + [f"[{key}] {text}" for key, text in sources.items()])
