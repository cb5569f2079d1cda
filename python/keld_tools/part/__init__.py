"""The part file: what the user asks for, and the library of polymers."""
