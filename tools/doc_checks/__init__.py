"""The parts of tools/test-docs: documents.py reads, world.py runs, manual.py and completion.py compare."""
