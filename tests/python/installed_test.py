"""The package in an installed tree, used in place and installed by pip.

Usage: installed_test.py CMAKE BUILD EXAMPLES WORK [unittest options]
"""
import functools
import importlib.util
import pathlib
import re
import shutil
import sys
import unittest

import processes

CMAKE, BUILD = sys.argv[1:3]
EXAMPLES, WORK = pathlib.Path(sys.argv[3]), pathlib.Path(sys.argv[4])
SCRIPTS = EXAMPLES.parents[1] / "scripts"
TREE = WORK / "tree"
run = functools.partial(processes.run, folder=WORK)


def setUpModule():
    shutil.rmtree(WORK, ignore_errors=True)
    WORK.mkdir(parents=True)
    run(CMAKE, "--install", BUILD, "--prefix", WORK / "first")
    # It must work in any folder.
    (WORK / "first").rename(TREE)


class Installed(unittest.TestCase):
    def test_example_of_numpy_runs(self):
        folder = WORK / "example"
        folder.mkdir()
        output = run(sys.executable, EXAMPLES / "numpy_mesh.py", folder=folder,
                     PYTHONPATH=str(TREE / "share/velmar/python"), PYTHONDONTWRITEBYTECODE="1")
        self.assertEqual(output, "Num materials: 1\nwaves.xml: 65536 vertices, 65025 faces\n")
        self.assertEqual(len(list(folder.glob("waves_meshes/*.vmmesh"))), 1)
        info = run(TREE / "bin/velmar", "info", *folder.glob("waves_meshes/*.vmmesh"))
        self.assertRegex(info, r"vertices +65536\n")
        self.assertRegex(info, r"quads +65025\n")

    def test_wheel_brings_the_libraries(self):
        wheel = run(sys.executable, SCRIPTS / "wheel.py", pathlib.Path(BUILD) / "package.json", WORK / "wheels").strip()
        run(sys.executable, "-m", "venv", "--without-pip", WORK / "venv")
        python = WORK / "venv/bin/python"
        run(sys.executable, "-m", "pip", "--python", python, "install", "--no-index", "--no-cache-dir",
            "--disable-pip-version-check", wheel)
        program = "import velmar; print(velmar.__version__); print(velmar.library()._name); velmar.Scene().write('scene.xml')"
        version, library = run(python, "-c", program).splitlines()
        installed = (TREE / "lib/pkgconfig/velmarapi.pc").read_text("utf-8")
        self.assertEqual(version, re.search(r"^Version: (\S+)$", installed, re.M).group(1))
        package = pathlib.Path(library).parent
        self.assertTrue(package.is_relative_to(WORK / "venv"), library)
        for name in ("libvelmarkit.so", "libVelmarAPI.so", "py.typed"):
            self.assertTrue((package / name).is_file(), name)
        self.assertTrue((WORK / "scene.xml").is_file())
        self.render_by(package)
        terms = {path.stem for path in package.parent.glob("velmar-*.dist-info/**/*.txt")}
        self.assertLessEqual({"CLI11", "Embree", "RPly", "double-conversion", "stb", "xxHash", "zstd"}, terms)
        self.convert_by(python, package)

    def convert_by(self, python, package):
        """The tool of a package fills a store, driven by Dask of this Python."""
        models = WORK / "models"
        models.mkdir()
        (models / "a.obj").write_text("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n", encoding="utf-8")
        dask = pathlib.Path(importlib.util.find_spec("distributed").origin).parents[1]
        output = run(python, "-m", "velmar.farm", "convert", models, "--store", WORK / "store", "--local", "1",
                     PYTHONPATH=str(dask), PATH="/usr/bin:/bin")
        self.assertRegex(output, r"\A1 converted, 0 unchanged, 0 failed; 1 mesh added; ")
        tool = run(python, "-c", "import velmar.farm.tool; print(velmar.farm.tool.find())").strip()
        self.assertEqual(pathlib.Path(tool), package / "bin/velmar")

    def test_tool_of_the_installed_tree_is_found(self):
        found = run(sys.executable, "-c", "import velmar.farm.tool; print(velmar.farm.tool.find())",
                    PYTHONPATH=str(TREE / "share/velmar/python"), PYTHONDONTWRITEBYTECODE="1").strip()
        self.assertEqual(pathlib.Path(found), TREE / "bin/velmar")

    def render_by(self, package):
        """The preview renderer of a package draws a picture."""
        program = ("import velmar; scene = velmar.Scene(); scene.add(velmar.RenderSettings(8, 4)); "
                   "scene.add(velmar.Camera(position=(0, 0, 2))); scene.add_sun_sky(); "
                   "print(velmar.preview._find()); print(velmar.render(scene, samples=1).pixels.shape)")
        found, shape = run(sys.executable, "-c", program, PYTHONPATH=str(package.parent),
                           PYTHONDONTWRITEBYTECODE="1").splitlines()
        self.assertTrue(pathlib.Path(found).is_relative_to(package), found)
        self.assertEqual(shape, "(4, 8, 3)")

    def test_preview_of_the_installed_tree_is_found(self):
        tree = TREE / "share/velmar/python"
        found = run(sys.executable, "-c", "import velmar.preview; print(velmar.preview._find())", PYTHONPATH=str(tree),
                    PYTHONDONTWRITEBYTECODE="1").strip()
        self.assertEqual(pathlib.Path(found), TREE / "bin/vs2017_64/velmar_rt_sdk.so")

    def test_example_of_the_readme_runs(self):
        readme = (TREE / "share/velmar/python/README.md").read_text("utf-8")
        program = re.search(r"^```python\n(.*?)^```$", readme, re.M | re.S).group(1)
        run(sys.executable, "-c", program, PYTHONPATH=str(TREE / "share/velmar/python"), PYTHONDONTWRITEBYTECODE="1")
        self.assertTrue((WORK / "triangle.xml").is_file())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[5:])
