"""`velmar check`."""
import json
import re
import shutil

from support import ROOT, ToolTest

DATA = ROOT / "tests" / "data"
BAD = DATA / "bad" / "scenes"

CAMERA = """\
	<camera>
		<uid>1</uid>
		<name>Camera</name>
		<keyframe>
			<time>0</time>
			<pos>0 -10 0</pos>
		</keyframe>
	</camera>
"""
LIGHT = """\
	<background_settings>
		<uid>2</uid>
		<name>Light</name>
		<background_material><material><name></name><sunsky></sunsky></material></background_material>
	</background_settings>
"""
BALL = """\
	<material>
		<uid>3</uid>
		<name>Red</name>
		<diffuse></diffuse>
	</material>
	<sphere>
		<uid>4</uid>
		<name>Ball</name>
		<keyframe>
			<time>0</time>
			<pos>0 0 0</pos>
		</keyframe>
		<radius>1</radius>
		<material_uid>3</material_uid>
	</sphere>
"""


class Check(ToolTest):
    def write_scene(self, *nodes, name="scene.xml"):
        self.write(name, "<scene>\n" + "".join(nodes) + "</scene>\n")

    def codes(self, *arguments):
        """What is found, as pairs of element and code, and the exit code."""
        code, output, errors = self.run_tool("check", "--json", *arguments)
        self.assertEqual(errors, "")
        findings = [f for document in json.loads(output)["documents"] for f in document["findings"]]
        return code, [(f["element"], f["code"]) for f in findings]

    # ---- the catalogue

    def test_every_bad_document_has_the_findings_that_lie_beside_it(self):
        names = sorted(path.name for path in BAD.glob("*.xml"))
        self.assertGreater(len(names), 20)
        code, output, errors = self.run_tool("check", *names, cwd=BAD)
        self.assertEqual((code, errors), (1, ""))
        for name in names:
            expected = (BAD / f"{name}.findings").read_text(encoding="utf-8")
            found = "".join(line + "\n" for line in output.splitlines() if line.startswith(name + ":"))
            self.assertEqual(found, expected)
            self.assertNotEqual(found, "")

    def test_each_entry_of_the_catalogue_has_an_example(self):
        page = (ROOT / "docs" / "check.md").read_text(encoding="utf-8")
        catalogue = dict(re.findall(r"(?m)^\| `([a-z-]+)` \| (error|warning) \|", page))
        found = {}
        for path in BAD.glob("*.findings"):
            for severity, code in re.findall(r"(?m)^[^:]+:\d+:\d+: (error|warning): .* \[([a-z-]+)\]$",
                                             path.read_text(encoding="utf-8")):
                found[code] = severity
        self.assertEqual(found, catalogue)
        for code in catalogue:
            self.assertIn(f"[{code}]", (BAD / f"{code}.xml.findings").read_text(encoding="utf-8"))

    def test_directions_are_to_be_of_unit_length(self):
        for up, found in (("0 0 2", True), ("0 0 0.5", True), ("0 0 1.0005", False), ("0 0 0.9995", False)):
            self.write_scene(CAMERA.replace("</camera>", f"<up>{up}</up><forwards>0 1 0</forwards></camera>"), LIGHT, BALL)
            self.assertEqual(self.codes("scene.xml"), (0, [("camera[uid=1]/up", "not-unit-length")] if found else []))

    # ---- clean documents

    def test_a_clean_document_gives_no_output(self):
        self.write_scene(CAMERA, LIGHT, BALL)
        self.expect(["check", "scene.xml"])

    def test_the_golden_scene_is_clean_with_the_files_that_it_names(self):
        text = (DATA / "golden" / "whole_scene.xml").read_text(encoding="utf-8")
        # The scene's node of a renderer library, which wrote nothing of its own.
        text = text.replace("</scene>", "<scatter><uid>11</uid><name>grass</name></scatter></scene>")
        self.run_tool("convert", "triangle.obj", "a.vmmesh")
        checksum = re.search(r"checksum +(\d+)", self.run_tool("info", "a.vmmesh")[1]).group(1)
        mesh = re.search(r"mesh_(\d+)\.vmmesh", text).group(1)
        (self.folder / "scene_meshes").mkdir()
        (self.folder / "a.vmmesh").rename(self.folder / "scene_meshes" / f"mesh_{checksum}.vmmesh")
        for name in ("lamp.ies", "dust.png"):
            self.write(name, "content")
        self.write("scene.xml", text.replace("{scene_dir}\\", "").replace(mesh, checksum))
        self.expect(["check", "scene.xml"])

    def test_the_golden_document_of_every_element_has_only_the_faults_that_it_is_to_have(self):
        self.write("scene.xml", (DATA / "golden" / "every_element.xml").read_bytes())
        code, findings = self.codes("scene.xml")
        self.assertEqual(code, 1)
        self.assertEqual([f for f in findings if f[1] != "missing-file"], [
            ("renderer_settings[uid=1]/max_depth", "out-of-range"),
            ("renderer_settings[uid=1]/halt_time", "not-finite"),
            ("renderer_settings[uid=1]/max_contribution", "not-finite"),
            ("renderer_settings[uid=1]/receiver_quad_pos", "not-finite"),
            ("camera[uid=3]/aperture_radius", "out-of-range"),
            ("model2[uid=16]/keyframe[1]/S", "not-finite"),
            ("model2[uid=16]/materials/uid[2]", "dangling-reference"),
            ("model2[uid=16]/materials/uid[4]", "dangling-reference"),
            ("model2[uid=16]/materials/uid[5]", "wrong-reference"),
            ("model2[uid=16]/emission_scale[2]/material_uid", "dangling-reference"),
            ("model2[uid=17]/geometry_uid", "dangling-reference")])

    def test_every_golden_element_of_a_class_is_known(self):
        for path in sorted((DATA / "golden").glob("*/*.xml")):
            text = path.read_text(encoding="utf-8")
            if re.match(r"\s*<(camera|tonemapping|renderer_settings|material|mesh|model2|sphere|background_settings)>", text):
                self.write(path.name, f"<scene>{text}</scene>")
        names = [name for name in self.files() if name.endswith(".xml")]
        self.assertGreater(len(names), 8)
        _, findings = self.codes(*names)
        self.assertEqual([f for f in findings if f[1] in ("unknown-element", "unreadable")], [])

    # ---- what is printed

    def test_several_documents_are_checked_in_turn(self):
        self.write_scene(CAMERA, LIGHT, BALL)
        self.write_scene(CAMERA, LIGHT, BALL.replace("<radius>1<", "<radius>0<"), name="b.xml")
        code, output, errors = self.run_tool("check", "scene.xml", "none.xml", "b.xml")
        self.assertRegex(errors, r"\Avelmar: Failed to open file 'none\.xml': .+\n\Z")
        self.assertEqual((code, output), (1, "b.xml:27:3: error: sphere[uid=4]/radius: 0 isn't above 0; give a number "
                                             "above 0 [out-of-range]\n"))

    def test_warnings_alone_are_no_failure(self):
        self.write_scene(CAMERA, BALL)
        self.expect(["check", "scene.xml"], output="scene.xml:1:1: warning: nothing gives light; add a background, or a "
                                                   "model of a material that emits [no-light]\n")
        self.expect(["check", "--quiet", "scene.xml"])

    def test_json_has_what_the_lines_have(self):
        self.write_scene(CAMERA, LIGHT, BALL.replace("<radius>1<", "<radius>0<"))
        code, output, errors = self.run_tool("check", "--json", "scene.xml", "none.xml")
        self.assertEqual(code, 1)
        report = json.loads(output)
        self.assertEqual(report["schema"], "velmar-check-1")
        self.assertEqual(report["documents"][0], {
            "file": "scene.xml", "errors": 1, "warnings": 0,
            "findings": [{"severity": "error", "code": "out-of-range", "line": 27, "column": 3,
                          "element": "sphere[uid=4]/radius", "message": "0 isn't above 0",
                          "advice": "give a number above 0"}],
            "omitted": {}})
        self.assertIn("none.xml", report["documents"][1]["error"])

    def test_many_findings_of_a_kind_are_counted(self):
        ball = BALL[BALL.index("\t<sphere>"):]
        balls = "".join(ball.replace("<uid>4<", f"<uid>{uid}<").replace("<material_uid>3<", "<material_uid>9<")
                        for uid in range(10, 260))
        self.write_scene(CAMERA, LIGHT, balls)
        code, output, errors = self.run_tool("check", "scene.xml")
        self.assertEqual((code, output.count("\n")), (1, 100))
        self.assertEqual(errors, "velmar: note: scene.xml: 150 more of dangling-reference\n")
        self.assertEqual(self.run_tool("check", "--limit", "10000", "scene.xml")[1].count("\n"), 250)
        report = json.loads(self.run_tool("check", "--json", "--limit", "10", "scene.xml")[1])["documents"][0]
        self.assertEqual((report["errors"], len(report["findings"]), report["omitted"]),
                         (250, 10, {"dangling-reference": 240}))

    def test_documents_and_files_of_names_beyond_ascii(self):
        (self.folder / "größe ☺").mkdir()
        self.assertEqual(self.run_tool("export", "-q", "square.obj", "größe ☺/bäum.xml")[0], 0)
        self.expect(["check", "größe ☺/bäum.xml"])
        next((self.folder / "größe ☺" / "bäum_meshes").iterdir()).unlink()
        code, output, _ = self.run_tool("check", "größe ☺/bäum.xml")
        self.assertEqual(code, 1)
        self.assertRegex(output, r"(?m)\Agröße ☺/bäum\.xml:\d+:4: error: mesh\[uid=\d+\]/external/path: there is no file .*; "
                                 r"put it at größe ☺/.*\[missing-file\]$")

    def test_columns_count_characters(self):
        self.write_scene(CAMERA, LIGHT, BALL.replace("<name>Ball</name>", "<name>Kügelchen ☺</name><colour/>"))
        self.assertTrue(self.run_tool("check", "scene.xml")[1].startswith("scene.xml:22:27: warning: sphere[uid=4]/colour:"))

    def test_findings_on_one_line_have_columns_of_their_own(self):
        self.write("scene.xml", "<scene><camera><uid>1</uid><name>ä</name><a/><b/></camera></scene>")
        output = self.run_tool("check", "--json", "scene.xml")[1]
        places = {f["element"]: f["column"] for f in json.loads(output)["documents"][0]["findings"]}
        self.assertEqual(places, {"": 1, "camera[uid=1]": 8, "camera[uid=1]/a": 42, "camera[uid=1]/b": 46})

    def test_documents_of_both_line_ends_have_their_faults_in_the_same_places(self):
        for path in BAD.iterdir():
            if path.suffix != ".findings":
                shutil.copy(path, self.folder)
        self.write("crlf.xml", (BAD / "several.xml").read_bytes().replace(b"\n", b"\r\n"))
        expected = (BAD / "several.xml.findings").read_text(encoding="utf-8").replace("several.xml:", "crlf.xml:")
        self.expect(["check", "crlf.xml"], 1, expected)

    # ---- rules that need several documents to show

    def test_what_gives_light(self):
        constant = "<constant><uniform><value>{}</value></uniform></constant>"
        emitting = "<diffuse><base_emission>" + constant.format(1) + "</base_emission></diffuse>"
        dark = "<diffuse><base_emission>" + constant.format(0) + "</base_emission></diffuse>"
        for material, is_light in ((emitting, True), (dark, False), ("<diffuse></diffuse>", False),
                                   ("<phong><emission>1</emission></phong>", True)):
            with self.subTest(material=material):
                self.write_scene(CAMERA, BALL.replace("<diffuse></diffuse>", material))
                self.assertEqual(self.codes("scene.xml"), (0, [] if is_light else [("", "no-light")]))
        # Of what nothing is made.
        self.write_scene(CAMERA, BALL, f"<material><uid>9</uid><name>Lamp</name>{emitting}</material>")
        self.assertEqual(self.codes("scene.xml"), (0, [("", "no-light")]))

    def test_what_the_camera_sees(self):
        for place, is_seen in (("0 0 0", True), ("4 0 0", True), ("9 0 0", False), ("0 0 9", False), ("0 -12 0", False),
                               ("0 -10 0", True)):
            with self.subTest(place=place):
                self.write_scene(CAMERA, LIGHT, BALL.replace("<pos>0 0 0</pos>", f"<pos>{place}</pos>"))
                self.assertEqual(self.codes("scene.xml"), (0, [] if is_seen else [("camera[uid=1]", "nothing-seen")]))

    def test_meshes_are_seen_by_their_bounds(self):
        mesh = "<mesh><uid>5</uid><name>t</name><external><path>triangle.obj</path></external></mesh>"
        model = ("<model2><uid>6</uid><name>t</name><geometry_uid>5</geometry_uid>{}<pos>{}</pos>"
                 "<materials><uid>3</uid></materials></model2>")
        material = BALL[:BALL.index("\t<sphere>")]
        for extra, place, is_seen in (("", "0 0 0", True), ("", "50 0 0", False), ("<scale>50</scale>", "-50 0 0", True),
                                      ("<invisible_to_camera>true</invisible_to_camera>", "0 0 0", False)):
            with self.subTest(extra=extra, place=place):
                self.write_scene(CAMERA, LIGHT, material, mesh, model.format(extra, place))
                self.assertEqual(self.codes("scene.xml"), (0, [] if is_seen else [("camera[uid=1]", "nothing-seen")]))

    def test_every_number_of_a_mesh_is_looked_at_even_one_that_means_the_default(self):
        self.run_tool("convert", "triangle.obj", "a.vmmesh")
        self.write_scene(CAMERA, LIGHT, BALL, "<mesh><uid>5</uid><name>t</name><scale>NaN</scale>"
                                              "<external><path>a.vmmesh</path></external></mesh>")
        self.assertEqual(self.codes("scene.xml"), (1, [("mesh[uid=5]/scale", "not-finite")]))

    # ---- bad input

    def test_every_prefix_of_a_document_is_refused_with_its_place(self):
        text = (DATA / "golden" / "whole_scene.xml").read_text(encoding="utf-8").rstrip()
        names = []
        for size in range(0, len(text), 97):
            names.append(f"{size}.xml")
            self.write(names[-1], text[:size])
        code, output, errors = self.run_tool("check", *names)
        self.assertEqual((code, errors), (1, ""))
        for name in names:
            self.assertRegex(output, rf"(?m)^{name}:\d+:\d+: error: .* \[unreadable\]$")

    def test_the_findings_of_the_fuzzer_of_the_reader_are_no_trouble(self):
        for index, path in enumerate(sorted((ROOT / "tests/fuzz/corpus/SceneXMLFuzz").iterdir())):
            shutil.copy(path, self.folder / f"{index}.xml")
        names = [name for name in self.files() if name.endswith(".xml")]
        self.assertGreater(len(names), 0)
        code, output, errors = self.run_tool("check", *names)
        self.assertIn(code, (0, 1))
        self.assertEqual(errors.replace("velmar: note:", ""), errors)

    def test_what_precedes_a_fault_is_found_too(self):
        odd = "<aperture_shape><circular/><odd/></aperture_shape>"
        camera = CAMERA.replace("<keyframe>", odd + "<keyframe>", 1)
        self.write_scene(camera, camera.replace("<time>0<", "<time>soon<"))
        self.assertEqual(self.codes("scene.xml"), (1, [("camera/aperture_shape/odd", "unknown-element"),
                                                       ("odd", "unknown-element"), ("", "unreadable")]))

    def test_deep_and_large_documents(self):
        deep = 100_000
        self.write("deep.xml", "<scene>" + "<a>" * deep)
        self.write("attributes.xml", "<scene><camera " + "a='1' " * deep + "><uid>1</uid><name>c</name></camera></scene>")
        self.write("number.xml", "<scene><camera><uid>" + "1" * deep + "</uid></camera></scene>")
        self.write("unknown.xml", "<scene><camera><uid>1</uid><name>c</name>" + "<a/>" * deep + "</camera></scene>")
        self.write("empty.xml", "")
        code, output, _ = self.run_tool("check", "--quiet", "deep.xml", "attributes.xml", "number.xml", "unknown.xml",
                                        "empty.xml")
        self.assertEqual(code, 1)
        self.assertIn("deep.xml:1:308: error: elements are nested too deep;", output)
        self.assertIn("number.xml:1:16: error: '1111", output)
        self.assertIn("empty.xml:1:1: error: not a scene document", output)
        self.assertIn("unknown.xml:1:8: error: a node with too many elements", output)
        self.assertEqual(output.count("\n"), 4)

    def test_references_in_a_circle(self):
        # A material of a node that is made of it.
        self.write_scene(CAMERA, LIGHT, BALL.replace("</diffuse>", "</diffuse><scatter_uids><uid>4</uid></scatter_uids>"))
        self.assertEqual(self.codes("scene.xml"), (1, [("material[uid=3]/scatter_uids[1]/uid", "wrong-reference")]))

    def test_files_of_hostile_names_are_not_waited_for(self):
        mesh = "<mesh><uid>{}</uid><name>t</name><external><path>{}</path></external></mesh>"
        names = (".", "/dev/tty", "scene.xml", "..\\..\\..\\none.obj")
        self.write_scene(CAMERA, LIGHT, BALL, *(mesh.format(10 + i, name) for i, name in enumerate(names)))
        code, findings = self.codes("scene.xml")
        self.assertEqual((code, len(findings)), (1, 4))

    def test_a_folder_and_a_missing_document_are_failures(self):
        (self.folder / "folder.xml").mkdir()
        code, output, errors = self.run_tool("check", "folder.xml", "none.xml")
        self.assertEqual((code, output), (1, ""))
        self.assertEqual(errors.count("\n"), 2)

    def test_wrong_usage(self):
        self.assertEqual(self.run_tool("check")[0], 2)
        for limit in ("many", "0", "-1", "10001"):
            self.assertEqual(self.run_tool("check", "--limit", limit, "scene.xml")[0], 2)
