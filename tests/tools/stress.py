"""Runs the tests of concurrent and interrupted runs as often as one likes; a release is tested with the defaults.

Usage: stress.py TOOL EMULATOR [PAIRS [KILLS]]; EMULATOR is empty where the tool runs by itself.
"""
import os
import sys
import unittest

sys.dont_write_bytecode = True
numbers = dict(zip(("VELMAR_TEST_PAIRS", "VELMAR_TEST_KILLS"), sys.argv[3:] + ["200", "50"][len(sys.argv) - 3:]))
os.environ.update(numbers)

from interrupts import Interrupted, Together  # noqa: E402: they read the numbers

print("{VELMAR_TEST_PAIRS} pairs of each kind, {VELMAR_TEST_KILLS} kills of each command".format(**numbers))
unittest.main(argv=sys.argv[:1] + ["-v"])
