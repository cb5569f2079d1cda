"""Reading PART.toml: what the user asks for, with every fault named by line, section and key.

Called by job_cli. Values leave here in the units of units.py; nothing here looks at the mesh.
"""

from __future__ import annotations

import math
from dataclasses import dataclass, field
from pathlib import Path

from ..base import units
from ..base.findings import Findings
from . import polymers
from .drawing import Drawing, drawing_of
from .part_section import FieldRequest, Section, is_number
from .polymers import Filler, Polymer
from .toml_file import read_toml


@dataclass
class MeshRequest:
    path: Path = Path()
    place: str = ""
    to_mm: float | None = None  # of the file's length unit; None: as the file says, else 1
    merge_tolerance_mm: float | None = None  # None: only for formats without shared nodes
    thickness_mm: FieldRequest | None = None
    thickness_by_group_mm: dict[str, float] = field(default_factory=dict)
    runners: bool = True
    runner_diameter_mm: float | None = None
    gate_nodes: list = field(default_factory=list)  # numbers, or points in mm
    orient: bool = False
    repair_below_mm: float | None = None  # edges below it collapse
    leave_out: bool = False  # elements that can be no wall are left out, not a fault


@dataclass
class Conditions:
    """The fields that KELD only echoes keep their usual values where none is given."""

    melt_temperature_c: float = math.nan
    second_melt_temperature_c: float | None = None
    mould_temperature_c: float = math.nan
    ambient_temperature_c: float = 23.0
    fill_time_s: float = 1.0
    packing_time_s: float = 5.0
    packing_pressure_mpa: float = 40.0
    cooling_time_s: float = 15.0
    mould_opening_time_s: float = 5.0
    injection_pressure_mpa: float = 80.0
    flow_rate_cm3_s: float = 30.0


@dataclass
class Part:
    title: str = ""
    base: Path = Path()
    mesh: MeshRequest = field(default_factory=MeshRequest)
    polymer: Polymer = field(default_factory=Polymer)
    second: Polymer | None = None
    filler: Filler | None = None
    conditions: Conditions = field(default_factory=Conditions)
    fields: dict[str, FieldRequest] = field(default_factory=dict)
    csv: Path | None = None
    csv_mapping: str | None = None  # element, nearest, inverse_distance; None: by the columns
    boundary_nodes: list = field(default_factory=list)  # numbers, or points in mm
    solver: str = "automatic"  # or "direct", "multigrid"
    cycle_limit: int = 3000
    wall_model: str = "facet"  # or "wedge"
    drawing: Drawing = field(default_factory=Drawing)  # measures to take of the moulded part
    places: dict[str, str] = field(default_factory=dict)  # section -> "file:line: [section]"

    @property
    def last_melt_temperature_c(self) -> float:
        """Of the last polymer kind, whose density turns weight into volume."""
        second = self.conditions.second_melt_temperature_c
        return self.conditions.melt_temperature_c if second is None else second


# Per-element quantities of [fields]: name -> (kind of unit, number of components)
FIELDS = {
    "stress1": ("stress", 1),
    "stress2": ("stress", 1),
    "fibre_direction": ("number", 3),
    "orientation": ("number", 1),
    "orientation_tensor": ("number", 6),  # a11, a22, a33, a12, a13, a23 in global axes
    "kind_fraction": ("number", 1),
    "ejection_temperature": ("temperature", 1),
    "ejection_temperature_lower": ("temperature", 1),
    "ejection_temperature_upper": ("temperature", 1),
}


CSV_MAPPINGS = ("element", "nearest", "inverse_distance")


def read_part_file(path: Path, findings: Findings) -> Part:
    """The part of a TOML file. Raises BadFile when it can't be read or isn't TOML."""
    document, lines = read_toml(path)
    return read_part(document, path, lines, findings, path.parent)


def read_part(document: dict, path, lines: dict, findings: Findings, folder: Path) -> Part:
    """The part of a parsed document; all faults go to `findings`, relative paths start at `folder`."""

    def section(name: str) -> Section:
        return Section(name, document.get(name, {}), path, lines, findings)

    top, part = Section("", document, path, lines, findings), Part()
    top.known += ["measure", "datum"]
    for name in ("mesh", "polymer", "second_polymer", "filler", "conditions", "fields", "boundary", "solver"):
        top.known.append(name)
        part.places[name] = Section(name, {}, path, lines, Findings()).place()
    part.title = top.take("title", str, "a text", "")
    output = top.take("output", str, "a text", "") or Path(path).stem
    part.base = folder / output
    top.finish()
    read_mesh(section("mesh"), part, folder)
    material = section("polymer")
    base = library_values(material)
    part.polymer = read_polymer(material, base)
    if "second_polymer" in document:
        second = section("second_polymer")
        part.second = read_polymer(second, library_values(second))
    read_filler(section("filler"), part, base.get("filler", {}), "filler" in document)
    read_conditions(section("conditions"), part, base)
    read_fields(section("fields"), part, folder, base)
    boundary = section("boundary")
    part.boundary_nodes = boundary.nodes("fixed")
    boundary.finish()
    read_solver(section("solver"), part)
    part.drawing = drawing_of(document, path, lines, findings)
    return part


def read_mesh(section: Section, part: Part, folder: Path) -> None:
    mesh = part.mesh
    name = section.take("file", str, "a file name", "")
    mesh.place = section.place("file")
    if not name and not isinstance(section.table.get("file", ""), str):
        pass  # told already
    elif not name:
        section.fault("file" if "file" in section.table else "", "has no file: the name of the mesh to read")
    mesh.path = folder / name if name else Path()
    unit = section.take("length_unit", str, "a unit", None)
    if unit is not None and unit not in units.LENGTH_TO_MM:
        section.fault("length_unit", f"{unit!r} is not known; one of {', '.join(units.LENGTH_TO_MM)}")
    mesh.to_mm = None if unit is None else units.LENGTH_TO_MM.get(unit, 1.0)
    mesh.merge_tolerance_mm = section.quantity("merge_tolerance", "length", least=0.0)
    mesh.thickness_mm = section.field("thickness", "length", 1)
    if mesh.thickness_mm and isinstance(mesh.thickness_mm.value, float) and mesh.thickness_mm.value <= 0.0:
        section.findings.fault(mesh.thickness_mm.place, "a thickness must be above 0")
    key, group_unit = section.find("thickness_by_group", "length") or ("", "mm")
    groups = section.table[key] if key else {}
    if not isinstance(groups, dict) or not all(is_number(v) and v > 0 for v in groups.values()):
        section.fault(key, "expected a table of group = thickness above 0")
        groups = {}
    mesh.thickness_by_group_mm = {str(k): units.to_inside(float(v), "length", group_unit) for k, v in groups.items()}
    mesh.runners = section.take("runners", bool, "true or false", True)
    mesh.runner_diameter_mm = section.quantity("runner_diameter", "length", above=0.0)
    mesh.orient = section.take("orient_triangles", bool, "true or false", False)
    mesh.repair_below_mm = section.quantity("repair_edges_below", "length", above=0.0)
    mesh.leave_out = section.take("leave_out", bool, "true or false", False)
    mesh.gate_nodes = section.nodes("gate")
    section.finish()


def library_values(section: Section) -> dict:
    """What the library gives under the section's `name`; empty without a name.

    An unknown name is one fault: the nearest material stands in for it, so that no other fault follows from it.
    """
    name = section.take("name", str, "a name of the library", None)
    if name is None:
        return {}
    if name not in polymers.names():
        near = polymers.nearest(name)
        section.fault(
            "name",
            f"{name!r} is not in the library; nearest: {', '.join(near)}"
            if near
            else f"{name!r} is not in the library, " f"which has {', '.join(polymers.names())}",
        )
        name = (near or polymers.names())[0]
    more = {"title": polymers.library()[name]["title"], "published": polymers.published_shrinkage(name)}
    return polymers.plain_values(polymers.library()[name]) | more


def read_polymer(section: Section, base: dict) -> Polymer:
    """The library's values with the section's own in their place."""
    own = section.table

    def has(name, kind):
        return any(units.split_key(key, name, kind) is not None for key in own)

    merged = dict(base)
    for name, kind in (
        ("modulus", "stress"),
        ("poisson", "number"),
        ("expansion", "expansion"),
        ("density", "density"),
        ("shear_modulus", "stress"),
    ):
        if (
            has(name, kind)
            or name == "shear_modulus"
            and has("modulus", "stress")
            or name == "density"
            and "specific_volume" in own
        ):
            merged = {k: v for k, v in merged.items() if units.split_key(k, name, kind) is None}
    # Library values of temperatures and the filler table are for read_conditions and read_filler.
    keep = ("modulus_MPa", "poisson", "shear_modulus_MPa", "expansion_per_K", "density_g_cm3")
    section.table = {k: v for k, v in merged.items() if k in keep} | own
    polymer = Polymer(title=section.take("title", str, "a text", base.get("title", "user's own polymer")))
    polymer.modulus_dyn_cm2 = section.quantity("modulus", "stress", [], True, (1, 2), above=0.0)
    polymer.poisson = section.quantity("poisson", "number", [], True, (1, 2), above=-1.0, most=0.4999)
    polymer.shear_modulus_dyn_cm2 = section.quantity("shear_modulus", "stress", above=0.0)
    polymer.shrinkage_percent = section.quantity("shrinkage", "percent", [], False, (1, 2), above=0.0, most=10.0)
    if polymer.shrinkage_percent and has("expansion", "expansion"):
        section.fault("shrinkage_percent", "both an expansion and the shrinkage that sets it are given")
    polymer.expansion_per_k = section.quantity("expansion", "expansion", [], not polymer.shrinkage_percent, (1, 2))
    polymer.orientation = base.get("orientation", 1.0)
    polymer.published_percent = base.get("published", [])
    tait = section.quantity("specific_volume", "number", [], False, (3, 10, 13))
    density = section.quantity("density", "density", None, not tait, above=0.0)
    if tait and density:
        section.fault("specific_volume", "both a density and specific volume coefficients are given")
    polymer.specific_volume_cgs = tait or ([density] if density else [])
    section.finish()
    return polymer


def read_filler(section: Section, part: Part, base: dict, given: bool) -> None:
    if not given and not base:
        return
    own = section.table
    if "volume_percent" in own:
        base = {k: v for k, v in base.items() if k != "weight_percent"}
    for name, kind in (
        ("modulus", "stress"),
        ("poisson", "number"),
        ("expansion", "expansion"),
        ("density", "density"),
        ("weight_percent", "number"),
    ):
        if any(units.split_key(key, name, kind) is not None for key in own):
            base = {k: v for k, v in base.items() if units.split_key(k, name, kind) is None}
    section.table = base | own
    filler = Filler()
    weight = section.quantity("weight_percent", above=0.0, most=99.0)
    volume = section.quantity("volume_percent", above=0.0, most=99.0)
    if weight is None and volume is None and not {"weight_percent", "volume_percent"} & set(section.table):
        section.fault("", "has neither weight_percent nor volume_percent")
    if weight is not None and volume is not None:
        section.fault("volume_percent", "both weight_percent and volume_percent are given")
    filler.by_weight = weight is not None
    filler.percent = weight if weight is not None else volume or 0.0
    filler.modulus_dyn_cm2 = section.quantity("modulus", "stress", filler.modulus_dyn_cm2, above=0.0)
    filler.poisson = section.quantity("poisson", "number", filler.poisson, least=0.0, most=0.4999)
    filler.expansion_per_k = section.quantity("expansion", "expansion", filler.expansion_per_k, least=0.0)
    filler.density_g_cm3 = section.quantity("density", "density", filler.density_g_cm3, above=0.0)
    section.finish()
    part.filler = filler


def read_conditions(section: Section, part: Part, base: dict) -> None:
    c = part.conditions

    def temperature(name: str, default):
        required = default is None and not any(
            units.split_key(key, name, "temperature") is not None for key in section.table
        )
        value = section.quantity(name, "temperature", default, required, least=-273.0)
        return math.nan if value is None else value

    c.melt_temperature_c = temperature("melt_temperature", base.get("melt_temperature_C"))
    c.mould_temperature_c = temperature("mould_temperature", base.get("mould_temperature_C"))
    c.ambient_temperature_c = temperature("ambient_temperature", c.ambient_temperature_c)
    c.second_melt_temperature_c = section.quantity(
        "second_melt_temperature", "temperature", None, part.second is not None
    )
    if c.second_melt_temperature_c is not None and part.second is None:
        section.fault("second_melt_temperature", "needs a [second_polymer]")
    for field_name, name, kind in (
        ("fill_time_s", "fill_time", "time"),
        ("packing_time_s", "packing_time", "time"),
        ("cooling_time_s", "cooling_time", "time"),
        ("mould_opening_time_s", "mould_opening_time", "time"),
        ("injection_pressure_mpa", "injection_pressure", "pressure"),
        ("packing_pressure_mpa", "packing_pressure", "pressure"),
        ("flow_rate_cm3_s", "flow_rate", "flow"),
    ):
        setattr(c, field_name, section.quantity(name, kind, getattr(c, field_name), least=0.0))
    for name in ("ejection_temperature", "ejection_temperature_lower", "ejection_temperature_upper"):
        request = section.field(name, "temperature", 1)
        if request:
            part.fields[name] = request
    section.finish()


def read_fields(section: Section, part: Part, folder: Path, base: dict) -> None:
    csv = section.take("csv", str, "a file name", None)
    part.csv = folder / csv if csv else None
    part.csv_mapping = section.take("csv_mapping", str, "a text", None)
    if part.csv_mapping not in (None, *CSV_MAPPINGS):
        section.fault("csv_mapping", f"expected one of {', '.join(CSV_MAPPINGS)}, found {part.csv_mapping!r}")
    for name, (kind, components) in FIELDS.items():
        if name.startswith("ejection"):
            continue
        request = section.field(name, kind, components)
        if request:
            part.fields[name] = request
    section.finish()
    sides = [f"ejection_temperature_{side}" for side in ("lower", "upper")]
    if "ejection_temperature" in part.fields and any(s in part.fields for s in sides):
        section.findings.fault(part.places["conditions"], "give ejection_temperature or the two sides, not both")
    elif (
        "ejection_temperature" not in part.fields
        and "ejection_temperature_C" in base
        and not all(s in part.fields for s in sides)
        and not any(s in part.fields for s in sides)
    ):
        part.fields["ejection_temperature"] = FieldRequest(
            base["ejection_temperature_C"], kind="temperature", unit="C", place="library"
        )
    for request in part.fields.values():
        if request.kind == "temperature" and isinstance(request.value, float) and request.value < -273.0:
            section.findings.fault(request.place, "is below absolute zero")


def read_solver(section: Section, part: Part) -> None:
    method = section.take("method", str, "a text", part.solver)
    if method not in ("automatic", "direct", "multigrid"):
        section.fault("method", f'expected "automatic", "direct" or "multigrid", found {method!r}')
    part.solver = method
    limit = section.take("cycle_limit", int, "a whole number", part.cycle_limit)
    if not 1 <= limit <= 9999:
        section.fault("cycle_limit", f"{limit} is out of range: it must be 1 to 9999")
    part.cycle_limit = limit
    part.wall_model = section.take("wall_model", str, "a text", part.wall_model)
    if part.wall_model not in ("facet", "wedge"):
        section.fault("wall_model", f'expected "facet" or "wedge", found {part.wall_model!r}')
    section.finish()
