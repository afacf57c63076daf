"""Builds the example hosts against an installed tree, runs them, and compares what they write.

Usage: examples_test.py CMAKE BUILD SOURCE WORK TOOLCHAIN EMULATOR C_COMPILER CXX_COMPILER [unittest options]

TOOLCHAIN and EMULATOR are empty for the native build.
"""
import pathlib
import re
import shutil
import subprocess
import sys
import unittest
import xml.etree.ElementTree

CMAKE, BUILD, SOURCE, WORK, TOOLCHAIN, EMULATOR, C_COMPILER, CXX_COMPILER = sys.argv[1:9]
SOURCE, WORK = pathlib.Path(SOURCE), pathlib.Path(WORK)
INSTALLED, HOSTS, CSHARP = WORK / "installed", WORK / "hosts", WORK / "csharp"


def run(*command, folder=WORK):
    done = subprocess.run([str(part) for part in command], cwd=folder, stdin=subprocess.DEVNULL, capture_output=True,
                          timeout=250)
    output = (done.stdout + done.stderr).replace(b"\r\n", b"\n").decode()
    return done.returncode, output


def must_run(*command):
    code, output = run(*command)
    if code != 0:
        raise RuntimeError(f"{command} ended with {code}:\n{output}")


def setUpModule():
    shutil.rmtree(WORK, ignore_errors=True)
    WORK.mkdir(parents=True)
    must_run(CMAKE, "--install", BUILD, "--prefix", INSTALLED)
    options = ["-DCMAKE_BUILD_TYPE=Release", f"-DCMAKE_PREFIX_PATH={INSTALLED}"]
    if TOOLCHAIN:
        options += [f"-DCMAKE_TOOLCHAIN_FILE={TOOLCHAIN}", f"-DCMAKE_FIND_ROOT_PATH={INSTALLED}"]
    else:
        options += [f"-DCMAKE_C_COMPILER={C_COMPILER}", f"-DCMAKE_CXX_COMPILER={CXX_COMPILER}"]
    must_run(CMAKE, "-G", "Ninja", "-S", SOURCE, "-B", HOSTS, *options)
    must_run(CMAKE, "--build", HOSTS)
    if not EMULATOR:
        CSHARP.mkdir()
        sources = sorted((INSTALLED / "share/velmar/csharp/Velmar").glob("*.cs"))
        must_run("mcs", "-unsafe", "-target:library", f"-out:{CSHARP / 'Velmar.dll'}", *sources)
        must_run("mcs", f"-r:{CSHARP / 'Velmar.dll'}", f"-out:{CSHARP / 'Scene.exe'}", SOURCE / "kit" / "Scene.cs")


def host(name):
    """The command that runs an example."""
    if name == "python":
        return [sys.executable, SOURCE / "python" / "scene.py", INSTALLED / "lib" / "libVelmarAPI.so"]
    if name == "kit_python":
        return ["env", f"PYTHONPATH={INSTALLED / 'share/velmar/python'}", "PYTHONDONTWRITEBYTECODE=1", sys.executable,
                SOURCE / "kit" / "scene.py"]
    if name == "kit_csharp":
        return ["env", f"LD_LIBRARY_PATH={INSTALLED / 'lib'}", "mono", CSHARP / "Scene.exe"]
    name = name.replace("kit_", "with_kit_in_") if name.startswith("kit_") else f"in_{name}"
    program = HOSTS / f"scene_{name}"
    return [EMULATOR, program.with_suffix(".exe")] if EMULATOR else [program]


class Examples(unittest.TestCase):
    # Loading a library needs a Python of the same system.
    PLAIN = ["c", "cpp"] if EMULATOR else ["c", "cpp", "python"]
    WITH_KIT = ["kit_c", "kit_cpp"] if EMULATOR else ["kit_c", "kit_cpp", "kit_python", "kit_csharp"]
    LANGUAGES = PLAIN + WITH_KIT

    def run_host(self, language, *arguments):
        folder = WORK / f"run-{language}-{self._testMethodName}"
        folder.mkdir()
        return folder, *run(*host(language), *arguments, folder=folder)

    def test_each_writes_the_same_files(self):
        written = {}
        for language in self.LANGUAGES:
            folder, code, output = self.run_host(language)
            self.assertEqual((code, output), (0, "Num materials: 2\nscene.xml\n"), language)
            files = [p for p in folder.rglob("*") if p.is_file()]
            written[language] = {p.relative_to(folder).as_posix(): p.read_bytes() for p in files}
            # The document, the box and the ground.
            self.assertEqual(len(files), 3, language)
        for language in self.LANGUAGES:
            self.assertEqual(written[language], written["c"], language)

    def test_the_scene_is_complete(self):
        folder = self.run_host("c")[0]
        scene = xml.etree.ElementTree.parse(folder / "scene.xml").getroot()
        self.assertEqual([node.tag for node in scene],
                         ["renderer_settings", "camera", "tonemapping", "background_settings", "material", "material",
                          "mesh", "model2", "mesh", "material", "model2"])
        names = {node.findtext("uid"): node.findtext("name") for node in scene}
        model = scene.find("model2")
        self.assertEqual(names[model.findtext("geometry_uid")], "Box")
        self.assertEqual([names[uid.text] for uid in model.find("materials")], ["Walls", "Lid"])
        for path in scene.iterfind("mesh/external/path"):
            self.assertTrue((folder / path.text.replace("\\", "/")).is_file())

    def test_a_document_that_cannot_be_written_is_noticed(self):
        for language in self.LANGUAGES:
            folder = WORK / f"run-{language}-{self._testMethodName}"
            (folder / "scene.xml").mkdir(parents=True)
            code, output = run(*host(language), folder=folder)
            self.assertEqual(code, 1, language)
            wanted = "Failed to replace file 'scene.xml'" if language in self.WITH_KIT else "scene.xml couldn't be written\n"
            self.assertIn(wanted, output)

    def test_hosts_with_the_kit_report_the_failure_of_a_mesh(self):
        for language in self.WITH_KIT:
            folder = WORK / f"run-{language}-{self._testMethodName}"
            folder.mkdir()
            (folder / "scene_meshes").write_text("in the way")
            code, output = run(*host(language), folder=folder)
            self.assertEqual(code, 1, language)
            self.assertIn("Failed to open file 'scene_meshes\\mesh_", output, language)

    @unittest.skipIf(EMULATOR, "needs interpreters of that system")
    def test_the_programs_of_the_page_run_and_report_what_fails(self):
        page = (SOURCE.parent / "docs" / "bindings.md").read_text(encoding="utf-8")
        folder = WORK / "page"
        folder.mkdir()
        for language, name in (("cpp", "host.cpp"), ("python", "host.py"), ("csharp", "Host.cs")):
            program = re.search(rf"^```{language}\n(.*?)^```$", page, re.M | re.S).group(1)
            (folder / name).write_text(program, encoding="utf-8")
        must_run(CXX_COMPILER, "-std=c++20", "-Wall", "-Wextra", "-Werror", folder / "host.cpp", f"-I{INSTALLED / 'include'}",
                 f"-L{INSTALLED / 'lib'}", f"-Wl,-rpath,{INSTALLED / 'lib'}", "-lvelmarkit", "-o", folder / "host")
        must_run("mcs", f"-r:{CSHARP / 'Velmar.dll'}", f"-out:{folder / 'Host.exe'}", folder / "Host.cs")
        shutil.copy(CSHARP / "Velmar.dll", folder)
        hosts = {"cpp": [folder / "host"],
                 "python": [*host("kit_python")[:-1], folder / "host.py"],
                 "csharp": ["env", f"LD_LIBRARY_PATH={INSTALLED / 'lib'}", "mono", folder / "Host.exe"]}
        for command in hosts.values():
            code, output = run(*command, folder=folder)
            self.assertEqual(code, 1, output)
            self.assertIn("Failed to open file 'bunny.obj': No such file or directory", output)
        (folder / "bunny.obj").write_text("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")
        for command in hosts.values():
            code, output = run(*command, folder=folder)
            self.assertEqual(code, 0, output)
            scene = xml.etree.ElementTree.parse(folder / "bunny.xml").getroot()
            self.assertEqual(len(scene.findall("model2")), 1)
            (folder / "bunny.xml").unlink()

    def test_cpp_catches_the_failure_of_a_mesh_by_its_type(self):
        folder = WORK / f"run-{self._testMethodName}"
        folder.mkdir()
        (folder / "scene_meshes").write_text("in the way")
        code, output = run(*host("cpp"), folder=folder)
        self.assertEqual(code, 1)
        self.assertIn("Failed to open file 'scene_meshes\\mesh_", output)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[9:])
