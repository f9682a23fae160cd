"""What all runners share: the sandbox of a test and the report of its results."""
