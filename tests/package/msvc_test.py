"""Makes the package for hosts of Microsoft's compiler, unpacks it elsewhere, and uses it.

Usage: msvc_test.py PACKAGE_JSON WORK EMULATOR OBJECTS [unittest options]

OBJECTS is the build's folder of tests/msvc, with a compiled host and the libraries of its runtime.
"""
import json
import os
import pathlib
import shutil
import subprocess
import sys
import unittest

PACKAGE_JSON, WORK, EMULATOR, OBJECTS = (pathlib.Path(argument) for argument in sys.argv[1:5])
PACKAGE = json.loads(PACKAGE_JSON.read_text(encoding="utf-8"))
TREE = WORK / "a room of its own" / PACKAGE["name"]

PROJECT = """cmake_minimum_required(VERSION 3.25)
project(Host LANGUAGES CXX)
find_package(VelmarAPI 1.0 REQUIRED)
add_executable(host host.cpp)
target_link_libraries(host PRIVATE VelmarAPI::VelmarAPI)
"""


def run(*command, folder=None):
    done = subprocess.run([str(part) for part in command], cwd=folder, stdin=subprocess.DEVNULL, capture_output=True,
                          timeout=120, check=False)
    output = (done.stdout + done.stderr).decode()
    if done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}:\n{output}")
    return output


def setUpModule():
    shutil.rmtree(WORK, ignore_errors=True)
    TREE.parent.mkdir(parents=True)
    script = pathlib.Path(PACKAGE["source"]) / "scripts" / "package.py"
    archive = run(sys.executable, script, PACKAGE_JSON, WORK).strip()
    run(PACKAGE["cmake"], "-E", "tar", "xf", archive, folder=TREE.parent)


class Package(unittest.TestCase):
    def test_it_has_the_library_and_what_hosts_need(self):
        files = {path.relative_to(TREE).as_posix() for path in TREE.rglob("*") if path.is_file()}
        self.assertLessEqual({"bin/VelmarAPI.dll", "lib/VelmarAPI.lib", "lib/VelmarAPI.def", "include/velmarapi.h",
                              "include/velmarapi/mesh.h", "include/velmarexceptions.h", "README.md",
                              "lib/cmake/VelmarAPI/VelmarAPIConfig.cmake", "licences/zstd.txt"}, files)
        # Programs and libraries of MinGW's form of exceptions aren't for it.
        self.assertFalse([name for name in files if name.endswith((".exe", ".dll.a", ".pc"))])

    def test_a_host_links_its_import_library_and_catches_by_type(self):
        objects = [OBJECTS / f"{name}.obj" for name in ("EachExport", "Program", "FailingMemory", "Runtime")]
        libraries = [OBJECTS / "vcruntime140.lib", OBJECTS / "ucrtbase.lib"]
        kernel = "/usr/x86_64-w64-mingw32/lib/libkernel32.a"
        folder = WORK / "host"
        folder.mkdir()
        run("lld-link", "/entry:start", "/subsystem:console", "/nodefaultlib", "/out:host.exe", *objects, *libraries,
            TREE / "lib" / "VelmarAPI.lib", kernel, folder=folder)
        shutil.copy(TREE / "bin" / "VelmarAPI.dll", folder)
        self.assertIn("each exception of the exports is caught", run(EMULATOR, folder / "host.exe", folder=folder))

    def test_a_cmake_project_is_compiled_so_that_functions_of_c_linkage_may_throw(self):
        folder = WORK / "project"
        folder.mkdir()
        (folder / "CMakeLists.txt").write_text(PROJECT, encoding="utf-8")
        (folder / "host.cpp").write_text("#include <velmarapi.h>\nint main() {}\n", encoding="utf-8")
        # What Microsoft's own build environment would give.
        run(PACKAGE["cmake"], "-G", "Ninja", "-S", folder, "-B", folder / "build", "-DCMAKE_SYSTEM_NAME=Windows",
            "-DCMAKE_CXX_COMPILER=/usr/lib/llvm-14/bin/clang-cl", "-DCMAKE_CXX_COMPILER_WORKS=1", "-DCMAKE_MT=llvm-mt",
            "-DCMAKE_RC_COMPILER=llvm-rc", "-DCMAKE_LINKER=lld-link", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON",
            f"-DCMAKE_PREFIX_PATH={TREE}", "-DCMAKE_CXX_FLAGS=--target=x86_64-pc-windows-msvc /EHsc")
        commands = json.loads((folder / "build" / "compile_commands.json").read_text(encoding="utf-8"))
        command = commands[0]["command"]
        self.assertIn(str(TREE / "include"), command.replace("\\", ""))
        # The last of these options decides.
        self.assertLess(command.index("/EHsc"), command.index("/EHs "))
        self.assertIn("/EHc-", command)

    def test_licences_of_what_is_linked_are_in_it(self):
        names = {path.stem for path in (TREE / "licences").iterdir()}
        self.assertEqual(names, {"zstd", "xxHash", "double-conversion", "pugixml", "RPly", "gcc", "mingw-w64"})

    def test_its_documents_name_nothing_that_is_missing(self):
        links = pathlib.Path(PACKAGE["source"]) / "tests" / "tree" / "links.py"
        self.assertIn("documents", run(sys.executable, links, TREE))


if __name__ == "__main__":
    os.environ.setdefault("LC_ALL", "C.UTF-8")
    unittest.main(argv=sys.argv[:1] + sys.argv[5:])
