"""What tools/test-docs is made of: documents.py reads, world.py runs, manual.py and completion.py compare."""
