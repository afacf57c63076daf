"""Stores of meshes: `velmar convert --store`, `velmar export --store` and `velmar store`."""
import json
import os
import pathlib
import subprocess

from support import COMMAND, SQUARE, TRIANGLE, ToolTest


class Store(ToolTest):
    def setUp(self):
        super().setUp()
        (self.folder / "in" / "sub").mkdir(parents=True)
        self.write("in/a.obj", TRIANGLE)
        self.write("in/sub/same.obj", TRIANGLE)
        self.write("in/square.obj", SQUARE.replace("mtllib none.mtl\n", ""))

    def fill(self, *options):
        return self.run_tool("convert", "-r", "in", "--store", "store", *options)

    def meshes(self):
        return sorted((self.folder / "store").glob("??/mesh_*.vmmesh"))

    def manifest(self):
        files = (self.folder / "store/manifest").glob("*.jsonl")
        return [json.loads(line) for file in files for line in file.read_text(encoding="utf-8").splitlines()]

    def test_holds_each_mesh_once_under_the_name_of_its_content(self):
        code, output, errors = self.fill()
        size = sum(path.stat().st_size for path in (self.folder / "in").rglob("*.obj"))
        written = sum(path.stat().st_size for path in self.meshes())
        self.assertEqual((code, output, errors), (0, "3 files converted, 0 unchanged, 0 failed; 2 meshes added; "
                                                     f"{size} bytes in, {written} bytes out\n", ""))
        self.assertEqual(len(self.meshes()), 2)
        for path in self.meshes():
            checksum = int(path.stem.removeprefix("mesh_"))
            self.assertEqual(path.parent.name, f"{checksum >> 56:02x}")

    def test_the_manifest_has_a_line_for_each_source(self):
        self.fill("--scale", "2")
        entry = next(entry for entry in self.manifest() if entry["source"].endswith("a.obj"))
        stat = (self.folder / "in/a.obj").stat()
        self.assertTrue(os.path.isabs(entry["source"]) or entry["source"][1] == ":")
        self.assertEqual(entry["size"], stat.st_size)
        self.assertAlmostEqual(entry["time"], stat.st_mtime_ns, delta=1000)
        self.assertEqual(entry["settings"], "scale 2, up auto")
        self.assertEqual((entry["vertices"], entry["triangles"], entry["quads"]), (3, 1, 0))
        # The height of an OBJ file is y, that of a mesh is z.
        self.assertEqual(entry["bounds"], [0, 0, 0, 2, 0, 2])
        self.assertEqual(entry["materials"], ["default"])

    def test_a_second_run_converts_what_changed(self):
        self.fill()
        self.assertEqual(self.fill()[1], "0 files converted, 3 unchanged, 0 failed; 0 meshes added; "
                                         "0 bytes in, 0 bytes out\n")
        self.write("in/a.obj", TRIANGLE.replace("1 0 0", "3 0 0"))
        self.assertRegex(self.fill()[1], r"\A1 file converted, 2 unchanged, 0 failed; 1 mesh added; ")

    def test_of_several_lines_of_a_source_the_one_converted_last_counts(self):
        self.fill()
        old = [{**entry, "size": 1, "converted": entry["converted"] - 1} for entry in self.manifest()]
        # Its name is after those of the other files.
        self.write("store/manifest/zzz.jsonl", "".join(json.dumps(entry) + "\n" for entry in old))
        self.assertRegex(self.fill()[1], r"\A0 files converted, 3 unchanged, ")

    def test_other_options_are_another_conversion(self):
        self.fill()
        self.assertRegex(self.fill("--scale", "3")[1], r"\A3 files converted, 0 unchanged, ")
        self.assertRegex(self.fill()[1], r"\A0 files converted, 3 unchanged, ")

    def test_a_mesh_that_is_gone_is_made_again(self):
        self.fill()
        before = {path: path.read_bytes() for path in self.meshes()}
        for path in before:
            path.unlink()
        self.assertEqual(self.fill()[0], 0)
        self.assertEqual({path: path.read_bytes() for path in self.meshes()}, before)

    def test_a_broken_source_is_reported_each_time(self):
        self.write("in/broken.obj", "f 1 x")
        for _ in range(2):
            code, output, errors = self.fill()
            self.assertEqual((code, errors.count("\n")), (1, 1))
            self.assertIn("in/broken.obj", errors)
            self.assertIn(", 1 failed; ", output)
        self.assertEqual(len(self.meshes()), 2)

    def test_a_single_file(self):
        self.assertRegex(self.run_tool("convert", "square.obj", "--store", "store")[1], r"\A1 file converted, ")
        self.assertEqual(len(self.meshes()), 1)

    def test_many_writers_at_once(self):
        for i in range(20):
            self.write(f"in/{i % 10}-{i}.obj", TRIANGLE.replace("1 0 0", f"{i % 10 + 1} 0 0"))
        commands = [COMMAND + ["convert", "-r", "in", "--store", "store"] for _ in range(4)]
        running = [subprocess.Popen(command, cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
                   for command in commands]
        for process in running:
            self.assertEqual((process.communicate()[1], process.returncode), (b"", 0))
        self.assertEqual(self.run_tool("store", "verify", "store"), (0, "11 meshes, 23 sources, 0 faults\n", ""))
        self.assertEqual([path for path in (self.folder / "store").rglob("*partial*")], [])

    def json_lines(self, *arguments, **options):
        code, output, errors = self.run_tool("convert", "--store", "store", "--json", *arguments, **options)
        self.assertEqual(errors, "")
        return code, [json.loads(line) for line in output.splitlines()]

    def test_json_has_a_line_for_each_file(self):
        self.write("in/broken.obj", "f 1 x")
        code, lines = self.json_lines("-r", "in")
        self.assertEqual(code, 1)
        self.assertEqual([line.get("state") for line in lines], ["converted", "failed", "converted", "converted", None])
        a, broken, square, same, summary = lines
        self.assertEqual(broken, {"source": "in/broken.obj", "state": "failed", "message":
                                  "in/broken.obj: Position index invalid. (index '0' out of bounds, on line 1)"})
        self.assertEqual(a["checksum"], same["checksum"])
        mesh, = [path for path in self.meshes() if path.stem == "mesh_" + square["checksum"]]
        self.assertEqual((square["size"], square["written"]),
                         ((self.folder / "in/square.obj").stat().st_size, mesh.stat().st_size))
        written = sum(path.stat().st_size for path in self.meshes())
        self.assertEqual(summary["summary"], {"converted": 3, "unchanged": 0, "failed": 1, "added": 2,
                                              "bytes_in": a["size"] + same["size"] + square["size"], "bytes_out": written})
        self.assertEqual(self.json_lines("in/a.obj")[1][0], {"source": "in/a.obj", "state": "unchanged"})

    def test_a_dry_run_names_what_would_be_converted(self):
        self.fill()
        self.write("in/new.ply", "ply")
        os.utime(self.folder / "in/a.obj", ns=(10**18, 10**18))
        before = self.files()
        code, lines = self.json_lines("-r", "in", "-n")
        self.assertEqual(code, 0)
        self.assertTrue(all(line["state"] == "pending" for line in lines[:2]))
        self.assertTrue(os.path.isabs(lines[0]["source"]) or lines[0]["source"][1] == ":")
        self.assertEqual([line["size"] for line in lines[:2]], [len(TRIANGLE), 3])
        self.assertEqual([line["memory"] for line in lines[:2]], [4 * len(TRIANGLE), 12])
        self.assertEqual(lines[2:], [{"summary": {"pending": 2, "unchanged": 2, "failed": 0, "bytes_in": len(TRIANGLE) + 3}}])
        self.assertEqual(self.run_tool("convert", "-r", "in", "--store", "store", "-n")[1],
                         f"in/a.obj ({len(TRIANGLE)} bytes)\nin/new.ply (3 bytes)\n"
                         f"2 files would be converted, {len(TRIANGLE) + 3} bytes; 2 unchanged\n")
        self.assertEqual(self.files(), before)

    def test_a_dry_run_makes_no_store(self):
        self.assertEqual(self.json_lines("-r", "in", "-n")[1][-1]["summary"]["pending"], 3)
        self.assertFalse((self.folder / "store").exists())

    def test_a_list_names_the_files(self):
        names = ["in/square.obj", "in/a.obj"]
        for form in ("\n".join(names), "\r\n".join(names) + "\r\n", "".join(name + "\0" for name in names)):
            self.write("list.txt", form)
            lines = self.json_lines("--list", "list.txt", "--force")[1]
            self.assertEqual([line.get("source") for line in lines], [*names, None])
        lines = self.json_lines("--list", "-", "-r", stdin=None, input=b"in\0triangle.obj\0")[1]
        self.assertEqual([line.get("source") for line in lines[1:]], ["in/square.obj", "in/sub/same.obj", "triangle.obj", None])

    def test_a_list_with_faults_is_done_for_the_rest(self):
        self.write("list.txt", "nowhere.obj\nin\ntriangle.obj\n")
        code, lines = self.json_lines("--list", "list.txt")
        self.assertEqual(code, 1)
        self.assertEqual({line.get("source"): line.get("state") for line in lines},
                         {"nowhere.obj": "failed", "in": "failed", "triangle.obj": "converted", None: None})
        self.expect_failure(["convert", "--list", "no.txt", "--store", "store"], r"velmar: no\.txt: can't be read: .*")

    def test_force_converts_what_did_not_change(self):
        self.fill()
        output = self.fill("--force")[1]
        self.assertRegex(output, r"\A3 files converted, 0 unchanged, 0 failed; 0 meshes added; ")

    def test_processes_in_turn_continue_one_file_of_the_manifest(self):
        for name in ("in/a.obj", "in/square.obj"):
            self.json_lines(name, "--manifest", "worker-1")
        self.assertEqual([path.name for path in (self.folder / "store/manifest").iterdir()], ["worker-1.jsonl"])
        self.assertEqual(len(self.manifest()), 2)
        self.assertRegex(self.fill()[1], r"\A1 file converted, 2 unchanged, ")

    def test_wrong_usage(self):
        hint = "\n'velmar convert --help' says more."
        self.expect_failure(["convert", "square.obj", "out.ply", "--jobs", "0"],
                            "velmar: --jobs: Value 0 not in range 1 to 1024" + hint, 2)
        self.expect_failure(["convert"], "velmar: IN is required" + hint, 2)
        self.expect_failure(["convert", "--store", "store"], "velmar: IN or --list is required" + hint, 2)
        self.expect_failure(["convert", "in", "--store", "store", "--list", "a"],
                            "velmar: in: --list takes the place of IN" + hint, 2)
        self.expect_failure(["convert", "in", "--store", "store", "--manifest", "con"],
                            r"velmar: --manifest: con: is the name of a device" + hint, 2)
        self.expect_failure(["convert", "in", "--store", "store", "--manifest", "../x"],
                            r"velmar: --manifest: \.\./x: a name has up to 100 letters, digits, - and _" + hint, 2)
        self.expect_failure(["convert", "square.obj"], "velmar: OUT is required" + hint, 2)
        self.expect_failure(["convert", "square.obj", "out.ply", "--store", "store"],
                            "velmar: out.ply: --store takes the place of OUT" + hint, 2)
        self.expect_failure(["convert", "in", "--store", "store"], "velmar: in: is a folder, which wants --recursive" + hint, 2)

    def test_a_place_that_can_be_no_store(self):
        self.expect_failure(["convert", "square.obj", "--store", "triangle.obj/store"],
                            r"velmar: .*triangle\.obj.* \(code \d+\)")
        self.expect_failure(["store", "list", "in"], "velmar: in: is no store of meshes: it has no folder 'manifest'")

    def test_scenes_name_the_store(self):
        (self.folder / "scenes").mkdir()
        code, output, errors = self.run_tool("export", "square.obj", "scenes/a.xml", "--store", "store", "--ground", "none")
        self.assertEqual((code, errors), (0, ""))
        mesh, = self.meshes()
        place = f"store/{mesh.parent.name}/{mesh.name}"
        named = self.read_document("scenes/a.xml").findtext("mesh/external/path")
        self.assertEqual(named.replace("\\", "/"), "../" + place)
        self.assertFalse((self.folder / "scenes/a_meshes").exists())
        self.assertIn(mesh.name, output)
        # The mesh is in use: a prune leaves it.
        self.run_tool("store", "prune", "--older-than", "0", "store")
        self.assertEqual(self.meshes(), [mesh])
        self.assertEqual(self.run_tool("store", "verify", "store"), (0, "1 mesh, 1 source, 0 faults\n", ""))

    def test_a_scene_takes_the_meshes_that_the_store_has(self):
        self.run_tool("export", "square.obj", "a.xml", "--store", "store", "--ground", "none")
        mesh, = self.meshes()
        before = mesh.stat().st_mtime_ns
        self.assertIn(", existed)", self.run_tool("export", "square.obj", "b.xml", "--store", "store", "--ground", "none")[1])
        self.assertEqual((self.meshes(), mesh.stat().st_mtime_ns), ([mesh], before))

    def test_list(self):
        self.fill()
        lines = self.run_tool("store", "list", "store")[1].splitlines()
        self.assertEqual([pathlib.PurePath(line.replace("\\", "/")).name for line in lines],
                         ["a.obj", "square.obj", "same.obj"])
        self.assertIn("3 vertices, 1 triangle, 0 quads", lines[0])
        entries = [json.loads(line) for line in self.run_tool("store", "list", "--json", "store")[1].splitlines()]
        self.assertEqual(sorted(entries, key=lambda e: e["source"]), sorted(self.manifest(), key=lambda e: e["source"]))

    def test_verify_finds_damage_and_loss(self):
        self.fill()
        self.assertEqual(self.run_tool("store", "verify", "store"), (0, "2 meshes, 3 sources, 0 faults\n", ""))
        first, second = self.meshes()
        first.write_bytes(second.read_bytes())
        code, output, errors = self.run_tool("store", "verify", "store")
        self.assertEqual((code, output), (1, "2 meshes, 3 sources, 1 fault\n"))
        self.assertIn(f"{first.name}: is damaged; remove it and convert its sources again", errors)
        first.unlink()
        code, output, errors = self.run_tool("store", "verify", "store")
        self.assertEqual(code, 1)
        self.assertRegex(errors, rf"{first.name}: is missing; it is the mesh of .*\.obj")

    def test_a_line_that_a_killed_process_left_is_passed_over(self):
        self.fill()
        manifest = next((self.folder / "store/manifest").iterdir())
        with open(manifest, "ab") as file:
            file.write(b'{"source": "half')
        self.assertEqual(self.run_tool("store", "verify", "store")[0], 0)
        self.assertRegex(self.fill()[1], r"\A0 files converted, 3 unchanged, ")
        with open(manifest, "ab") as file:
            file.write(b"\n")
        code, _, errors = self.run_tool("store", "verify", "store")
        self.assertEqual(code, 1)
        self.assertRegex(errors, r"\.jsonl:4: this line of the manifest can't be read\n\Z")

    def test_prune_removes_what_no_source_is_converted_to(self):
        self.fill()
        self.write("in/square.obj", TRIANGLE)
        self.fill()
        left = self.meshes()
        self.write(f"store/{left[0].parent.name}/mesh_1.vmmesh-partial-1-ff", "half")
        self.assertEqual(self.run_tool("store", "prune", "store")[1], "0 files removed; 0 bytes\n")
        dry = self.run_tool("store", "prune", "--older-than", "0", "-n", "store")[1]
        self.assertRegex(dry, r"(?s)\A(.*\n){2}2 files would be removed; \d+ bytes\n\Z")
        self.assertEqual(self.meshes(), left)
        self.assertRegex(self.run_tool("store", "prune", "--older-than", "0", "store")[1],
                         r"(?s)\A(.*\n){2}2 files removed; \d+ bytes\n\Z")
        self.assertEqual(len(self.meshes()), 1)
        self.assertEqual(self.run_tool("store", "verify", "store"), (0, "1 mesh, 3 sources, 0 faults\n", ""))
        # The manifest is one file with the present entries now.
        self.assertEqual(len(self.manifest()), 3)

    def test_prune_forgets_missing_sources_on_request(self):
        self.fill()
        (self.folder / "in/square.obj").unlink()
        self.run_tool("store", "prune", "--older-than", "0", "store")
        self.assertEqual((len(self.meshes()), len(self.manifest())), (2, 3))
        self.run_tool("store", "prune", "--older-than", "0", "--missing-sources", "store")
        self.assertEqual((len(self.meshes()), len(self.manifest())), (1, 2))
