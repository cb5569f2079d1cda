"""Many runs of one part: causes and variants."""
