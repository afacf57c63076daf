"""Makes the package of a build, unpacks it elsewhere, and uses it as its users would.

Usage: package_test.py PACKAGE_JSON WORK TOOLCHAIN EMULATOR C_COMPILER CXX_COMPILER [unittest options]

TOOLCHAIN and EMULATOR are empty for the native build.
"""
import hashlib
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import unittest
import xml.etree.ElementTree

PACKAGE_JSON, WORK, TOOLCHAIN, EMULATOR, C_COMPILER, CXX_COMPILER = sys.argv[1:7]
PACKAGE = json.loads(pathlib.Path(PACKAGE_JSON).read_text(encoding="utf-8"))
CMAKE, SOURCE, BUILD = PACKAGE["cmake"], pathlib.Path(PACKAGE["source"]), pathlib.Path(PACKAGE["build"])
HOSTS = SOURCE / "tests" / "package"
WORK = pathlib.Path(WORK)
WINDOWS = PACKAGE["archive"] == "zip"
# Neither the folder nor its name is known to the build.
ROOM = WORK / "a room of its own"
TREE = ROOM / PACKAGE["name"]

LIBRARIES = [TREE / "bin" / name for name in ("VelmarAPI.dll", "velmarkit.dll")] if WINDOWS else [
    TREE / "lib" / name for name in ("libVelmarAPI.so", "libvelmarkit.so")]


def run(*command, folder=None, variables=None):
    done = subprocess.run([str(part) for part in command], cwd=folder or WORK, stdin=subprocess.DEVNULL,
                          capture_output=True, timeout=250, env={**os.environ, **(variables or {})})
    output = (done.stdout + done.stderr).replace(b"\r\n", b"\n").decode()
    if done.returncode != 0:
        raise AssertionError(f"{shlex.join(str(part) for part in command)} ended with {done.returncode}:\n{output}")
    return output


def make_package(folder):
    return pathlib.Path(run(sys.executable, SOURCE / "scripts" / "package.py", PACKAGE_JSON, folder).strip())


def setUpModule():
    shutil.rmtree(WORK, ignore_errors=True)
    ROOM.mkdir(parents=True)
    archive = make_package(WORK)
    run(CMAKE, "-E", "tar", "xf", archive, folder=ROOM)


def program_of(folder, name):
    return folder / (name + (".exe" if WINDOWS else ""))


def run_program(program, *arguments, folder=None):
    return run(*([EMULATOR] if EMULATOR else []), program, *arguments, folder=folder or program.parent,
               variables={} if WINDOWS else {"LD_LIBRARY_PATH": str(TREE / "lib")})


def copy_dll_to(folder):
    """Copies the DLL next to the program."""
    if WINDOWS:
        shutil.copy(TREE / "bin" / "VelmarAPI.dll", folder)


class Package(unittest.TestCase):
    def room(self):
        """An empty folder for this test."""
        folder = ROOM / self._testMethodName
        folder.mkdir()
        return folder

    def configure(self, folder, sources, *options):
        if TOOLCHAIN:
            options += (f"-DCMAKE_TOOLCHAIN_FILE={TOOLCHAIN}", f"-DCMAKE_FIND_ROOT_PATH={TREE}")
        else:
            options += (f"-DCMAKE_C_COMPILER={C_COMPILER}", f"-DCMAKE_CXX_COMPILER={CXX_COMPILER}")
        run(CMAKE, "-G", "Ninja", "-S", sources, "-B", folder, "-DCMAKE_BUILD_TYPE=Release", *options)

    def assert_is_document(self, path):
        self.assertTrue(path.read_bytes().startswith(b"<?xml"), path)

    def assert_hosts_run(self, folder):
        run_program(program_of(folder, "host_in_c"))
        self.assert_is_document(folder / "host_scene.xml")
        self.assertIn("Failed to open file 'no_such_folder", run_program(program_of(folder, "host_in_cpp")))

    # ---- CMake and pkg-config -------------------------------------------------------------------------------------------

    def test_hosts_find_it_by_find_package(self):
        folder = self.room()
        self.configure(folder, HOSTS, f"-DCMAKE_PREFIX_PATH={TREE}")
        run(CMAKE, "--build", folder)
        self.assert_hosts_run(folder)

    def test_hosts_have_it_by_add_subdirectory(self):
        folder = self.room()
        self.configure(folder, HOSTS, f"-DVELMAR_TREE={TREE}")
        run(CMAKE, "--build", folder)
        self.assert_hosts_run(folder)

    def test_hosts_have_the_sources_by_add_subdirectory(self):
        folder = self.room()
        self.configure(folder, HOSTS, f"-DVELMAR_TREE={SOURCE}",
                       f"-DCMAKE_PREFIX_PATH={SOURCE / 'deps' / ('windows' if WINDOWS else 'linux')}")
        # The library is built already; this tests the properties of the target without building it again.
        suffix = "obj" if WINDOWS else "o"
        run(CMAKE, "--build", folder, "--target", f"CMakeFiles/host_in_c.dir/host.c.{suffix}",
            f"CMakeFiles/host_in_cpp.dir/host.cpp.{suffix}")
        targets = run(CMAKE, "--build", folder, "--target", "help")
        self.assertRegex(targets, r"(?m)^VelmarAPI: ")
        # Tests, tool and benchmarks aren't part of a host's project.
        self.assertNotRegex(targets, r"(?m)^(velmar|tests_mesh|bench_\w+): ")

    def test_hosts_find_it_by_pkg_config(self):
        folder = self.room()
        flags = run("pkg-config", "--cflags", "--libs", "velmarapi",
                    variables={"PKG_CONFIG_LIBDIR": str(TREE / "lib" / "pkgconfig")})
        self.assertEqual(run("pkg-config", "--modversion", "velmarapi",
                             variables={"PKG_CONFIG_LIBDIR": str(TREE / "lib" / "pkgconfig")}).strip(),
                         PACKAGE["version"])
        run(C_COMPILER, HOSTS / "host.c", *shlex.split(flags), "-o", program_of(folder, "host"))
        copy_dll_to(folder)
        run_program(program_of(folder, "host"))
        self.assert_is_document(folder / "host_scene.xml")

    # ---- the lines of the README ----------------------------------------------------------------------------------------

    def test_the_host_of_the_readme_is_built_by_its_line(self):
        folder = self.room()
        readme = (SOURCE / "README.md").read_text(encoding="utf-8")
        (folder / "host.c").write_text(re.search(r"```c\n(#include <velmarapi.h>\n.*?)```", readme, re.S).group(1))
        pattern = r"^    (x86_64-w64-mingw32-gcc.* host\.c .*)$" if WINDOWS else r"^    (cc host\.c .*)$"
        line = re.search(pattern, readme, re.M).group(1)
        (folder / "dist").mkdir()
        (folder / "dist" / ("windows" if WINDOWS else "linux")).symlink_to(TREE)
        copy_dll_to(folder)
        run("sh", "-c", line, folder=folder)
        run_program(program_of(folder, "host"))
        self.assert_is_document(folder / "triangle.xml")
        self.assertEqual(len(list(folder.glob("triangle_meshes/*.vmmesh"))), 1)

    # ---- other compilers for Windows ------------------------------------------------------------------------------------

    @unittest.skipUnless(WINDOWS, "import libraries are a matter of Windows")
    def test_the_list_of_names_makes_an_import_library_for_other_linkers(self):
        folder = self.room()
        run("llvm-dlltool", "-m", "i386:x86-64", "-d", TREE / "lib" / "VelmarAPI.def", "-l", "VelmarAPI.lib", folder=folder)
        run("clang", "--target=x86_64-pc-windows-msvc", "-ffreestanding", "-c", f"-I{TREE / 'include'}",
            HOSTS / "msvc_host.c", "-o", "host.obj", folder=folder)
        run("lld-link", "/entry:start", "/subsystem:console", "/nodefaultlib", "/out:host.exe", "host.obj",
            "VelmarAPI.lib", folder=folder)
        copy_dll_to(folder)
        run_program(folder / "host.exe")
        self.assert_is_document(folder / "host_scene.xml")

    @unittest.skipUnless(WINDOWS, "definition files are a matter of Windows")
    def test_the_list_of_names_holds_names_alone(self):
        first, second, *names = (TREE / "lib" / "VelmarAPI.def").read_text(encoding="ascii").splitlines()
        self.assertEqual((first, second), ("LIBRARY VelmarAPI.dll", "EXPORTS"))
        for name in names:
            self.assertRegex(name, r"^    \w+$")
        listed = (SOURCE / "tests" / "tree" / "exports.def").read_text(encoding="utf-8")
        wanted = re.findall(r"^[ \t]*(\w+)", re.sub(r";.*|^(LIBRARY|EXPORTS)\b.*", "", listed, flags=re.M), re.M)
        self.assertEqual(sorted(name.strip() for name in names), sorted(wanted))

    @unittest.skipUnless(WINDOWS, "version resources are a matter of Windows")
    def test_windows_knows_the_version_of_each_binary(self):
        folder = self.room()
        run(C_COMPILER, HOSTS / "file_version.c", "-lversion", "-o", folder / "file_version.exe")
        for file in ["VelmarAPI.dll", "velmar.exe"]:
            shutil.copy(TREE / "bin" / file, folder)
            self.assertEqual(run_program(folder / "file_version.exe", file),
                             f"{PACKAGE['version']}.0 VelmarAPI {PACKAGE['version']} {file}\n")

    # ---- what else is in it -----------------------------------------------------------------------------------------------

    @unittest.skipIf(WINDOWS, "elsewhere versions belong to whole libraries")
    def test_it_needs_no_newer_system_than_it_tells(self):
        readme = (TREE / "README.md").read_text(encoding="utf-8")
        for library in ["GLIBC", "GLIBCXX"]:
            pattern = rf"\b{library}_([\d.]+\d)"
            newest = re.search(pattern, readme).group(1)
            symbols = "".join(run("nm", "-D", file) for file in [TREE / "bin" / "velmar", *LIBRARIES])
            needed = {tuple(map(int, version.split("."))) for version in re.findall(pattern, symbols)}
            self.assertLessEqual(max(needed), tuple(map(int, newest.split("."))), library)

    def test_the_tool_runs_from_it(self):
        program = program_of(TREE / "bin", "velmar")
        command = [EMULATOR, program] if EMULATOR else [program]
        self.assertEqual(run(*command, "--version"), f"velmar {PACKAGE['version']}\n")

    def test_the_examples_build_from_it(self):
        folder = self.room()
        self.configure(folder, TREE / "examples", f"-DCMAKE_PREFIX_PATH={TREE}")
        run(CMAKE, "--build", folder)
        run_program(program_of(folder, "scene_in_cpp"))
        self.assert_is_document(folder / "scene.xml")

    @unittest.skipIf(WINDOWS, "a Python of that system would be needed to load a library of it")
    def test_python_hosts_run_from_it(self):
        folder = self.room()
        run(sys.executable, TREE / "examples" / "python" / "scene.py", TREE / "lib" / "libVelmarAPI.so", folder=folder)
        self.assert_is_document(folder / "scene.xml")
        run(sys.executable, "-c", "import velmar; velmar.Scene().write('package.xml')", folder=folder,
            variables={"PYTHONPATH": str(TREE / "share" / "velmar" / "python"), "PYTHONDONTWRITEBYTECODE": "1"})
        self.assert_is_document(folder / "package.xml")

    @unittest.skipIf(WINDOWS, "a Python of that system would be needed to load a library of it")
    def test_the_python_package_finds_the_library_beside_it(self):
        folder = self.room()
        python = next(path for path in [sys.executable, "/usr/bin/python3"]
                      if subprocess.run([path, "-c", "import numpy"], capture_output=True).returncode == 0)
        run(python, TREE / "examples" / "python" / "numpy_mesh.py", "waves.xml", folder=folder,
            variables={"PYTHONPATH": str(TREE / "share" / "velmar" / "python"), "VELMAR_LIBRARY": ""})
        self.assert_is_document(folder / "waves.xml")
        self.assertEqual(len(list(folder.glob("waves_meshes/*.vmmesh"))), 1)

    def test_project_for_csharp_names_what_is_there(self):
        project = TREE / "share" / "velmar" / "csharp" / "Velmar" / "Velmar.csproj"
        root = xml.etree.ElementTree.parse(project).getroot()
        self.assertEqual((root.tag, root.get("Sdk")), ("Project", "Microsoft.NET.Sdk"))
        self.assertEqual(root.findtext("PropertyGroup/Version"), PACKAGE["version"])
        # Its sources are all next to it.
        self.assertIn("Scene.cs", [path.name for path in project.parent.glob("*.cs")])
        folder = root.findtext("PropertyGroup/NativeFolder").replace("$(MSBuildThisFileDirectory)", f"{project.parent}/")
        named = [pathlib.Path(content.get("Include").replace("$(NativeFolder)", folder)) for content in root.iter("Content")]
        self.assertEqual([path.resolve().relative_to(TREE.resolve()).parent.as_posix() for path in named], ["bin", "lib"])
        self.assertTrue(named[0 if WINDOWS else 1].is_file())

    def test_the_tool_draws_pictures(self):
        folder = self.room()
        (folder / "square.obj").write_text("v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3 4\n")
        run_program(program_of(TREE / "bin", "velmar"), "render", "square.obj", "square.png", "--width", "32",
                    "--height", "24", "--samples", "4", folder=folder)
        self.assertEqual((folder / "square.png").read_bytes()[:4], b"\x89PNG")
        run_program(program_of(TREE / "bin", "velmar"), "info", "square.obj", "--picture", "mesh.png", "--width", "32",
                    "--height", "24", folder=folder)
        self.assertEqual((folder / "mesh.png").read_bytes()[:4], b"\x89PNG")

    @unittest.skipIf(WINDOWS, "man and bash are programs of the other system")
    def test_the_tool_has_a_manual_page_and_completion(self):
        program = program_of(TREE / "bin", "velmar")
        for command, file in (("manual", "man/man1/velmar.1"), ("completion", "bash-completion/completions/velmar")):
            self.assertEqual((TREE / "share" / file).read_text(encoding="utf-8"), run_program(program, command))

    def test_binaries_are_stripped(self):
        preview = TREE / "bin" / "vs2017_64" / f"velmar_rt_sdk.{'dll' if WINDOWS else 'so'}"
        for file in LIBRARIES + [preview, program_of(TREE / "bin", "velmar")]:
            # No names of debug sections, and an empty symbol table.
            self.assertNotIn(b".debug_info", file.read_bytes())
            self.assertIn("no symbols", run("nm", file), file)

    def test_its_documents_name_nothing_that_is_missing(self):
        self.assertIn("documents", run(sys.executable, SOURCE / "tests" / "tree" / "links.py", TREE))

    def test_terms_of_all_that_is_linked_are_in_it(self):
        linked = {"zstd", "xxHash", "double-conversion", "CLI11", "stb", "RPly", "Embree", "pugixml",
                  "minizip", "zlib"}
        linked |= {"gcc", "mingw-w64"} if WINDOWS else {"assimp"}
        licences = {path.stem: path.read_text(encoding="utf-8") for path in (TREE / "licences").iterdir()}
        self.assertEqual(set(licences), linked)
        for name, text in licences.items():
            self.assertRegex(text, r"(?s)Copyright.*(WITHOUT|without) (WARRANTY|warranty|ANY WARRANTY)|AS IS|'as-is'", name)

    def test_the_newest_changes_are_those_of_its_version(self):
        changes = (TREE / "CHANGELOG.md").read_text(encoding="utf-8")
        self.assertEqual(re.search(r"^## (\S+)", changes, re.M).group(1), PACKAGE["version"])

    def test_the_same_build_gives_the_same_bytes(self):
        again = make_package(self.room())
        first = WORK / again.name
        self.assertEqual(hashlib.sha256(again.read_bytes()).hexdigest(),
                         hashlib.sha256(first.read_bytes()).hexdigest())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[7:])
