"""One table of a part file, read key by key: types, units, ranges, and a fault with line and key for whatever is wrong.

Called by part_file.
"""

from __future__ import annotations

import difflib
import math
import re
from dataclasses import dataclass

from ..base import units
from ..base.findings import Findings


@dataclass
class FieldRequest:
    """One per-element quantity: one value for all elements, or the name of cell data of the mesh."""

    value: float | tuple[float, ...] | None = None
    cell_data: str | None = None
    kind: str = "number"
    unit: str = ""
    place: str = ""


class Section:
    """One table of the file, read key by key; what nobody has read in the end is an unknown key."""

    def __init__(self, name: str, table, path, lines: dict, findings: Findings):
        self.name, self.path, self.lines, self.findings = name, path, lines, findings
        self.known: list[str] = []
        self.table = table if isinstance(table, dict) else {}
        if not isinstance(table, dict):
            self.findings.fault(self.place(), "expected a table")

    def place(self, key: str = "") -> str:
        line = self.lines.get((self.name, key)) or self.lines.get((self.name, ""))
        words = [f"[{self.name}]"] * bool(self.name) + [key] * bool(key)
        return ": ".join([f"{self.path}:{line}" if line else f"{self.path}"] + [" ".join(words)] * bool(words))

    def fault(self, key: str, text: str) -> None:
        self.findings.fault(self.place(key), text)

    def take(self, key: str, types, wanted: str, default=None):
        """The value of a key that carries no unit; a wrong type is a fault and gives the default."""
        self.known.append(key)
        value = self.table.get(key, default)
        if key in self.table and (not isinstance(value, types) or isinstance(value, bool) and types is not bool):
            self.fault(key, f"expected {wanted}, found {value!r}")
            return default
        return value

    def find(self, name: str, kind: str) -> tuple[str, str] | None:
        """Key and unit of a quantity, after the faults "no unit" and "given twice"."""
        self.known += [f"{name}_{unit}" if unit else name for unit in units.UNITS[kind]]
        found = [(key, unit) for key in self.table if (unit := units.split_key(key, name, kind)) is not None]
        self.known += [key for key, _ in found]
        for key, unit in found:
            if unit not in units.UNITS[kind]:
                self.fault(key, f"has no unit; write {units.expected(name, kind)}")
                return None
        if len(found) > 1:
            self.fault(found[1][0], f"is given a second time, also as {found[0][0]}")
        return found[0] if found else None

    def quantity(
        self,
        name: str,
        kind: str = "number",
        default=None,
        required: bool = False,
        lengths: tuple[int, ...] = (1,),
        least: float = -math.inf,
        most: float = math.inf,
        above: float = -math.inf,
    ):
        """A number (lengths (1,)) or a list of one of `lengths` entries, in inside units; bounds are inclusive."""
        found = self.find(name, kind)
        if not found:
            if required and not any(units.split_key(key, name, kind) is not None for key in self.table):
                self.fault("", f"has no {units.expected(name, kind)}")
            return default
        key, unit = found
        raw = self.table[key]
        entries = raw if isinstance(raw, list) else [raw]
        if len(entries) not in lengths or (isinstance(raw, list) and lengths == (1,)):
            sizes = " or ".join("one number" if n == 1 else f"a list of {n}" for n in lengths)
            self.fault(key, f"expected {sizes}, found {raw!r}")
            return default
        if not all(is_number(e) for e in entries):
            self.fault(key, f"expected finite numbers, found {raw!r}")
            return default
        values = [units.to_inside(float(e), kind, unit) for e in entries]
        for value, entry in zip(values, entries):
            if not (least <= value <= most and value > above):
                self.fault(key, f"{entry} is out of range" + range_text(least, most, above))
                return default
        return values[0] if lengths == (1,) else values

    def field(self, name: str, kind: str, components: int) -> FieldRequest | None:
        """A value for all elements, or { cell_data = "name" }."""
        found = self.find(name, kind)
        if not found:
            return None
        key, unit = found
        raw = self.table[key]
        request = FieldRequest(kind=kind, unit=unit, place=self.place(key))
        if isinstance(raw, dict):
            if set(raw) != {"cell_data"} or not isinstance(raw["cell_data"], str):
                self.fault(key, f'expected {{ cell_data = "name" }}, found {raw!r}')
                return None
            request.cell_data = raw["cell_data"]
            return request
        entries = raw if isinstance(raw, list) else [raw]
        if len(entries) != components or isinstance(raw, list) != (components > 1) or not all(map(is_number, entries)):
            wanted = "one number" if components == 1 else f"{components} numbers"
            self.fault(key, f'expected {wanted} or {{ cell_data = "name" }}, found {raw!r}')
            return None
        values = tuple(units.to_inside(float(e), kind, unit) for e in entries)
        request.value = values if components > 1 else values[0]
        return request

    def nodes(self, what: str) -> list:
        """Nodes by `what`_nodes (numbers of the mesh file) or `what`_at_UNIT (points)."""
        numbers = self.take(f"{what}_nodes", list, "a list of node numbers", [])
        key, unit = self.find(f"{what}_at", "length") or ("", "")
        points = self.table[key] if key else []
        if numbers and points:
            self.fault(key, f"both {what}_nodes and {key} are given")
        if not all(isinstance(n, int) and not isinstance(n, bool) for n in numbers):
            self.fault(f"{what}_nodes", f"expected a list of node numbers, found {numbers!r}")
            return []
        if not isinstance(points, list) or not all(
            isinstance(p, list) and len(p) == 3 and all(map(is_number, p)) for p in points
        ):
            self.fault(key, f"expected a list of points [x, y, z], found {points!r}")
            return []
        return numbers or [tuple(units.to_inside(float(c), "length", unit) for c in p) for p in points]

    def finish(self) -> None:
        for key in self.table:
            if key not in self.known:
                near = difflib.get_close_matches(key, self.known, 1)
                self.fault(key, "is not known" + (f"; did you mean {near[0]}?" if near else ""))


def key_lines(text: str) -> dict[tuple[str, str], int]:
    """(section, key) -> line number, (section, "") -> line of its head; the second of [[measure]] is "measure 2"."""
    lines: dict[tuple[str, str], int] = {}
    lists: dict[str, int] = {}
    section = ""
    for number, line in enumerate(text.splitlines(), 1):
        if head := re.match(r"\s*(\[\[?)\s*([^\[\]]+?)\s*\]", line):
            section = head[2].replace('"', "")
            if head[1] == "[[":
                lists[section] = lists.get(section, 0) + 1
                section = f"{section} {lists[section]}"
            lines.setdefault((section, ""), number)
        elif key := re.match(r"\s*\"?([\w-]+)\"?\s*=", line):
            lines.setdefault((section, key[1]), number)
    return lines


def is_number(value) -> bool:
    return isinstance(value, (int, float)) and not isinstance(value, bool) and math.isfinite(value)


def range_text(least: float, most: float, above: float) -> str:
    bounds = [f"at least {least:g}"] if least > -math.inf else [f"above {above:g}"] if above > -math.inf else []
    bounds += [f"at most {most:g}"] if most < math.inf else []
    return f": it must be {' and '.join(bounds)}" if bounds else ""
