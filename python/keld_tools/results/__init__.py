"""A finished job: its mesh and results, the VTK grid, the corrected cavity."""
