"""What every tool needs: faults and warnings, units, whole files, progress, the frame of a program."""
