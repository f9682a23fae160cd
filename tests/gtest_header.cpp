// Holds the precompiled header of the tests.
