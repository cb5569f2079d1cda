"""What a reader looks at: pictures and pages."""
