"""Mesh files of every format, as triangles and runners."""
