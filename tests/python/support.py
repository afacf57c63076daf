"""Helpers of the tests of the Python package."""
import array
import contextlib
import itertools
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

try:
    import numpy
except ImportError:
    numpy = None

import velmar

with_numpy = unittest.skipUnless(numpy, "there is no numpy")
on_windows = sys.platform == "win32"

TRIANGLE = [(0, 0, 0), (1, 0, 0), (0, 1, 0)]


def array_of(rows, kind="f"):
    """Rows as an array of two dimensions that isn't numpy's."""
    numbers = array.array(kind, itertools.chain.from_iterable(rows))
    return memoryview(numbers).cast("B").cast(kind, (len(rows), len(rows[0])))


class InFolder(unittest.TestCase):
    """Each test works in an empty folder."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        self.folder = pathlib.Path(folder.name).resolve()
        os.chdir(self.folder)


def document(scene):
    """The scene as it is written into the working folder."""
    scene.write("scene.xml")
    return parsed("scene.xml")


def parsed(name):
    """The root of a document."""
    return xml.etree.ElementTree.parse(name).getroot()


@contextlib.contextmanager
def recorded(name):
    """Records the calls of a function of the library."""
    functions = velmar.library()
    function, calls = getattr(functions, name), []

    def record(*arguments):
        calls.append(arguments)
        return function(*arguments)

    setattr(functions, name, record)
    try:
        yield calls
    finally:
        setattr(functions, name, function)


def run(program, *options, **environment):
    """Runs Python code in its own process. Returns the exit status and the output."""
    done = subprocess.run([sys.executable, *options, "-c", program], capture_output=True, text=True, timeout=100,
                          env={**os.environ, **environment}, stdin=subprocess.DEVNULL)
    return done.returncode, done.stdout + done.stderr
