"""Runs the command line tool as people do and compares what it prints, writes and returns.

Usage: velmar_test.py TOOL EMULATOR [unittest options]; EMULATOR is empty where the tool runs by itself.
"""
import sys
import unittest

# The modules lie in the tree of sources, which a test run leaves as it is.
sys.dont_write_bytecode = True

from check import Check
from convert import Convert, ConvertFolder
from diff import Diff
from editing import Edit
from export import Export, Scene
from faulty_input import Models, Options, Text
from formats import Formats, Json
from full_disk import FullDisk
from info import Info
from interrupts import Interrupted, Targets, Together
from memory import Memory
from merging import Merge
from packing import Pack, Unpack, UnpackLinks
from picture import Picture
from placing import Placing
from render import Render, RenderDocument
from scene_info import SceneInfo
from scenes import WholeScenes
from store import Store
from usage import Usage

if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
