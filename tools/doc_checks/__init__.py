"""The parts of tools/test-docs.

documents.py finds the commands, and world.py runs them. checkout.py and links.py check commands and links. manual.py,
completion.py and wrapper.py compare options and keys.
"""
