"""study.toml: a part file and its variants. Called by study_cli; every fault names file and key."""

from __future__ import annotations

import copy
import itertools
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any

import numpy as np

from ..base.findings import BadFile, Findings
from ..part.part_section import Section, is_number
from ..part.toml_file import read_toml

MOST_RUNS = 10000
RANGE = {"from", "to", "steps"}


@dataclass
class Variant:
    name: str
    values: dict[str, Any]  # "conditions.melt_temperature_C" -> value


@dataclass
class Plan:
    part: Path
    document: dict  # of the part file
    part_lines: dict  # its lines, for faults
    output: Path
    drawing: Path | None  # None: the measures of the part file
    keys: list[str] = field(default_factory=list)  # all that vary
    variants: list[Variant] = field(default_factory=list)


def read_plan(path: Path, output: str | None, findings: Findings) -> Plan:
    document, lines = read_toml(path)
    section = Section("", document, path, lines, findings)
    part = path.parent / section.take("part", str, "a file name", "")
    name = section.take("output", str, "a base name", path.stem)
    drawing = section.take("drawing", str, "a file name", None)
    vary = section.take("vary", dict, "a table", {})
    listed = section.take("variant", list, "[[variant]] tables", [])
    section.finish()
    if not document.get("part"):
        section.fault("", "has no part: the part file to vary")
        return Plan(part, {}, {}, path, None)
    part_document, part_lines = read_toml(part)
    target = Path(output) if output else path.parent / name
    plan = Plan(part, part_document, part_lines, target, path.parent / drawing if drawing else None)
    choices = {key: values_of(value, key, section) for key, value in flattened(vary).items()}
    plan.variants = [Variant("", dict(zip(choices, values))) for values in itertools.product(*choices.values())]
    if listed:
        plan.variants = [named(v, entry) for entry in listed for v in plan.variants or [Variant("", {})]]
    elif not choices:
        section.fault("", "has nothing to vary: give [vary] or [[variant]]")
        plan.variants = []
    if len(plan.variants) > MOST_RUNS:
        section.fault("vary", f"makes {len(plan.variants)} runs, more than {MOST_RUNS}")
    plan.keys = list(dict.fromkeys(key for variant in plan.variants for key in variant.values))
    for number, variant in enumerate(plan.variants, 1):
        variant.name = variant.name or f"{number:0{len(str(len(plan.variants)))}d}"
    return plan


def named(base: Variant, entry: dict) -> Variant:
    """A listed variant, over one combination of [vary]."""
    own = {key: value for key, value in flattened(entry).items() if key != "name"}
    return Variant(str(entry.get("name", "")) if not base.values else "", base.values | own)


def flattened(table: dict, above: str = "") -> dict[str, Any]:
    """Keys with dots, whether they were written so or as tables; a range stays a table."""
    result: dict[str, Any] = {}
    for key, value in table.items():
        if isinstance(value, dict) and not set(value) <= RANGE:
            result |= flattened(value, f"{above}{key}.")
        else:
            result[f"{above}{key}"] = value
    return result


def values_of(value, key: str, section: Section) -> list:
    """The list itself, or the steps of { from, to, steps }."""
    if isinstance(value, list) and value:
        return value
    if isinstance(value, dict) and set(value) == RANGE:
        steps = value["steps"]
        if is_number(value["from"]) and is_number(value["to"]) and isinstance(steps, int) and 2 <= steps <= MOST_RUNS:
            return [float(f"{v:.12g}") for v in np.linspace(value["from"], value["to"], steps)]
    section.fault("vary", f"{key}: expected a list of values or {{ from = a, to = b, steps = n }}, found {value!r}")
    return [None]


def applied(plan: Plan, variant: Variant) -> dict:
    """The part file's document with the variant's values in it."""
    document = copy.deepcopy(plan.document)
    for key, value in variant.values.items():
        *tables, last = key.split(".")
        place = document
        for name in tables:
            place = place.setdefault(name, {})
            if not isinstance(place, dict):
                raise BadFile(plan.part, f"{key}: {name} is a value, not a table")
        place[last] = value
    return document
