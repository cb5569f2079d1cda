"""What the runs of a study say: figures and measures per run, as a CSV, and which run is best. Called by study_cli."""

from __future__ import annotations

import csv
import io
from dataclasses import dataclass, field
from pathlib import Path

import numpy as np

from ..base.findings import BadFile, Findings
from ..base.ownership import STUDY_HEAD
from ..measuring import measures
from ..measuring.listing import WORDS
from ..part.drawing import Drawing
from ..report import shown as shown_fields
from ..report.shown import Fit
from ..results.finished_job import FinishedJob, read_job
from .runs import Run

FIGURES = ("largest_deviation_mm", "largest_warpage_mm", "shrinkage_percent")


@dataclass
class Outcome:
    """One run and its numbers; without results all of them are missing."""

    run: Run
    figures: dict[str, float] = field(default_factory=dict)  # FIGURES
    answers: list[measures.Answer] = field(default_factory=list)

    def rank(self) -> tuple[int, float]:
        """Less is better: measures out of tolerance, then deviations over tolerances, else the largest deviation."""
        shares = [
            abs(a.deviation) / max(abs(a.measure.tolerance[0]), abs(a.measure.tolerance[1]))
            for a in self.answers
            if a.measure.tolerance is not None
        ]
        if not shares:
            return 0, self.figures["largest_deviation_mm"]
        return sum(a.within is False for a in self.answers), sum(shares)


def figures_of(job: FinishedJob) -> dict[str, float]:
    """Greatest deviation after best fit, and what of it is left once the size is fitted too."""
    whole = shown_fields.shown(job, "total", Fit())
    shape = shown_fields.shown(job, "total", Fit(remove_shrinkage=True))
    largest, warpage = (float(s.values_mm[job.nodes].max()) for s in (whole, shape))
    return dict(zip(FIGURES, (largest, warpage, shape.fit.shrinkage_percent)))


def outcome_of(run: Run, drawing: Drawing | None, findings: Findings) -> Outcome:
    """Figures and answers of a finished run; what can't be read becomes the run's fault."""
    outcome = Outcome(run)
    if run.fault:
        return outcome
    own = Findings()
    try:
        job = read_job(run.base, own, lambda _: None)
        outcome.figures = figures_of(job)
        fit = Fit(datum=job.nodes_at((drawing or job.origin.drawing).datum))
        moved, _ = shown_fields.laid_over(job.nominal_mm, job.moulded_mm, job.nodes, fit, job.boundary)
        outcome.answers = measures.answers_of((drawing or job.origin.drawing).measures, job.shapes(moved), own)
    except BadFile as error:
        own.faults.append(str(error))
    run.fault = "; ".join(own.faults)
    findings.warnings += [warning for warning in own.warnings if warning not in findings.warnings]
    return outcome


def csv_text(outcomes: list[Outcome], keys: list[str]) -> str:
    """One row per run: name, values, figures, moulded, deviation and verdict of each measure, seconds, state."""
    names: list[str] = next(([a.measure.name for a in o.answers] for o in outcomes if o.answers), [])
    head = [STUDY_HEAD, *keys, *FIGURES]
    head += [f"{name}{what}" for name in names for what in ("", " deviation", " within")]
    stream = io.StringIO()
    writer = csv.writer(stream, lineterminator="\n")
    writer.writerow([*head, "out_of_tolerance", "run_seconds", "state"])
    for outcome in outcomes:
        writer.writerow(cells(outcome, keys, 3 * len(names)))
    return stream.getvalue()


def cells(outcome: Outcome, keys: list[str], measured: int) -> list:
    run = outcome.run
    row = [run.variant.name, *(run.variant.values.get(key, "") for key in keys)]
    row += [f"{outcome.figures[name]:.4f}" if name in outcome.figures else "" for name in FIGURES]
    answers = [
        cell
        for answer in outcome.answers
        for cell in (f"{answer.moulded:.4f}", f"{answer.deviation:.4f}", WORDS[answer.within])
    ]
    row += answers or [""] * measured
    out = sum(answer.within is False for answer in outcome.answers) if outcome.figures else ""
    state = run.fault or ("resumed" if run.resumed else "done")
    return [*row, out, f"{run.seconds:.2f}", state]


def best_and_worst(outcomes: list[Outcome]) -> tuple[Outcome, Outcome] | None:
    good = [outcome for outcome in outcomes if not outcome.run.fault]
    if not good:
        return None
    ranked = sorted(good, key=Outcome.rank)
    return ranked[0], ranked[-1]


def values_of(outcomes: list[Outcome]) -> dict[str, np.ndarray]:
    """Name -> value per run of what the effects plot shows: measures, without any the figures."""
    first = next((o for o in outcomes if o.answers), None)
    if first is None:
        return {name: np.array([o.figures.get(name, np.nan) for o in outcomes]) for name in FIGURES}
    return {
        f"{answer.measure.name} [{answer.measure.unit}]": np.array(
            [o.answers[i].moulded if o.answers else np.nan for o in outcomes]
        )
        for i, answer in enumerate(first.answers)
    }


def picture_name(output: Path, which: str) -> Path:
    return Path(f"{output}-{which}.png")
