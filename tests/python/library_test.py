"""How the library is found, and that it has what the package declares."""
import ctypes
import os
import pathlib
import shutil
import unittest
import unittest.mock

import support
import velmar
from support import on_windows
from velmar import _functions, _library

BUILT = os.environ["VELMAR_LIBRARY"]
PACKAGE = pathlib.Path(velmar.__file__).resolve().parent
WHERE = "import velmar; print(velmar.library()._name)"


class Finding(support.InFolder):
    def where(self, package="", **environment):
        """The library that a process finds with the package in a folder."""
        options = {"VELMAR_LIBRARY": "", "PYTHONPATH": str(package or PACKAGE.parent), **environment}
        status, output = support.run(WHERE, **options)
        return output.splitlines()[-1] if status else output.strip()

    def package_in(self, folder):
        shutil.copytree(PACKAGE, self.folder / folder / "velmar")
        return self.folder / folder

    def library_in(self, folder):
        place = self.folder / folder
        place.mkdir(parents=True, exist_ok=True)
        shutil.copy(BUILT, place / _library.file_name())
        return str(place / _library.file_name())

    def test_environment_comes_first(self):
        package = self.package_in("site")
        self.library_in("site/velmar")
        named = self.library_in("elsewhere")
        self.assertEqual(self.where(package, VELMAR_LIBRARY=named), named)
        os.rename(named, self.folder / "elsewhere" / "other.so")
        self.assertIn("other.so", self.where(package, VELMAR_LIBRARY="./elsewhere/other.so"))

    def test_beside_the_package(self):
        package = self.package_in("site")
        library = self.library_in("site/velmar")
        self.assertEqual(self.where(package), library)

    def test_in_the_installed_tree(self):
        for lib in ("bin",) if on_windows else ("lib", "lib64", "lib/x86_64-linux-gnu"):
            package = self.package_in(f"{lib}-tree/share/velmar/python")
            library = self.library_in(f"{lib}-tree/{lib}")
            self.assertEqual(self.where(package), library)

    @unittest.skipUnless(on_windows, "Windows looks in PATH")
    def test_on_the_path(self):
        package = self.package_in("site")
        library = self.library_in("system")
        path = os.pathsep.join([str(self.folder / "system"), os.environ["PATH"]])
        self.assertEqual(self.where(package, PATH=path), library)

    @unittest.skipIf(on_windows, "Windows looks in PATH")
    def test_where_the_loader_looks(self):
        package = self.package_in("site")
        self.library_in("system")
        os.rename("system/libvelmarkit.so", "system/libvelmarkit.so.1")
        with unittest.mock.patch("ctypes.util.find_library", return_value="libvelmarkit.so.1"), \
                unittest.mock.patch.dict(os.environ, VELMAR_LIBRARY=""):
            self.assertEqual(list(_library.candidates())[-1], "libvelmarkit.so.1")
        program = f"import ctypes.util; ctypes.util.find_library = lambda name: 'lib{{}}.so.1'.format(name); {WHERE}"
        status, output = support.run(program, VELMAR_LIBRARY="", PYTHONPATH=str(package),
                                     LD_LIBRARY_PATH=str(self.folder / "system"))
        self.assertEqual((status, output), (0, "libvelmarkit.so.1\n"))

    def test_failure_names_every_place(self):
        package = self.package_in("tree/share/velmar/python")
        status, output = support.run(WHERE, VELMAR_LIBRARY="", PYTHONPATH=str(package))
        self.assertNotEqual(status, 0)
        self.assertIn("name it in the environment variable VELMAR_LIBRARY", output)
        name = _library.file_name()
        self.assertIn(f"{package / 'velmar' / name}: no such file", output)
        self.assertIn(f"{self.folder / 'tree' / ('bin' if on_windows else 'lib') / name}: no such file", output)
        status, output = support.run(WHERE, VELMAR_LIBRARY="/nowhere/velmar.so")
        self.assertIn("velmar.errors.LibraryError", output)
        self.assertIn("/nowhere/velmar.so: no such file", output)

    def test_other_library_is_reported(self):
        pathlib.Path("text.so").write_text("text", "utf-8")
        status, output = support.run(WHERE, VELMAR_LIBRARY=str(self.folder / "text.so"))
        self.assertIn("LibraryError", output)
        other = "kernel32.dll" if on_windows else "libc.so.6"
        status, output = support.run(WHERE, VELMAR_LIBRARY=other)
        self.assertIn(f"{other} has no function VelmarKit_", output)

    def test_package_is_imported_without_a_library(self):
        status, output = support.run("import velmar; print(velmar.__version__)", VELMAR_LIBRARY="/nowhere/velmar.so")
        self.assertEqual((status, output), (0, velmar.__version__ + "\n"))


class FindingOnWindows(unittest.TestCase):
    """The order on Windows, tested on every system."""

    def test_dll_is_looked_for_in_bin(self):
        with unittest.mock.patch("sys.platform", "win32"), unittest.mock.patch.dict(os.environ, VELMAR_LIBRARY=""), \
                unittest.mock.patch("sys.prefix", "/python"), \
                unittest.mock.patch("ctypes.util.find_library", return_value=r"C:\bin\velmarkit.dll"):
            self.assertEqual(list(_library.candidates()),
                             [str(PACKAGE / "velmarkit.dll"), str(pathlib.Path("/python/bin/velmarkit.dll")),
                              r"C:\bin\velmarkit.dll"])


class Functions(unittest.TestCase):
    def test_all_are_declared_as_the_table_has_them(self):
        functions = velmar.library()
        for name, arguments in _functions.FUNCTIONS.items():
            function = getattr(functions, name)
            self.assertEqual((function.restype, list(function.argtypes)), (ctypes.c_int32, list(arguments)), name)
        self.assertGreater(len(_functions.FUNCTIONS), 91)

    def test_failure_of_a_function_is_raised(self):
        with self.assertRaisesRegex(velmar.BadArgumentError, "^camera is null$"):
            velmar.library().VelmarKit_Camera_SetLensRadius(None, 1.0)

    def test_lines_are_passed_to_a_handler(self):
        lines = []
        velmar.set_line_handler(lambda is_error, line: lines.append((is_error, line)))
        self.addCleanup(velmar.set_line_handler, None)
        velmar.Model("model", velmar.Mesh("mesh"), [velmar.Material("red")])
        self.assertEqual(lines, [(False, "Num materials: 1")])


if __name__ == "__main__":
    unittest.main()
