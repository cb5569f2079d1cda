"""Causes of warpage on a plate whose shares follow from formulas: stress, one expansion along and one across, sides."""

import csv
import os

import numpy as np
import pytest
from keld_tools.programs import view_cli
from support import PART, plate, write_plate

PROGRAM = os.environ.get("KELD_PROGRAM")
pytestmark = pytest.mark.skipif(not PROGRAM, reason="KELD_PROGRAM isn't set")
POLYMER = "modulus_MPa = 2000\npoisson = 0.38\nexpansion_per_K = [2e-5, 6e-5]\ndensity_g_cm3 = 0.95"
CONDITIONS = "melt_temperature_C = 230\nmould_temperature_C = 40\n"
SIDES = CONDITIONS + "ejection_temperature_lower_C = 80\nejection_temperature_upper_C = 60"
STRESS = "[fields]\nstress1_MPa = 4\nstress2_MPa = 0\nfibre_direction = [1, 0, 0]\n"
MEASURES = """
[[measure]]
name = "length"
kind = "distance"
between_at_mm = [[0, 0, 0], [40, 0, 0]]
[[measure]]
name = "flat"
kind = "flatness"
group = "wall"
"""


def causes_of(folder, job, keld, polymer=POLYMER, conditions=SIDES, fields=STRESS):
    """Rows of the table by their name."""
    write_plate(folder / "plate.msh")
    part = PART.replace('name = "PP"', polymer).replace("[conditions]", "[conditions]\n" + conditions)
    assert job(part + fields + MEASURES)[0] == 0
    keld(folder / "j")
    assert view_cli.main([str(folder / "j"), "--causes", "--keld", PROGRAM]) == 0
    with open(folder / "j.causes.csv", newline="") as file:
        return {row["keld-view causes of"]: row for row in csv.DictReader(file)}


def test_each_cause_has_its_share(tmp_path, job, keld, capsys):
    rows = causes_of(tmp_path, job, keld)

    length, flat = rows["length [mm]"], rows["flat [mm]"]
    assert float(length["deviation"]) == pytest.approx(40 * (-2e-5 * 50 - 4 / 2000), abs=2e-3)
    assert float(length["frozen-in stress"]) == pytest.approx(-40 * 4 / 2000, abs=2e-3)
    assert float(length["uneven shrinkage"]) == pytest.approx(40 * 2e-5 * 50, abs=2e-3)  # along x less than the mean
    assert float(length["temperatures of the sides"]) == pytest.approx(0, abs=2e-3)
    assert float(flat["deviation"]) > 0.01
    assert float(flat["temperatures of the sides"]) == pytest.approx(float(flat["deviation"]), rel=1e-2)
    assert float(flat["frozen-in stress"]) == pytest.approx(0, abs=1e-3)
    assert (tmp_path / "j.causes.png").stat().st_size > 20000


def test_what_a_job_has_not_is_no_cause(tmp_path, job, keld, capsys):
    rows = causes_of(
        tmp_path, job, keld, POLYMER.replace("[2e-5, 6e-5]", "4e-5"), CONDITIONS + "ejection_temperature_C = 80", ""
    )

    said = capsys.readouterr().out
    assert {
        rows["length [mm]"][name] for name in ("temperatures of the sides", "uneven shrinkage", "frozen-in stress")
    } == {"-"}
    assert "both sides have one temperature" in said and "no frozen-in stress" in said


def test_spring_in_closes_a_corner_of_facets(tmp_path, job, keld):
    """A fold of 90 degrees turns by that angle times expansion across the fibres, and through the wall, less along."""
    points, quads = plate(16, 8, 40.0, 20.0)
    bent = np.column_stack([np.minimum(points[:, 0], 20), points[:, 1], np.maximum(points[:, 0] - 20, 0)])
    write_plate(tmp_path / "plate.msh", triangles=np.concatenate([quads[:, :3], quads[:, [0, 2, 3]]]), points=bent)
    part = PART.replace('name = "PP"', POLYMER).replace("[conditions]", f"[conditions]\n{CONDITIONS}")
    corner = '[[measure]]\nname = "corner"\nkind = "angle"\nboxes_mm = [[[0,0,0],[20,20,0]],[[20,0,0],[20,20,20]]]\n'
    status, said = job(part + "ejection_temperature_C = 120\n[fields]\nfibre_direction = [1, 0, 1]\n" + corner)
    assert status == 0, said
    value = "  Wall model string= 31001  flag= 1  value= 2\n"
    settings = (tmp_path / "j.CPU").read_text().partition("[Keld_Extension]")[0]
    (tmp_path / "j.CPU").write_text(f"{settings}\n[Keld_Extension]\n\n\n{value}[EOF]\n")
    keld(tmp_path / "j")

    assert view_cli.main([str(tmp_path / "j"), "--measure", "--causes", "--keld", PROGRAM]) == 0

    with open(tmp_path / "j.causes.csv", newline="") as file:
        found = {row["keld-view causes of"]: row for row in csv.DictReader(file)}["corner [deg]"]
    turn = -90 * (6e-5 - 2e-5) * 100
    assert float(found["deviation"]) == pytest.approx(turn, rel=1e-2)
    assert float(found["spring-in"]) == pytest.approx(turn, rel=1e-2)
    assert float(found["uneven shrinkage"]) == pytest.approx(0, abs=2e-3)
