"""The mains of the programs: command line, order of the steps, summary."""
