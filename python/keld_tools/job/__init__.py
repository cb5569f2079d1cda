"""A job: its values per element, its checks, its working files."""
