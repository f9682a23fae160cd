"""The parts of tools/test-docs: documents.py reads, world.py runs, manual.py, completion.py and wrapper.py compare."""
