"""Polymer constants of the reference analysis: density, filler rule, unidirectional stiffness. Called by job_model.

Stress dyn/cm2, temperature K, density g/cm3. Axes 11 22 33 12 13 23, shear strains engineering ones.
"""

from __future__ import annotations

from dataclasses import dataclass
from math import exp, log
from statistics import fmean

import numpy as np

from job_files import Filler, Polymer, Process

FILLING_PRESSURE = 1e7  # at which the density that completes the filler fractions is taken


@dataclass
class Constants:
    stiffness: np.ndarray  # (6, 6)
    along: float  # expansion, 1/K
    across: float


def polymer_density(pvt: list[float], pressure: float, temperature: float) -> float:
    """Constant, a three-value law, or the two-domain Tait equation."""
    if len(pvt) == 1:
        return pvt[0]
    if len(pvt) == 3:
        c1, c2, c3 = pvt
        return 1.0 / (temperature * c3 / (pressure + c1) + 1.0 / (c2 + 1e-30))
    b = pvt[:10] + ([0.0] * 3 if len(pvt) == 10 else pvt[10:13])
    x = temperature - b[8]
    if temperature >= b[9] * pressure + b[8]:
        volume, bulk, transition = b[0] + b[1] * x, b[2] * exp(-b[3] * x), 0.0
    else:
        volume, bulk = b[4] + b[5] * x, b[6] * exp(-b[7] * x)
        transition = b[10] * exp(b[11] * x - b[12] * pressure)
    return 1.0 / (volume * (1.0 - 0.0894 * log(1.0 + pressure / bulk)) + transition)


def volume_fraction(process: Process, filler: Filler, last: Polymer, melt: float) -> float:
    """Filler by volume; one told by weight is turned with the density of the last kind at its melt temperature."""
    if not process.filled or not process.by_weight:
        return process.filler_fraction
    weight = process.filler_fraction
    # the density model has the filler in it already where its weight is known
    density = polymer_density(last.pvt, FILLING_PRESSURE, melt)
    density = 1.0 / ((1.0 - weight) / density + weight / filler.density)
    return (weight / filler.density) / ((1.0 / filler.density - 1.0 / density) * weight + 1.0 / density)


def stiffness_of(e11: float, e22: float, nu12: float, nu23: float, g12: float, g23: float) -> np.ndarray:
    compliance = np.zeros((6, 6))
    compliance[0, 0] = 1.0 / e11
    compliance[1, 1] = compliance[2, 2] = 1.0 / e22
    compliance[0, 1:3] = compliance[1:3, 0] = -nu12 / e11
    compliance[1, 2] = compliance[2, 1] = -nu23 / e22
    compliance[3, 3] = compliance[4, 4] = 1.0 / g12
    compliance[5, 5] = 1.0 / g23
    return np.linalg.inv(compliance)


def filled_constants(polymer: Polymer, filler: Filler, v: float) -> Constants:
    """Halpin-Tsai moduli of an isotropic polymer with a volume fraction v of filler, aspect ratio 25."""
    em, num, alm = (fmean(values) for values in (polymer.modulus, polymer.poisson, polymer.expansion))
    ef, nuf, alf = filler.modulus, filler.poisson, filler.expansion
    gm, gf = em / (2.0 * (1.0 + num)), ef / (2.0 * (1.0 + nuf))
    widening = 3.0 * (1.0 - 2.0 * num)
    km = em / widening if abs(widening) > 1e-10 else 1e20
    kf = ef / (3.0 * (1.0 - 2.0 * nuf))
    m = ef / em
    eta = (m - 1.0) / (m + 50.0)
    e11 = em * (1.0 + 50.0 * eta * v) / (1.0 - eta * v)
    g = v * (m - 1.0) / (m + 1.0)
    e22 = em * (1.0 + g) / (1.0 - g)
    g12 = gm * ((1.0 - v) * gm + (1.0 + v) * gf) / ((1.0 + v) * gm + (1.0 - v) * gf)
    nu12 = (1.0 - v) * num + v * nuf
    soft = (km + 7.0 / 3.0 * gm) / (2.0 * km + 8.0 / 3.0 * gm)
    g23 = gm * (1.0 + v / (soft + gm / (gf - gm)))
    stiffness = stiffness_of(e11, e22, nu12, e22 / (2.0 * g23) - 1.0, g12, g23)
    constants = Constants(stiffness, polymer.expansion[0], polymer.expansion[1])
    if abs(polymer.expansion[0] - polymer.expansion[1]) <= 1e-15:
        mean = alm * (1.0 - v) + alf * v
        softest = (1.0 - v) / em + v / ef
        psi = (softest - 1.0 / e11) / (softest - 1.0 / ((1.0 - v) * em + v * ef) + 1e-20)
        bulk_mean = (km * alm * (1.0 - v) + kf * alf * v) / ((1.0 - v) * km + v * kf)
        constants.along = mean + psi * (bulk_mean - mean)
        constants.across = (1.0 + num) * alm * (1.0 - v) + (1.0 + nuf) * alf * v - mean * nu12
    return constants


def constants_of(polymer: Polymer, process: Process, filler: Filler, volume: float) -> Constants:
    e1, e2 = polymer.modulus[:2]
    if process.filled and abs(e1 - e2) < 1.0:
        return filled_constants(polymer, filler, volume)
    if len(polymer.modulus) != 2 or len(polymer.expansion) != 2:
        raise ValueError("lists of other lengths than two are no job of the reference")
    nu12, nu23 = polymer.poisson[:2]
    g23 = e2 / (2.0 * (1.0 + nu23))
    stiffness = stiffness_of(e1, e2, nu12, nu23, polymer.shear[0], g23)
    return Constants(stiffness, polymer.expansion[0], polymer.expansion[1])


def material(process: Process, polymers: list[Polymer], filler: Filler) -> list[Constants]:
    """Constants of both kinds."""
    last = 1 if process.two_kinds else 0
    volume = volume_fraction(process, filler, polymers[last], process.melt[last])
    return [constants_of(polymer, process, filler, volume) for polymer in polymers]
