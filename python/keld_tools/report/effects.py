"""Plots of several runs: main effects of a study, and shapes side by side in one range. Called by studies and causes."""

from __future__ import annotations

from pathlib import Path
from typing import Any

import numpy as np

from . import picture  # chooses the plotting that needs no display

pyplot = picture.pyplot


def main_effects(path: Path, title: str, values: dict[str, np.ndarray], settings: dict[str, list[Any]], mark: dict):
    """A row per value, a column per key: each run as a dot, the mean of each level as a line.

    values: name -> (runs,); settings: key -> value of each run. Values of one row share their axis.
    """
    rows, columns = len(values), max(len(settings), 1)
    figure, grid = pyplot.subplots(
        rows,
        columns,
        figsize=(1.4 + 2.9 * columns, 1.1 + 2.1 * rows),
        squeeze=False,
        sharey="row",
        layout="constrained",
    )
    figure.suptitle(title, fontsize=13, fontweight="bold")
    for row, (name, numbers) in enumerate(values.items()):
        for column, (key, given) in enumerate(settings.items()):
            axes = grid[row, column]
            draw_effect(axes, numbers, given)
            if column == 0:
                axes.set_ylabel(name, fontsize=9)
            if row == rows - 1:
                axes.set_xlabel(key.replace(".", "\n"), fontsize=9)
    picture.save(path, figure, mark)


def draw_effect(axes, numbers: np.ndarray, given: list[Any]) -> None:
    """Levels in their order: numbers by size, others as they come."""
    whole = all(isinstance(v, (int, float)) and not isinstance(v, bool) for v in given)
    labels = sorted(set(given)) if whole else list(dict.fromkeys(map(str, given)))
    level = np.array([labels.index(v if whole else str(v)) for v in given])
    at = np.array(labels, float) if whole else np.arange(len(labels), dtype=float)
    good = np.isfinite(numbers)
    axes.plot(at[level[good]], numbers[good], "o", color="0.6", markersize=4)
    means = [numbers[good & (level == i)].mean() if (good & (level == i)).any() else np.nan for i in range(len(labels))]
    axes.plot(at, means, "-o", color="#1f5fa8", markersize=6)
    axes.set_xticks(at, [f"{v:.6g}" if whole else shortened(v) for v in labels], fontsize=8)
    axes.tick_params(axis="y", labelsize=8)
    axes.grid(alpha=0.3)
    axes.margins(x=0.15)


def shortened(text: str) -> str:
    return text if len(text) <= 14 else text[:13] + "…"
