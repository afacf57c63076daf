"""Tests of the loading of the functions' table: what a mistake in it is answered with.

Usage: table_test.py ROOT
"""
import pathlib
import sys
import tempfile
import unittest

ROOT = pathlib.Path(sys.argv.pop(1))
sys.path.insert(0, str(ROOT / "scripts" / "generate"))
sys.dont_write_bytecode = True

from table import load  # noqa: E402

HANDLE = '[[handle]]\nname = "VelmarLamp"\nbrief = "A lamp."\nclass = "Lamp"\nheader = "Lamp.h"\n'
SETTER = ('[[function]]\nname = "VelmarLamp_SetPower"\nsets = "the power, in watts"\npython = "power"\n'
          'arguments = [{ name = "lamp", type = "VelmarLamp*" }, { name = "power", type = "double" }]\n')


class Table(unittest.TestCase):
    def load(self, *parts):
        with tempfile.TemporaryDirectory() as name:
            root = pathlib.Path(name)
            (root / "api" / "functions").mkdir(parents=True)
            (root / "VERSION").write_text("1.2.3\n")
            (root / "api" / "interface.toml").write_text('families = ["lamp"]\nabout = "About."\n')
            (root / "api" / "functions" / "lamp.toml").write_text('title = "Lamps"\n' + "".join(parts))
            return load(root)

    def test_setter_has_its_default(self):
        table = self.load(HANDLE, SETTER, "default = 60.0\n")
        (setter,) = table.functions
        self.assertEqual((table.version, setter.default, setter.implementation), ("1.2.3", 60.0, "VelmarLamp_SetPower"))
        self.assertEqual(table.handles[0].settings, [setter])

    def test_other_name_takes_what_it_lacks(self):
        table = self.load(HANDLE, SETTER, "default = 60.0\n", '[[function]]\nname = "VelmarLamp_Power"\n',
                          'as = "VelmarLamp_SetPower"\nimplementation = "VelmarLamp_SetPower"\narguments = [',
                          '{ name = "lamp", type = "VelmarLamp*" }, { name = "power", type = "double" }]\n')
        setter, other = table.functions
        self.assertEqual((other.sets, other.default, other.python), (setter.sets, 60.0, ""))
        self.assertEqual(table.sharing(setter), [other])

    def test_unknown_keys_are_refused(self):
        with self.assertRaisesRegex(TypeError, "colour"):
            self.load(HANDLE, SETTER, 'colour = "red"\n')

    def test_default_of_another_type_is_refused(self):
        for default in ("60", "true", '"60"', "[0.0, 1.0, 0.0]"):
            with self.subTest(default), self.assertRaisesRegex(ValueError, "no default of its arguments"):
                self.load(HANDLE, SETTER, f"default = {default}\n")

    def test_default_without_a_setter_is_refused(self):
        with self.assertRaisesRegex(ValueError, "isn't a setter"):
            self.load(HANDLE, SETTER.replace("sets", "brief"), "default = 60.0\n")

    def test_function_that_is_there_twice_is_refused(self):
        with self.assertRaisesRegex(ValueError, "twice"):
            self.load(HANDLE, SETTER, SETTER)

    def test_unknown_functions_of_handles_are_refused(self):
        with self.assertRaisesRegex(ValueError, "VelmarLamp_Delete"):
            self.load(HANDLE, 'python = { class = "Lamp", delete = "VelmarLamp_Delete" }\n', SETTER)


unittest.main()
