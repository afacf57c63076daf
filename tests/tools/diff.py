"""`velmar diff`."""
import json
import re
import shutil
import subprocess
import unittest

from check import BALL, CAMERA, DATA, LIGHT
from support import COMMAND, EMULATOR, ROOT, ToolTest

MATERIAL, SPHERE = BALL[:BALL.index("\t<sphere>")], BALL[BALL.index("\t<sphere>"):]
MESH = "<mesh><uid>5</uid><name>Tree</name><external><path>{}</path></external></mesh>\n"
MODEL = """\
	<model2>
		<uid>{uid}</uid>
		<name>Tree</name>
		<geometry_uid>5</geometry_uid>
		<pos>{pos}</pos>
		<materials>
			<uid>{material}</uid>
		</materials>
	</model2>
"""


def model(uid, pos="0 0 0", material=3):
    return MODEL.format(uid=uid, pos=pos, material=material)


class Diff(ToolTest):
    def write_scene(self, name, *nodes):
        self.write(name, "<scene>\n" + "\n".join(nodes) + "</scene>\n")

    def expect_same(self, a, b, *options):
        self.expect(["diff", *options, a, b])

    def lines(self, a="a.xml", b="b.xml", *options):
        """The lines of two different documents, without places."""
        code, output, errors = self.run_tool("diff", *options, a, b)
        self.assertEqual((code, errors), (1, ""))
        return re.sub(r"(?m) \([^()\n]+\.xml:\d+(, [^()\n]+:\d+)?\)$", "", output).splitlines()

    # ---- what is no difference

    def test_a_document_is_the_same_as_itself(self):
        self.run_tool("export", "-q", "square.obj", "triangle.obj", "a.xml")
        self.expect_same("a.xml", "a.xml")

    def test_every_golden_document_is_the_same_as_itself(self):
        for path in (DATA / "golden").glob("*.xml"):
            shutil.copy(path, self.folder / path.name)
            code, output, errors = self.run_tool("diff", path.name, path.name)
            self.assertEqual((code, output), (0, ""))
            self.assertIn("which is compared by its name", errors)

    def test_two_exports_of_a_scene_are_the_same_wherever_they_are(self):
        for folder in ("here", "dört ☺"):
            (self.folder / folder).mkdir()
            self.run_tool("export", "-q", "square.obj", f"{folder}/{folder}.xml")
        self.assertNotEqual((self.folder / "here/here.xml").read_bytes(), (self.folder / "dört ☺/dört ☺.xml").read_bytes())
        self.expect_same("here/here.xml", "dört ☺/dört ☺.xml")

    def test_the_order_of_nodes_is_no_difference(self):
        models = [model(uid, f"{uid} 0 0") for uid in range(10, 20)]
        self.write_scene("a.xml", CAMERA, LIGHT, MATERIAL, MESH.format("triangle.obj"), *models)
        self.write_scene("b.xml", *reversed(models), MESH.format("triangle.obj"), MATERIAL, LIGHT, CAMERA)
        self.expect_same("a.xml", "b.xml")

    def test_uids_are_no_difference(self):
        text = "".join((CAMERA, LIGHT, BALL, MESH.format("triangle.obj"), model(10), model(11, "1 0 0")))
        self.write_scene("a.xml", text)
        self.write_scene("b.xml", re.sub(r"uid>(\d+)<", lambda match: f"uid>{1000 - int(match.group(1))}<", text))
        self.expect_same("a.xml", "b.xml")

    def test_the_form_of_the_text_is_no_difference(self):
        self.write_scene("a.xml", CAMERA, LIGHT, BALL, "<phong><uid>9</uid><name>n</name><a> <b>x y</b> </a></phong>")
        text = (self.folder / "a.xml").read_text().replace("\t", "")
        # Other line ends, no indentation, other digits, defaults that are written out, another order of elements.
        text = text.replace("<radius>1<", "<radius>1.00e0<").replace("0 -10 0", "0.0  -1e1\t-0").replace("> <", ">\n<")
        text = text.replace("<name>Camera</name>", "<focus_distance>20</focus_distance><name><![CDATA[Camera]]></name>")
        self.write("b.xml", text.replace("\n", "\r\n"))
        self.expect_same("a.xml", "b.xml")

    def test_names_of_files_of_equal_content_are_no_difference(self):
        self.run_tool("convert", "-q", "--up", "z", "triangle.obj", "other.vmmesh")
        self.write("lamp.ies", "light")
        self.write("copy.ies", "light")
        profile = "<ies_profile><material_uid>3</material_uid><path>{}</path></ies_profile></model2>"
        for name, mesh, lamp in (("a.xml", "triangle.obj", "lamp.ies"), ("b.xml", "other.vmmesh", "copy.ies")):
            self.write_scene(name, MATERIAL, MESH.format(mesh), model(6).replace("</model2>", profile.format(lamp)))
        self.expect_same("a.xml", "b.xml")
        self.write("copy.ies", "darkness")
        self.assertEqual(self.lines(), ['~ model2 "Tree"',
                                        "    ies_profile[1]/path: lamp.ies (5 bytes) -> copy.ies (8 bytes)"])

    def test_many_equal_models_are_matched_one_to_one(self):
        head = (MATERIAL, MESH.format("triangle.obj"))
        many = [model(uid) for uid in range(10, 3000)]
        self.write_scene("a.xml", *head, *many)
        self.write_scene("b.xml", *reversed(many), *head)
        self.expect_same("a.xml", "b.xml")
        self.write_scene("b.xml", *head, *many[3:])
        self.assertEqual(self.lines(), ['- model2 "Tree"'] * 3)

    # ---- what is one

    def test_values_are_shown_by_their_elements(self):
        self.write_scene("a.xml", CAMERA, LIGHT, BALL)
        self.write_scene("b.xml", CAMERA.replace("-10", "-12"), LIGHT,
                         BALL.replace("<radius>1<", "<radius>2.5<").replace("<diffuse>", "<diffuse><layer>3</layer>"))
        self.expect(["diff", "a.xml", "b.xml"], 1, """\
~ camera "Camera" (a.xml:2, b.xml:2)
    keyframe[1]/pos: 0 -10 0 -> 0 -12 0
~ material "Red" (a.xml:17, b.xml:17)
    diffuse/layer: 0 -> 3
~ sphere "Ball" (a.xml:22, b.xml:22)
    radius: 1 -> 2.5
""")

    def test_a_changed_material_is_no_change_of_what_is_made_of_it(self):
        models = [model(uid, f"{uid} 0 0") for uid in range(10, 20)]
        self.write_scene("a.xml", MATERIAL, MESH.format("triangle.obj"), *models)
        self.write_scene("b.xml", MATERIAL.replace("</diffuse>", "</diffuse><backface_emit>true</backface_emit>"),
                         MESH.format("square.obj"), *models)
        self.assertEqual([line for line in self.lines() if not line.startswith(" ")],
                         ['~ material "Red"', '~ mesh "Tree"'])

    def test_references_are_compared_by_what_they_point_to(self):
        blue = MATERIAL.replace("<uid>3<", "<uid>4<").replace("Red", "Blue")
        self.write_scene("a.xml", MATERIAL, blue, MESH.format("triangle.obj"), model(10, material=3))
        self.write_scene("b.xml", MATERIAL, blue, MESH.format("triangle.obj"), model(10, material=4))
        self.assertEqual(self.lines(), ['~ model2 "Tree"',
                                        '    materials/uid[1]: material "Red" (uid 3) -> material "Blue" (uid 4)'])
        self.write_scene("b.xml", MATERIAL, blue, MESH.format("triangle.obj"), model(10, material=77))
        self.assertEqual(self.lines()[1:], ['    materials/uid[1]: material "Red" (uid 3) -> nothing, uid 77'])

    def test_meshes_are_shown_by_checksum_counts_and_bounds(self):
        for name, mesh in (("a.xml", "triangle.obj"), ("b.xml", "square.obj")):
            self.write_scene(name, MESH.format(mesh))
        checksums = [re.search(r"checksum +(\d+)", self.run_tool("info", mesh)[1]).group(1)
                     for mesh in ("triangle.obj", "square.obj")]
        self.assertEqual(self.lines()[0], '~ mesh "Tree"')
        line = self.lines()[1]
        self.assertTrue(line.startswith(f"    external/path: mesh {checksums[0]} (3 vertices, 1 triangle, 0 quads, "
                                        f"(0, 0, 0) to (1, 1, 0)) -> mesh {checksums[1]} (8 vertices, 2 triangles, "), line)

    def test_added_removed_and_renamed_nodes(self):
        self.write_scene("a.xml", CAMERA, MATERIAL, SPHERE, MESH.format("triangle.obj"))
        self.write_scene("b.xml", CAMERA.replace("Camera<", "Eye<"), MATERIAL, SPHERE.replace(">Ball<", ">Globe<"),
                         LIGHT)
        self.assertEqual(self.lines(), ['~ camera "Camera"', '    name: "Camera" -> "Eye"', '~ sphere "Ball"',
                                        '    name: "Ball" -> "Globe"', '- mesh "Tree"', '+ background_settings "Light"'])

    def test_parts_that_come_and_go(self):
        frame = "<keyframe><time>1</time><pos>0 0 1</pos></keyframe><radius>"
        self.write_scene("a.xml", MATERIAL, SPHERE, "<renderer_settings><uid>8</uid><name>s</name></renderer_settings>")
        self.write_scene("b.xml", MATERIAL, SPHERE.replace("<radius>", frame),
                         "<renderer_settings><uid>8</uid><name>s</name><gpu>true</gpu></renderer_settings>")
        lines = [line for line in self.lines() if "rotation" not in line and "/S:" not in line]
        self.assertEqual(lines, ['~ sphere "Ball"', "    keyframe[2]/time: none -> 1", "    keyframe[2]/pos: none -> 0 0 1",
                                 '~ renderer_settings "s"', "    gpu: none -> true"])

    def test_every_number_of_the_golden_scene_counts(self):
        text = (DATA / "golden" / "whole_scene.xml").read_text(encoding="utf-8")
        self.write("a.xml", text)
        numbers = [match for match in re.finditer(r"<(\w+)>([^<>]*\d)</\1>", text)
                   if "uid" not in match.group(1) and "." not in match.group(2).replace(".", "", 1)]
        numbers = [match for match in numbers if match.group(1) not in ("path", "name", "include")]
        self.assertGreater(len(numbers), 20)
        for match in numbers[::5 if EMULATOR else 1]:
            with self.subTest(element=match.group()):
                self.write("b.xml", text[:match.end(2)] + "5" + text[match.end(2):])
                code, output, _ = self.run_tool("diff", "--json", "a.xml", "b.xml")
                nodes = json.loads(output)["nodes"]
                self.assertEqual((code, [node["change"] for node in nodes]), (1, ["changed"]))
                [value] = nodes[0]["values"]
                self.assertIn(match.group(1), value["element"])
                self.assertNotEqual(value["a"], value["b"])

    # ---- tolerance

    def test_numbers_may_differ_by_the_tolerance(self):
        places = [(i, i % 7, 0) for i in range(50)]
        self.write_scene("a.xml", MATERIAL, MESH.format("triangle.obj"),
                         *(model(10 + i, f"{x} {y} {z}") for i, (x, y, z) in enumerate(places)))
        self.write_scene("b.xml", MATERIAL, MESH.format("triangle.obj"),
                         *(model(90 - i, f"{x + 1e-4} {y - 1e-4} {z}") for i, (x, y, z) in enumerate(places)))
        self.assertEqual(len([line for line in self.lines() if line.startswith("~")]), 50)
        self.expect_same("a.xml", "b.xml", "--tolerance", "0.001")
        self.assertNotEqual(self.lines("a.xml", "b.xml", "--tolerance", "0.00001"), [])

    def test_nodes_of_one_name_are_matched_by_numbers_within_the_tolerance(self):
        # In the other order, and with each other's uids.
        self.write_scene("a.xml", MATERIAL, MESH.format("triangle.obj"), model(10, "1 0 0"), model(11, "5 0 0"))
        self.write_scene("b.xml", MATERIAL, MESH.format("triangle.obj"), model(10, "5.009 0 0"), model(11, "1.009 0 0"))
        self.expect_same("a.xml", "b.xml", "--tolerance", "0.01")

    # ---- JSON

    def test_json_has_old_and_new_values(self):
        self.write_scene("a.xml", CAMERA, MATERIAL, SPHERE, MESH.format("triangle.obj"))
        self.write_scene("b.xml", CAMERA, MATERIAL, SPHERE.replace("<radius>1<", "<radius>NaN<").replace(">3<", ">9<"),
                         MESH.format("square.obj"), LIGHT)
        code, output, errors = self.run_tool("diff", "--json", "a.xml", "b.xml")
        self.assertEqual((code, errors), (1, ""))
        report = json.loads(output)
        self.assertEqual([report[key] for key in ("schema", "a", "b", "same")], ["velmar-diff-1", "a.xml", "b.xml", False])
        sphere, mesh, light = report["nodes"]
        self.assertEqual(sphere, {
            "change": "changed", "element": "sphere", "a": {"name": "Ball", "uid": 4, "line": 17},
            "b": {"name": "Ball", "uid": 4, "line": 17}, "values": [
                {"element": "radius", "a": 1, "b": "NaN"},
                {"element": "material_uid", "a": {"element": "material", "name": "Red", "uid": 3, "exists": True},
                 "b": None}]})
        self.assertEqual(mesh["values"][0]["b"]["bounds"], {"min": [0, 0, 0], "max": [2, 2, 1.5]})
        self.assertEqual((mesh["values"][0]["a"]["triangles"], mesh["values"][0]["a"]["file"]), (1, "triangle.obj"))
        self.assertEqual((light["change"], light["a"], light["b"]["uid"]), ("added", None, 2))
        self.assertEqual(json.loads(self.run_tool("diff", "--json", "a.xml", "a.xml")[1])["same"], True)

    # ---- bad input

    def test_trouble_is_another_code_than_a_difference(self):
        self.write_scene("a.xml", CAMERA)
        self.write("broken.xml", "<scene>\n <camera></scene>")
        self.expect_failure(["diff", "a.xml", "none.xml"], r"velmar: Failed to open file 'none\.xml': .+", 2)
        self.expect_failure(["diff", "broken.xml", "a.xml"], r"velmar: broken\.xml:2:\d+: .+", 2)
        self.expect_failure(["diff", "a.xml"], "velmar: B.xml is required\n'velmar diff --help' says more.", 2)
        self.assertEqual(self.run_tool("diff", "--tolerance", "-1", "a.xml", "a.xml")[0], 2)
        self.write_scene("b.xml")
        self.expect(["diff", "--quiet", "a.xml", "b.xml"], 1)

    @unittest.skipIf(EMULATOR, "a device of Linux")
    def test_an_output_that_could_not_be_written_is_trouble(self):
        self.write_scene("a.xml", CAMERA)
        self.write_scene("b.xml", BALL)
        with open("/dev/full", "wb") as full:
            done = subprocess.run(COMMAND + ["diff", "a.xml", "b.xml"], cwd=self.folder, stdout=full,
                                  stderr=subprocess.PIPE)
        self.assertEqual((done.returncode, done.stderr), (2, b"velmar: the output couldn't be written\n"))

    def test_files_that_are_missing_are_compared_by_their_names(self):
        for folder, name in (("x", "a.vmmesh"), ("y", "a.vmmesh"), ("z", "b.vmmesh")):
            (self.folder / folder).mkdir()
            self.write_scene(f"{folder}/s.xml", MESH.format(name))
        code, output, errors = self.run_tool("diff", "x/s.xml", "y/s.xml")
        self.assertEqual((code, output), (0, ""))
        self.assertEqual(errors, "".join(f"velmar: note: {folder}/s.xml: can't read a.vmmesh, which is compared by its "
                                         "name\n" for folder in "xy"))
        self.assertEqual(self.run_tool("diff", "x/s.xml", "z/s.xml")[0], 1)
        self.run_tool("convert", "-q", "triangle.obj", "y/a.vmmesh")
        self.assertEqual(self.run_tool("diff", "x/s.xml", "y/s.xml")[0], 1)

    def test_references_in_a_circle(self):
        loop = BALL.replace("</diffuse>", "</diffuse><scatter_uids><uid>4</uid></scatter_uids>")
        self.write_scene("a.xml", loop)
        self.write_scene("b.xml", re.sub(r"uid>(\d+)<", lambda match: f"uid>{100 + int(match.group(1))}<", loop))
        self.expect_same("a.xml", "b.xml")
        self.write_scene("b.xml", loop.replace("<radius>1<", "<radius>2<"))
        self.assertEqual(self.lines(), ['~ sphere "Ball"', "    radius: 1 -> 2"])

    def test_duplicate_uids_and_odd_documents(self):
        self.write_scene("a.xml", *[SPHERE] * 5, MATERIAL, MATERIAL)
        self.expect_same("a.xml", "a.xml")
        self.write_scene("b.xml", *[SPHERE] * 4, MATERIAL, MATERIAL)
        self.assertEqual(self.lines(), ['- sphere "Ball"'])
        self.write("empty.xml", "<scene/>")
        self.expect_same("empty.xml", "empty.xml")

    def test_the_findings_of_the_fuzzer_of_the_reader_are_no_trouble(self):
        self.write("golden.xml", (DATA / "golden" / "every_element.xml").read_bytes())
        for path in sorted((ROOT / "tests/fuzz/corpus/SceneXMLFuzz").iterdir()):
            self.write("a.xml", path.read_bytes())
            code, output, _ = self.run_tool("diff", "a.xml", "a.xml")
            self.assertIn((code, output), ((0, ""), (2, "")))
            self.assertIn(self.run_tool("diff", "golden.xml", "a.xml")[0], (0, 1, 2))
