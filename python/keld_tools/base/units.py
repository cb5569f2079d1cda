"""Units that key names of a part file may carry, and their factors to those used inside.

Inside the tools: mm, degrees Celsius, dyn/cm2, 1/K, g/cm3. A key is NAME_UNIT: thickness_mm, modulus_GPa.
"""

from __future__ import annotations

# kind of quantity -> unit suffix -> (factor, offset): inside = value * factor + offset
UNITS: dict[str, dict[str, tuple[float, float]]] = {
    "length": {"mm": (1.0, 0.0), "cm": (10.0, 0.0), "m": (1000.0, 0.0), "inch": (25.4, 0.0)},
    "stress": {
        "MPa": (1e7, 0.0),
        "GPa": (1e10, 0.0),
        "Pa": (10.0, 0.0),
        "dyn_cm2": (1.0, 0.0),
        "psi": (68947.572931683, 0.0),
    },
    "pressure": {"MPa": (1.0, 0.0), "bar": (0.1, 0.0), "psi": (0.0068947572931683, 0.0)},
    "temperature": {"C": (1.0, 0.0), "K": (1.0, -273.15), "F": (5.0 / 9.0, -160.0 / 9.0)},
    "expansion": {"per_K": (1.0, 0.0), "um_per_m_K": (1e-6, 0.0)},
    "density": {"g_cm3": (1.0, 0.0), "kg_m3": (1e-3, 0.0)},
    "flow": {"cm3_s": (1.0, 0.0)},
    "time": {"s": (1.0, 0.0)},
    "angle": {"deg": (1.0, 0.0)},
    "percent": {"percent": (1.0, 0.0)},
    "number": {"": (1.0, 0.0)},
}

LENGTH_TO_MM = {unit: factor for unit, (factor, _) in UNITS["length"].items()}
DYN_CM2_PER_MPA = 1e7
CM_PER_MM = 0.1


def split_key(key: str, name: str, kind: str) -> str | None:
    """The unit of `key` when it is NAME or NAME_UNIT of this quantity, else None; "" where none is given."""
    if key == name:
        return ""
    unit = key[len(name) + 1 :]
    return unit if key.startswith(name + "_") and unit in UNITS[kind] else None


def to_inside(value, kind: str, unit: str):
    """A number or an array in the unit of its key, in the unit used inside."""
    factor, offset = UNITS[kind][unit]
    return value * factor + offset


def expected(name: str, kind: str) -> str:
    return " or ".join(f"{name}_{unit}" if unit else name for unit in UNITS[kind])
