"""Studies: variants and their faults, resuming, one machine and a Dask scheduler with two workers, the CSV."""

import csv
import os
import shutil
import subprocess
import time

import pytest
from keld_tools.base.findings import Findings
from keld_tools.programs import study_cli
from keld_tools.study import plan, solve, workers
from support import PART, write_plate

PROGRAM = os.environ.get("KELD_PROGRAM")
needs_keld = pytest.mark.skipif(not PROGRAM, reason="KELD_PROGRAM isn't set")
STUDY = """
part = "part.toml"
[vary]
conditions.ejection_temperature_C = { from = 60, to = 100, steps = 3 }
"mesh.thickness_mm" = [2, 3]
"""
MEASURE = '[[measure]]\nname = "length"\nkind = "distance"\nbetween_at_mm = [[0,0,0],[40,0,0]]\ntolerance_mm = 0.3\n'


@pytest.fixture
def folder(tmp_path):
    write_plate(tmp_path / "plate.msh")
    part = PART.replace(
        'name = "PP"', "modulus_MPa = 1500\npoisson = 0.4\nexpansion_per_K = 1.2e-4\ndensity_g_cm3 = 0.9"
    )
    part = part.replace("[conditions]", "[conditions]\nmelt_temperature_C = 230\nmould_temperature_C = 40")
    (tmp_path / "part.toml").write_text(part + MEASURE)
    (tmp_path / "s.toml").write_text(STUDY)
    return tmp_path


@pytest.mark.parametrize(
    "text, words",
    [
        ('part = "part.toml"\n', "nothing to vary"),
        ('part = "part.toml"\n[vary]\na = 3\n', "a: expected a list of values"),
        ('part = "part.toml"\n[vary]\na = { from = 1, to = 2, steps = 1 }\n', "expected a list"),
        ('part = "part.toml"\n[vary]\na = { from = 1, to = 2, steps = 9999 }\nb = [1, 2]\n', "19998 runs"),
        ("[vary]\na = [1]\n", "has no part"),
        ('part = "part.toml"\nvaried = 1\n', "varied: is not known"),
    ],
)
def test_faults_of_a_study(folder, text, words):
    (folder / "s.toml").write_text(text)
    findings = Findings()

    plan.read_plan(folder / "s.toml", None, findings)

    assert any(words in fault for fault in findings.faults), findings.faults


def test_combinations_lists_and_both(folder):
    listed = '[[variant]]\nname = "hot"\n"conditions.melt_temperature_C" = 260\n[[variant]]\npolymer.title = "x"\n'
    for text, count in ((STUDY, 6), ('part = "part.toml"\n' + listed, 2), (STUDY + listed, 12)):
        (folder / "s.toml").write_text(text)
        found = plan.read_plan(folder / "s.toml", None, Findings())
        assert len(found.variants) == count and len({v.name for v in found.variants}) == count

    document = plan.applied(found, found.variants[0])
    assert document["conditions"]["ejection_temperature_C"] == 60.0 and document["mesh"]["thickness_mm"] == 2
    assert (
        document["conditions"]["melt_temperature_C"] == 260
        and "ejection_temperature_C" not in found.document["conditions"]
    )


def rows_of(folder):
    with open(folder / "s.csv", newline="") as file:
        return list(csv.DictReader(file))


def check_lengths(folder):
    """Free shrinkage: 40 mm by the expansion and the way from ejection to 20 C."""
    rows = rows_of(folder)
    assert len(rows) == 6
    for row in rows:
        strain = 1.2e-4 * (float(row["conditions.ejection_temperature_C"]) - 20)
        assert float(row["length"]) == pytest.approx(40 * (1 - strain), abs=2e-4)
        assert row["length within"] == ("in" if 40 * strain <= 0.3 else "OUT")
        assert float(row["shrinkage_percent"]) == pytest.approx(100 * strain, abs=2e-3)
    return rows


@needs_keld
def test_a_study_runs_and_resumes(folder, capsys):
    assert study_cli.main([str(folder / "s.toml"), "--keld", PROGRAM]) == 0
    assert {row["state"] for row in check_lengths(folder)} == {"done"}
    assert "best: run 1 " in capsys.readouterr().out
    for name in ("effects", "best", "worst"):
        assert (folder / f"s-{name}.png").stat().st_size > 10000

    (folder / "s.runs/3.key").unlink()  # an interruption: results without their key
    (folder / "s.toml").write_text(STUDY.replace("[2, 3]", "[2, 2.5]"))  # and half of the variants are others
    assert study_cli.main([str(folder / "s.toml"), "--keld", PROGRAM]) == 0
    assert [row["state"] for row in check_lengths(folder)] == ["resumed", "done", "done", "done", "resumed", "done"]


@needs_keld
def test_a_variant_that_fails_is_told_and_the_others_run(folder, capsys):
    (folder / "s.toml").write_text(
        'part = "part.toml"\n[vary]\n"polymer.poisson" = [0.4, 0.7]\n"conditions.ejection_temperature_C" = [80]\n'
    )

    assert study_cli.main([str(folder / "s.toml"), "--keld", PROGRAM]) == 1

    rows = rows_of(folder)
    assert rows[0]["state"] == "done" and "0.7 is out of range" in rows[1]["state"] and rows[1]["length"] == ""
    assert "variant 2: failed" in capsys.readouterr().err


def test_a_table_of_somebody_else_stays(folder, capsys):
    (folder / "s.csv").write_text("mine\n")
    assert study_cli.main([str(folder / "s.toml")]) == 1
    assert "s.csv: is there and not made by" in capsys.readouterr().err and (folder / "s.csv").read_text() == "mine\n"


@needs_keld
@pytest.mark.skipif(not shutil.which("dask-worker"), reason="python3-distributed isn't installed")
def test_a_dask_scheduler_and_two_workers_give_the_same(folder):
    address = folder / "scheduler.json"
    quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, "cwd": "/"}
    common = ["--no-dashboard", "--scheduler-file", str(address)]
    servers = [subprocess.Popen(["dask-scheduler", "--host", "127.0.0.1", "--port", "0", *common], **quiet)]
    try:
        for name in ("one", "two"):
            where = ["--nthreads", "1", "--local-directory", str(folder / name), "--name", name]
            servers.append(subprocess.Popen(["dask-worker", *common, *where], **quiet))
        place = wait_for_workers(address)
        status = study_cli.main([str(folder / "s.toml"), "--keld", PROGRAM, "--cluster", place])
    finally:
        for server in servers:
            server.terminate()
        for server in servers:
            server.wait(timeout=60)

    assert status == 0 and {row["state"] for row in check_lengths(folder)} == {"done"}


def wait_for_workers(address):
    import json

    from distributed import Client

    for _ in range(120):
        if address.is_file() and address.stat().st_size:
            break
        time.sleep(0.5)
    place = json.loads(address.read_text())["address"]
    with Client(place, timeout=30) as client:
        client.wait_for_workers(2, timeout=90)
    return place


@needs_keld
@pytest.mark.skipif(not shutil.which("dask-worker"), reason="python3-distributed isn't installed")
def test_no_scheduler_is_told(folder, capsys, monkeypatch):
    monkeypatch.setattr(workers, "CONNECT_SECONDS", 1)

    assert study_cli.main([str(folder / "s.toml"), "--keld", PROGRAM, "--cluster", "tcp://127.0.0.1:9"]) == 1
    assert "no scheduler answers there" in capsys.readouterr().err and not (folder / "s.csv").exists()


@pytest.mark.parametrize(
    "script, words",
    [
        ("echo ' !! Error !!  no mesh'; exit 1", "keld ended with 1: Error no mesh"),
        ("touch job.WR1; echo '  The displacements of this pass are no solution: 0.3'", "are no solution: 0.3"),
        ("exit 0", "keld ended with 0"),
    ],
)
def test_a_run_without_a_solution_has_no_results(tmp_path, script, words):
    (tmp_path / "Standard").mkdir()
    (tmp_path / "keld").write_text(f"#!/bin/sh\n{script}\n")
    (tmp_path / "keld").chmod(0o755)

    found = solve.solve({".PG1": b""}, str(tmp_path / "keld"), str(tmp_path), 1)

    assert found["results"] is None and words in found["message"]
