"""keld-study: variants of a part, run side by side or by a cluster; table, main effects, best and worst.

Called by the executable keld-study.
"""

from __future__ import annotations

import argparse
from pathlib import Path

import numpy as np

from .. import __version__
from ..base import atomic, ownership
from ..base.findings import Findings
from ..base.keld_program import find_keld
from ..base.program import run_program, whole_output
from ..base.progress import Progress
from ..part.drawing import read_drawing
from ..report import effects, picture
from ..report import shown as shown_fields
from ..results.finished_job import read_job
from ..study import outcome as outcomes_of
from ..study import runs
from ..study.outcome import Outcome, picture_name
from ..study.plan import Plan, read_plan

MARK = {"Software": ownership.MADE_BY_STUDY}


def arguments(argv: list[str] | None) -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="keld-study", description="Run variants of a part and compare them.")
    add = parser.add_argument
    add("study", metavar="STUDY.toml", help="part file, and what of it varies")
    add("-o", "--output", metavar="NAME", help="write NAME.csv, NAME-effects.png ... and NAME.runs/")
    add("--jobs", type=int, metavar="N", help="runs at a time; without it as many as cores and memory allow")
    add("--cluster", metavar="ADDRESS", help="hand the runs to the Dask scheduler there, tcp://HOST:PORT")
    add("--keld", metavar="PROGRAM", help="the keld to run; also KELD_PROGRAM")
    add("--list", action="store_true", help="show the variants and end")
    add("--overwrite", action="store_true", help="replace files that these tools didn't write")
    add("--version", action="version", version=f"keld-study {__version__}")
    return parser.parse_args(argv)


@whole_output
def main(argv: list[str] | None = None) -> int:
    """Exit status: 0 when all variants ran, 1 for a fault or a variant that failed."""
    options = arguments(argv)
    return run_program("keld-study", options, run, options.study, "stopped; finished runs are kept")


def run(options: argparse.Namespace, findings: Findings, progress: Progress) -> str:
    plan = read_plan(Path(options.study), options.output, findings)
    if options.jobs is not None and options.jobs < 1:
        findings.fault("--jobs", f"{options.jobs} isn't at least 1")
    drawing = read_drawing(plan.drawing, findings) if plan.drawing else None
    written = [Path(f"{plan.output}.csv"), *(picture_name(plan.output, w) for w in ("effects", "best", "worst"))]
    ownership.refuse_foreign(written, options.overwrite, findings)
    if options.list or findings.faults:
        return listing(plan)
    keld = find_keld(options.keld)
    prepared = runs.prepare(plan, keld, findings, progress)
    jobs = [Path(f"{r.base}{suffix}") for r in prepared for suffix in r.files]
    ownership.refuse_foreign(jobs, options.overwrite, findings)
    if findings.faults:
        return ""
    at_a_time = runs.solve_all(prepared, keld, options.jobs, options.cluster, progress)
    progress("comparing")
    outcomes = [outcomes_of.outcome_of(r, drawing, findings) for r in prepared]
    text = outcomes_of.csv_text(outcomes, plan.keys)
    atomic.write_file(written[0], lambda place: place.write_text(text, encoding="utf-8"))
    for failed in (r for r in prepared if r.fault):
        findings.warn(f"variant {failed.variant.name}", f"failed: {failed.fault}")
        findings.status = 1
    extremes = outcomes_of.best_and_worst(outcomes)
    if extremes is None:
        findings.fault(str(plan.part), "no variant has a result")
        return ""
    plot(plan, outcomes, written[1])
    draw_extremes(plan, extremes, written[2:])
    return summary(plan, outcomes, extremes, options, at_a_time, written)


def plot(plan: Plan, outcomes: list[Outcome], path: Path) -> None:
    settings = {key: [o.run.variant.values.get(key, "as it is") for o in outcomes] for key in plan.keys}
    title = f"{plan.output.name}: main effects, {len(outcomes)} runs"
    effects.main_effects(path, title, outcomes_of.values_of(outcomes), settings, MARK)


def draw_extremes(plan: Plan, extremes: tuple[Outcome, Outcome], paths: list[Path]) -> None:
    """Best and worst in one range of colours and one exaggeration."""
    jobs = [read_job(outcome.run.base, Findings(), lambda _: None) for outcome in extremes]
    shown = [shown_fields.shown(job, "total", shown_fields.Fit()) for job in jobs]
    top = max(float(s.values_mm[job.nodes].max()) for s, job in zip(shown, jobs))
    scale = min(picture.automatic_scale(s.points_mm[j.nodes], s.displacement_mm[j.nodes]) for s, j in zip(shown, jobs))
    for word, path, outcome, job, field in zip(("best", "worst"), paths, extremes, jobs, shown):
        title = f"{plan.output.name}, {word}: run {outcome.run.variant.name}"
        notes = [values_text(outcome), *shown_fields.notes_of(field, job.nodes)[:1]]
        scene = shown_fields.scene_of(job, field, title, notes, scale, (0.0, top))
        picture.save(path, picture.compose(scene), MARK)


def values_text(outcome: Outcome) -> str:
    return ", ".join(f"{key.rpartition('.')[2]} = {value}" for key, value in outcome.run.variant.values.items())


def listing(plan: Plan) -> str:
    return "\n".join(f"{v.name}: " + ", ".join(f"{k} = {x}" for k, x in v.values.items()) for v in plan.variants)


def summary(plan: Plan, outcomes, extremes, options, at_a_time: int, written: list[Path]) -> str:
    resumed = sum(o.run.resumed for o in outcomes)
    where = f"by {options.cluster}" if options.cluster else f"{at_a_time} at a time"
    seconds = np.sum([o.run.seconds for o in outcomes])
    ran = f"{seconds:.1f} s of runs, {where}" if resumed < len(outcomes) else "nothing to run"
    lines = [f"{len(outcomes)} variants, {resumed} of them resumed; {ran}"]
    for word, outcome in zip(("best", "worst"), extremes):
        out, _ = outcome.rank()
        told = f"{out} of {len(outcome.answers)} measures out" if outcome.answers else ""
        largest = f"largest deviation {outcome.figures['largest_deviation_mm']:.4g} mm"
        lines.append(f"{word}: run {outcome.run.variant.name} ({values_text(outcome)}): {told or largest}")
    return "\n".join([*lines, "written: " + " ".join(map(str, written)) + f" {plan.output}.runs/"])
