"""Measures on a moulded part: alignment, distances, flatness, holes, tolerances."""
