"""keld-job --run: the job is solved, and no solution is a fault however keld ends."""

import os
from pathlib import Path

import pytest
from keld_tools.base.keld_program import Outcome
from support import PART, write_plate

COVER = Path(__file__).resolve().parents[3] / "examples/cover/cover.msh"
PROGRAM = os.environ.get("KELD_PROGRAM")
LOST = "\n !! Warning !!  The displacements of this pass are no solution: the relative residual is 4e-2.\n"


@pytest.mark.parametrize(
    "status, text, words",
    [
        (0, "Keldage stage results summary : \n 25201", ""),
        (
            0,
            LOST + "Completed\n",
            "keld says: The displacements of this pass are no solution: the relative residual is 4e-2.",
        ),
        (1, "\n !! Error !!  j.PG1 is empty.\n", "keld ended with 1: j.PG1 is empty."),
        (-9, "reading", "keld ended with -9: reading"),
    ],
)
def test_what_makes_a_run_a_failed_one(status, text, words):
    assert Outcome(status, text).fault() == words


@pytest.mark.skipif(not PROGRAM, reason="KELD_PROGRAM isn't set")
@pytest.mark.parametrize("cycles, solved", [(3000, True), (1, False)])
def test_a_job_that_keld_cannot_solve_is_a_fault(tmp_path, job, cycles, solved):
    text = PART.replace("plate.msh", str(COVER)) + f'[solver]\nmethod = "multigrid"\ncycle_limit = {cycles}\n'

    status, said = job(text, "--run")

    assert (status, "no solution" in said and "but not solved" in said) == ((0, False) if solved else (1, True))
    assert (tmp_path / "j.WR1").exists()


def test_a_missing_keld_is_named(tmp_path, job):
    write_plate(tmp_path / "plate.msh")

    status, said = job(PART, "--run", "--keld", tmp_path / "none")

    assert status == 1 and "none: there is no such program" in said and (tmp_path / "j.PG1").exists()
