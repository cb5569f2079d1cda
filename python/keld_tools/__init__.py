"""Tools around KELD: keld-job writes a job from a mesh, keld-view shows its result."""

__version__ = "0.1.0"
