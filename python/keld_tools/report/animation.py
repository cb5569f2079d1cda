"""BASE.gif: the part from its nominal to its distorted shape and back. Called by view_outputs with --animate."""

from __future__ import annotations

from dataclasses import replace
from pathlib import Path

import numpy as np
from matplotlib import pyplot
from PIL import Image

from ..base import atomic
from ..base.ownership import MADE_BY_VIEW
from .picture import Scene, compose, pixels_of

STEPS = 12  # pictures from one shape to the other
MILLISECONDS = 80
DOTS_PER_INCH = 70


def write_gif(path: Path, scene: Scene) -> None:
    """Colours are those of the whole displacement; the exaggeration swings between 0 and the scene's."""
    shares = 0.5 - 0.5 * np.cos(np.pi * np.arange(STEPS) / (STEPS - 1))
    frames = []
    for share in shares:
        figure = compose(replace(scene, scale=float(share) * scene.scale, reach=scene.scale), DOTS_PER_INCH)
        frames.append(Image.fromarray(pixels_of(figure)).quantize(256))
        pyplot.close(figure)
    whole = frames + frames[-2:0:-1]

    def write(place: Path) -> None:
        whole[0].save(
            place,
            format="GIF",
            save_all=True,
            append_images=whole[1:],
            duration=MILLISECONDS,
            loop=0,
            comment=MADE_BY_VIEW.encode(),
        )

    atomic.write_file(path, write)
