"""The text of every working file of a job, in the order of fields and the spellings that keld reads.

Called by job_cli (all files) and compensate (.PG1, .BC1). Lengths arrive in mm, stress in dyn/cm2, temperatures in C.
"""

from __future__ import annotations

import numpy as np

from ..base.ownership import MADE_BY_JOB as MADE_BY
from ..part.part_file import Part
from ..part.polymers import Filler, Polymer
from . import free_shrinkage

SUFFIXES = (".PG1", ".PRC", ".CPU", ".MAL", ".BC1", ".RS1", ".PT1", ".CT1", ".origin.json")
UNKNOWN_NODE = 0


def title(lines: list[str]) -> str:
    """A title block; keld reads lines of at most 120 bytes there."""
    safe = [
        line.replace("*/", "* /").replace("\n", " ").encode(errors="replace")[:110].decode(errors="ignore")
        for line in lines
    ]
    return "/* " + "\n   ".join(safe) + " */\n"


def rows(form: str, *columns: np.ndarray) -> str:
    """One formatted line per entry of the columns; all lines by one formatting call."""
    parts = [part for column in columns for part in ([column] if column.ndim == 1 else list(column.T))]
    flat: list[float] = [0.0] * (len(parts) * len(parts[0]))
    for at, part in enumerate(parts):
        flat[at :: len(parts)] = part.tolist()
    return (form * len(parts[0])) % tuple(flat)


def geometry(heading: list[str], points, triangles, thickness, runners, diameter, gates) -> str:
    """.PG1 in mm with factors to cm: triangles, then runners, then nodes; numbers from 1.

    thickness (T,), diameter (R,), gates: node indices from 0.
    """
    t, r, n = len(triangles), len(runners), len(points)
    flag = np.zeros(n, np.int64)
    flag[list(gates)] = 1
    element = "%d %d %d %d %.9g 0 1 0\n"
    return "".join(
        [
            title(heading),
            f"{t + r} {n} 0.1 0.1\n",
            rows(element, np.arange(1, t + 1), triangles + 1, thickness),
            rows(element, np.arange(t + 1, t + r + 1), runners + 1, np.zeros(r, np.int64), diameter),
            rows("%d %.10g %.10g %.10g %d\n", np.arange(1, n + 1), points, flag),
        ]
    )


def stress(heading: list[str], stress1, stress2, fraction, orientation, axes, runners: int) -> str:
    """.RS1: stress in dyn/cm2, fractions, and the three unit axes (T, 3, 3) per triangle; a record per runner too."""
    t = len(stress1)
    body = rows(
        "%d %.9g %.9g 1 %.9g %.9g" + " %.9g" * 9 + "\n",
        np.arange(1, t + 1),
        stress1,
        stress2,
        fraction,
        orientation,
        axes.reshape(t, 9),
    )
    ends = "".join(f"{n} 0 0 1 1 1 1 0 0 0 1 0 0 0 1\n" for n in range(t + 1, t + runners + 1))
    return title(heading) + body + ends


def temperatures(heading: list[str], lower, upper, runners: int) -> tuple[str, str]:
    """Suffix and text of the temperature file: .PT1 where both sides agree, else .CT1, the upper side first."""
    t = len(lower)
    number = np.arange(1, t + runners + 1)
    low, high = (np.concatenate([side, np.full(runners, side[-1])]) for side in (lower, upper))
    if np.array_equal(lower, upper):
        return ".PT1", title(heading) + rows("%d %.9g\n", number, low)
    return ".CT1", title(heading) + rows("%d %.9g %.9g\n", number, high, low)


def value_line(label: str, number: int, value) -> str:
    return f"  {label} string= {number}  flag= 1  value= {value:.10g}\n"


def process(part: Part, ejection: float) -> str:
    """.PRC: the fifteen process values in their order, then the ambient temperature.

    keld takes melt temperatures, filler, second polymer and ambient; the others, `ejection` too, are for its report.
    """
    c = part.conditions
    values = [
        ("Filling time", c.fill_time_s),
        ("Melt temperature of the first polymer", c.melt_temperature_c),
        ("Mould temperature", c.mould_temperature_c),
        ("Injection pressure", c.injection_pressure_mpa),
        ("Flow rate", c.flow_rate_cm3_s),
        ("Packing time", c.packing_time_s),
        ("Packing pressure", c.packing_pressure_mpa),
        ("Cooling time", c.cooling_time_s),
        ("Mould opening time", c.mould_opening_time_s),
        ("Ejection temperature", ejection),
        ("Filler present", int(part.filler is not None)),
        ("Filler percentage by", 2),  # volume: by weight keld takes the compound's density for the polymer's
        ("Filler percentage", 100.0 * free_shrinkage.filler_volume_fraction(part)),
        ("Polymers", int(part.second is not None)),
        (
            "Melt temperature of the second polymer",
            c.melt_temperature_c if c.second_melt_temperature_c is None else c.second_melt_temperature_c,
        ),
    ]
    lines = [value_line(label, 20001 + i, value) for i, (label, value) in enumerate(values)]
    return "".join(
        [
            f"process conditions, {MADE_BY}\n",
            "[Flpk_ProcessData]\n",
            *lines,
            "[EOF]\n\n",
            "[Keld_ProcessData]\n",
            value_line("Ambient temperature", 21001, c.ambient_temperature_c),
            "[EOF]\n",
        ]
    )


def settings(solver: str, cycle_limit: int, wall_model: str) -> str:
    """.CPU: ten values, of which keld takes the boundary nodes (0: its own choice) and the cycle limit; then keld's own
    section with the wall model, "wedge" or "facet", and the solver, "automatic", "direct" or "multigrid"."""
    labels = [
        "Not used",
        "Solver (2 direct, other values multigrid)",
        "Not used",
        "Not used",
        "Boundary node 1",
        "Boundary node 2",
        "Boundary node 3",
        "Not used",
        "Not used",
    ]
    values = [1, 1 if solver == "multigrid" else 2, 0, 0, UNKNOWN_NODE, UNKNOWN_NODE, UNKNOWN_NODE, 0, 0]
    lines = [value_line(label, 22001 + i, value) for i, (label, value) in enumerate(zip(labels, values))]
    return "".join(
        [
            f"compute settings, {MADE_BY}\n",
            "[Keld_ComputeData]\n",
            "\n",
            "\n",
            *lines,
            value_line("Cycle limit", 30500, cycle_limit),
            "\n[Keld_Extension]\n",
            "\n",
            "\n",
            value_line("Wall model (1 wedge, 2 facet)", 31001, {"wedge": 1, "facet": 2}[wall_model]),
            value_line(
                "Solver (1 as above, 2 aggregation, 3 automatic)",
                31002,
                {"direct": 1, "multigrid": 2, "automatic": 3}[solver],
            ),
            "[EOF]\n",
        ]
    )


def boundary(nodes) -> str:
    """.BC1: three node numbers, from 1; keld passes over what stands behind them."""
    return "[Keld_FixBC]\n" + "".join(f"{node}\n" for node in nodes) + f"{MADE_BY}\n"


def counted(label: str, values) -> str:
    return f"   {label} = {len(values)}" + "".join(f"   {v:.10g}" for v in values) + "  end\n"


def kind_block(tag: str, polymer: Polymer, filler: Filler | None, temperatures_c: list[float]) -> str:
    f = filler or Filler()
    shear = [] if polymer.shear_modulus_dyn_cm2 is None else [polymer.shear_modulus_dyn_cm2]
    name = polymer.title.replace("\n", " ")
    return "".join(
        [
            f"{tag}\n",
            " Data kind = 3\n",
            " Polymer number = 1\n",
            f" Producer = {MADE_BY}\n",
            f" Grade = {name}\n",
            " units: cm, g, s, K; stress in dyn/cm2\n",
            " pairs: along and across the fibres\n",
            "\n",
            counted("Temperatures", temperatures_c),
            counted("Thermal conductivity", []),
            counted("Heat capacity", []),
            counted("Viscosity", []),
            counted("Specific volume", polymer.specific_volume_cgs),
            counted("Viscoelastic", []),
            "      0  end\n",
            counted("Expansion", polymer.expansion_per_k),
            counted("Modulus", polymer.modulus_dyn_cm2),
            counted("Poisson", polymer.poisson),
            counted("Reserved", []),
            " Ejection = 0\n",
            " No flow = 0\n",
            counted("Filler", [0, 25, f.expansion_per_k, f.modulus_dyn_cm2, f.poisson, f.density_g_cm3]),
            " Shrinkage = 0\n",
            " Weld = 0\n",
            " Series = 0\n",
            counted("Series A", []),
            counted("Series B", []),
            counted("Series C", []),
            counted("Shear modulus", shear),
            "\n",
        ]
    )


def material(part: Part) -> str:
    """.MAL: one or two kinds; moduli in dyn/cm2, expansion in 1/K, density in g/cm3."""
    c = part.conditions
    text = f"Polymer of {part.title or part.base.name}, {MADE_BY}".replace("\n", " ").replace("[", "(") + "\n"
    text += kind_block("[First_Kind]", part.polymer, part.filler, [c.melt_temperature_c, c.mould_temperature_c])
    if part.second:
        text += kind_block(
            "[Second_Kind]",
            part.second,
            part.filler,
            [
                c.melt_temperature_c if c.second_melt_temperature_c is None else c.second_melt_temperature_c,
                c.mould_temperature_c,
            ],
        )
    return text
