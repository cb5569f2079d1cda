"""Free shrinkage of a job in the two directions of the fibres, and the expansion that gives a told one.

Called by job_files. Free: what a flat wall of one temperature shrinks by from ejection to ambient. KELD forms it as
expansion x change of temperature, with the expansion averaged over the orientation a1: along l a1 + t (1 - a1),
across l (1 - a1) + t a1, where l and t are those of fully aligned fibres.
"""

from __future__ import annotations

import math

import numpy as np

from ..base.findings import Findings
from ..part.part_file import Part
from ..part.polymers import Filler, Polymer

FIBRE_SHAPE = 50.0  # of KELD's longitudinal modulus
LEAST_SPREAD = 0.05  # of 2 a1 - 1: nearer to a random orientation two figures can't be told apart
KELVIN = 273.15  # at 0 C
DENSITY_PRESSURE = 1e7  # dyn/cm2, at which a weight fraction becomes one by volume


def aligned_expansion(polymer: Polymer, filler: Filler | None, fraction: float) -> tuple[float, float]:
    """1/K along and across fully aligned fibres, as KELD takes or mixes them; fraction: the filler's, by volume."""
    one_modulus = abs(polymer.modulus_dyn_cm2[0] - polymer.modulus_dyn_cm2[-1]) < 1.0
    if filler is None or not one_modulus or abs(polymer.expansion_per_k[0] - polymer.expansion_per_k[-1]) > 1e-15:
        return polymer.pair(polymer.expansion_per_k)
    return mixed_expansion(polymer, filler, fraction)


def mixed_expansion(polymer: Polymer, filler: Filler, v: float) -> tuple[float, float]:
    """Expansion of aligned fibres of volume fraction v in a polymer of one modulus (docs/model.md, Material)."""
    e, nu, a = (
        sum(values) / len(values) for values in (polymer.modulus_dyn_cm2, polymer.poisson, polymer.expansion_per_k)
    )
    ratio = filler.modulus_dyn_cm2 / e
    eta = (ratio - 1.0) / (ratio + FIBRE_SHAPE)
    e11 = e * (1.0 + FIBRE_SHAPE * eta * v) / (1.0 - eta * v)
    bulk, filler_bulk = e / (3.0 * (1.0 - 2.0 * nu)), filler.modulus_dyn_cm2 / (3.0 * (1.0 - 2.0 * filler.poisson))
    mean = a * (1.0 - v) + filler.expansion_per_k * v
    series = (1.0 - v) / e + v / filler.modulus_dyn_cm2
    psi = (series - 1.0 / e11) / (series - 1.0 / ((1.0 - v) * e + v * filler.modulus_dyn_cm2) + 1e-20)
    stiff = (bulk * a * (1.0 - v) + filler_bulk * filler.expansion_per_k * v) / ((1.0 - v) * bulk + v * filler_bulk)
    nu12 = (1.0 - v) * nu + v * filler.poisson
    across = (1.0 + nu) * a * (1.0 - v) + (1.0 + filler.poisson) * filler.expansion_per_k * v - mean * nu12
    return mean + psi * (stiff - mean), across


def filler_volume_fraction(part: Part) -> float:
    """By the density of the last polymer kind at its melt temperature; 0 without a filler."""
    filler = part.filler
    if filler is None:
        return 0.0
    share = filler.percent / 100.0
    if not filler.by_weight:
        return share
    melt = part.last_melt_temperature_c + KELVIN
    density = polymer_density((part.second or part.polymer).specific_volume_cgs, DENSITY_PRESSURE, melt)
    volume = share / filler.density_g_cm3
    return volume / (volume + (1.0 - share) / density)


def polymer_density(c: list[float], pressure: float, temperature: float) -> float:
    """g/cm3 at dyn/cm2 and K: one value, Spencer and Gilmore's three coefficients, or those of the Tait equation."""
    if len(c) == 1:
        return c[0]
    if len(c) == 3:
        return 1.0 / (temperature * c[2] / (pressure + c[0]) + 1.0 / (c[1] + 1e-30))
    x = temperature - c[8]
    melt = temperature >= c[9] * pressure + c[8]
    volume = c[0] + c[1] * x if melt else c[4] + c[5] * x
    b = c[2] * math.exp(-c[3] * x) if melt else c[6] * math.exp(-c[7] * x)
    transition = c[10] * math.exp(c[11] * x - c[12] * pressure) if not melt and len(c) != 10 else 0.0
    return 1.0 / (volume * (1.0 - 0.0894 * math.log(1.0 + pressure / b)) + transition)


def averaged(aligned: tuple[float, float], a1: float) -> tuple[float, float]:
    """Values along and across the mean direction of fibres with orientation a1."""
    along, across = aligned
    return along * a1 + across * (1.0 - a1), along * (1.0 - a1) + across * a1


def mean_change(lower: np.ndarray, upper: np.ndarray, ambient: float, area: np.ndarray) -> float:
    """K from ejection to ambient, mean over the part; what is colder than ambient doesn't change."""
    change = 0.5 * (np.maximum(lower - ambient, 0.0) + np.maximum(upper - ambient, 0.0))
    return float(np.average(change, weights=area if area.any() else None))


def set_expansion(
    polymer: Polymer, filler: Filler | None, a1: float, change: float, place: str, findings: Findings
) -> None:
    """The expansion by which the job's free shrinkage is the polymer's told one, at its mean orientation a1."""
    if not polymer.shrinkage_percent:
        return
    if not change > 0.0:
        findings.fault(place, "shrinkage_percent needs an ejection temperature above the ambient one")
        return
    along, across = (value / 100.0 / change for value in polymer.pair_as_given(polymer.shrinkage_percent))
    spread = 2.0 * a1 - 1.0
    if along != across and spread < LEAST_SPREAD:
        findings.fault(
            place,
            f"shrinkage_percent along and across differ, but the mean orientation of {a1:.3g} has next to no direction; "
            "give one value, or an orientation above 0.53",
        )
        return
    if along > across:
        findings.fault(
            place, "shrinkage_percent: the value along the fibres is above the one across; KELD takes the reverse"
        )
        return
    difference = (across - along) / spread if across > along else 0.0
    polymer.expansion_per_k = [0.5 * (along + across - difference), 0.5 * (along + across + difference)]
    if difference == 0.0 and filler is not None:
        polymer.expansion_per_k[1] *= 1.0 + 1e-8  # KELD mixes equal values with the filler's; these are the compound's
    if polymer.expansion_per_k[0] < 0.0:
        findings.warn(
            place,
            f"shrinkage_percent: at an orientation of {a1:.3g} these figures need fibres that lengthen as they cool "
            f"({polymer.expansion_per_k[0]:.3g} 1/K along, {polymer.expansion_per_k[1]:.3g} 1/K across aligned fibres); where the "
            "orientation differs from that the shrinkage is extrapolated",
        )


def words_on(polymer: Polymer, filler: Filler | None, fraction: float, a1: float, change: float) -> str:
    """One line of the summary: the job's free shrinkage, beside what is published of the material's class."""
    along, across = (100.0 * change * value for value in averaged(aligned_expansion(polymer, filler, fraction), a1))
    isotropic = abs(along - across) < 1e-4 * abs(across)
    text = (
        f"free shrinkage: {across:.3g} %"
        if isotropic
        else f"free shrinkage: {along:.3g} % along and {across:.3g} % across the fibres"
    )
    text += f" (over {change:.3g} K" + (")" if isotropic else f", orientation {a1:.3g})")
    if polymer.shrinkage_percent:
        return text + ", as shrinkage_percent says"
    if not polymer.published_percent:
        return text + "; shrinkage_percent in [polymer] sets it to the data sheet's figure"
    places = [
        f"{'' if isotropic else way + ' '}{low:g} to {high:g} %, {where(value, low, high)}"
        for way, value, (low, high) in zip(("along", "across"), (along, across), polymer.published_percent)
    ]
    text += "; published for this class: " + (places[0] if isotropic else ", ".join(places))
    return text + ("; shrinkage_percent in [polymer] sets it to the data sheet's figure" if "this is " in text else "")


def where(value: float, low: float, high: float) -> str:
    return "within which this lies" if low <= value <= high else f"this is {'below' if value < low else 'above'}"
