"""`velmar info` with scene documents."""
import re

from large_document import measure_info, write_document
from support import COMMAND, ToolTest


class SceneInfo(ToolTest):
    def export(self, *models, to="scene.xml", options=("--no-ground",)):
        self.assertEqual(self.run_tool("export", "-q", *options, *models, to), (0, "", ""))
        return (self.folder / to).read_bytes().replace(b"\r\n", b"\n").decode()

    def change(self, name, old, new):
        path = self.folder / name
        content = path.read_bytes().decode()
        self.assertIn(old, content)
        path.write_bytes(content.replace(old, new, 1).encode())

    def info(self, name="scene.xml"):
        code, output, errors = self.run_tool("info", name)
        self.assertEqual((code, errors), (0, ""))
        return output

    def info_of_faulty(self, expected, name="scene.xml"):
        """What is printed of a scene that isn't whole; the error is as expected."""
        code, output, errors = self.run_tool("info", name)
        self.assertEqual((code, errors), (1, f"velmar: {name}: {expected}\n"))
        return output

    def write_scene(self, nodes):
        self.write("scene.xml", f'<?xml version="1.0" encoding="utf-8"?>\n<scene>\n{nodes}\n</scene>\n')

    def size(self, name):
        bytes_ = (self.folder / name).stat().st_size
        return f"{bytes_} bytes" if bytes_ < 1000 else f"{bytes_ / 1000:.1f} KB"

    def test_a_scene_is_told_node_by_node(self):
        self.export("square.obj", "triangle.obj", "square.obj")
        output = self.info()
        square, triangle = re.findall(r"scene_meshes/(mesh_\d+\.vmmesh) ", output)[:2]
        sizes = [self.size("scene_meshes/" + name) for name in (square, triangle)]
        total = sum((self.folder / "scene_meshes" / name).stat().st_size for name in (square, triangle))
        self.assertEqual(output, f"""\
file       scene.xml
kind       scene document
size       {self.size("scene.xml")}
nodes      12

renderer_settings
     1  Render Settings: 1280 x 720
camera
     2  Camera: thin-lens-perspective
tonemapping
     3  Tone Mapping: reinhard
background_settings
     4  Background Settings: sunsky
material (3)
     5  red: diffuse
     6  blue: diffuse
     9  default: diffuse
mesh (2)
     7  square
          scene_meshes/{square} ({sizes[0]}, 8 vertices, 2 triangles, 1 quad)
    10  triangle
          scene_meshes/{triangle} ({sizes[1]}, 3 vertices, 1 triangle, 0 quads)
model2 (3)
     8  square: geometry 7, materials 5 6
    11  triangle: geometry 10, materials 9
    12  square: geometry 7, materials 5 6

meshes     2 files, {total} bytes, 11 vertices, 3 triangles, 1 quad
""")

    def test_mesh_files_are_looked_for_beside_the_document(self):
        (self.folder / "sub").mkdir()
        self.export("square.obj", to="sub/scene.xml")
        self.assertIn("(%s, 8 vertices" % self.size(next((self.folder / "sub/scene_meshes").iterdir()).as_posix()),
                      self.info("sub/scene.xml"))
        self.assertIn("8 vertices", self.info(str(self.folder / "sub" / "scene.xml")))

    def test_mesh_files_are_looked_for_in_the_working_directory_next(self):
        (self.folder / "sub").mkdir()
        self.export("square.obj")
        (self.folder / "scene.xml").rename(self.folder / "sub/scene.xml")
        self.assertIn("8 vertices", self.info("sub/scene.xml"))

    def test_absolute_paths(self):
        self.run_tool("convert", "square.obj", "a.vmmesh")
        path = str(self.folder / "a.vmmesh").replace("/", "\\")
        self.write_scene(f"<mesh><uid>1</uid><name>a</name><external><path>{path}</path></external></mesh>")
        self.assertIn("8 vertices", self.info())

    def test_a_missing_mesh_file_is_told_with_where_it_was_looked_for(self):
        (self.folder / "sub").mkdir()
        self.export("square.obj", "triangle.obj", to="sub/scene.xml")
        name = re.search(r"mesh_\d+\.vmmesh", self.info("sub/scene.xml")).group()
        (self.folder / "sub/scene_meshes" / name).unlink()
        output = self.info_of_faulty("1 file is missing or damaged", "sub/scene.xml")
        self.assertIn(f"          scene_meshes/{name} (missing: looked for sub/scene_meshes/{name} "
                      f"and scene_meshes/{name})\n", output)
        self.assertIn("3 vertices", output)
        self.assertIn("meshes     1 file, ", output)

    def test_a_damaged_mesh_file_is_told(self):
        self.export("square.obj")
        mesh = next((self.folder / "scene_meshes").iterdir())
        mesh.write_bytes(b"noise, not a mesh")
        self.assertRegex(self.info_of_faulty("1 file is missing or damaged"),
                         r"mesh_\d+\.vmmesh \(damaged: scene_meshes/mesh_\d+\.vmmesh: Invalid magic number\.\)\n")

    def test_a_mesh_file_of_another_mesh_is_told(self):
        self.export("square.obj")
        mesh = next((self.folder / "scene_meshes").iterdir())
        self.run_tool("convert", "triangle.obj", f"scene_meshes/{mesh.name}")
        self.assertIn("; damaged: its content isn't the one that its name says)\n",
                      self.info_of_faulty("1 file is missing or damaged"))

    def test_a_mesh_file_whose_faces_refer_to_nothing_is_told(self):
        self.run_tool("convert", "triangle.obj", "a.vmmesh", "--plain")
        content = bytearray((self.folder / "a.vmmesh").read_bytes())
        content[-32] = 77
        self.write("a.vmmesh", bytes(content))
        self.write_scene("<mesh><uid>1</uid><name>a</name><external><path>a.vmmesh</path></external></mesh>")
        self.assertIn("; damaged: triangle 0 refers to vertex 77 of 3)\n",
                      self.info_of_faulty("1 file is missing or damaged"))

    def test_other_files_that_are_named_must_be_there_too(self):
        self.write("lamp.ies", "IESNA")
        self.write_scene("<model2><uid>1</uid><name>Lamp</name><geometry_uid>2</geometry_uid><materials></materials>"
                         "<ies_profile><path>lamp.ies</path></ies_profile></model2>"
                         "<sphere><uid>2</uid><name>Ball</name></sphere>")
        self.assertIn("     1  Lamp: geometry 2, materials none\n          lamp.ies (5 bytes)\n", self.info())
        (self.folder / "lamp.ies").unlink()
        self.assertIn("lamp.ies (missing: looked for lamp.ies)\n", self.info_of_faulty("1 file is missing or damaged"))

    def test_uids_that_name_nothing_are_told(self):
        self.export("square.obj")
        self.change("scene.xml", "<geometry_uid>7</geometry_uid>", "<geometry_uid>70</geometry_uid>")
        self.change("scene.xml", "\t\t\t<uid>6</uid>", "\t\t\t<uid>4294967295</uid>")
        self.assertIn("square: geometry 70 (which doesn't exist), materials 5 none\n",
                      self.info_of_faulty("1 uid names no node"))

    def test_names_of_every_kind(self):
        self.write_scene("<material><uid>1</uid><name>a &lt;b&gt; &amp; &quot;grün&quot;</name></material>"
                         "<material><uid>2</uid><name><![CDATA[  two  spaces ]]></name></material>"
                         "<material><uid>3</uid><name>bidi &#x9;tab</name></material>"
                         "<material><uid>4</uid><name></name></material>"
                         "<curve1d><name>response</name></curve1d>")
        self.assertIn("""\
material (4)
     1  a <b> & "grün"
     2    two  spaces\x20
     3  bidi \\x09tab
     4  (no name)
curve1d
     -  response
""", self.info())

    def test_a_document_that_was_cut_short(self):
        document = self.export("square.obj")
        for end in range(0, len(document) - 10, 97):
            self.write("scene.xml", document[:end])
            code, output, errors = self.run_tool("info", "scene.xml")
            self.assertEqual((code, output), (1, ""))
            self.assertRegex(errors, r"\Avelmar: scene\.xml: [^\n]+ on line \d+\n\Z")

    def test_damage_is_told_with_its_line(self):
        document = self.export("square.obj")
        for old, new, fault in (("</camera>", "</kamera>", "start-end tags mismatch"),
                                ("<uid>2</uid>", "<uid>two</uid>", "an uid that is no number"),
                                ("<uid>2</uid>", "<uid>4294967296</uid>", "an uid that is no number"),
                                ("<geometry_uid>7<", "<geometry_uid>-7<", "an uid that is no number"),
                                ("<path>", "<road>", "start-end tags mismatch"),
                                ("\t\t<external>", "\t\t<external/><extern>", "start-end tags mismatch")):
            with self.subTest(new=new):
                self.write("scene.xml", document.replace(old, new))
                before = document[:document.index(old)]
                code, output, errors = self.run_tool("info", "scene.xml")
                self.assertEqual((code, output), (1, ""))
                message, line = re.fullmatch(r"velmar: scene\.xml: (.+) on line (\d+)\n", errors).groups()
                self.assertEqual(message, fault)
                # Where an element ends wrongly, the reader may be at that of the one around it.
                self.assertIn(int(line) - before.count("\n") - 1, range(3))

    def test_a_large_document_takes_little_memory(self):
        peaks = []
        for size in (2e6, 20e6):
            models = write_document(self.folder / "large.xml", size)
            code, output, _, peak = measure_info(COMMAND, self.folder / "large.xml")
            self.assertEqual(code, 0, output)
            self.assertIn(f"model2 ({models})", output)
            peaks.append(peak)
        # A tree of the nodes would take twice the document's size.
        self.assertLess(peaks[1] - peaks[0], 12e6)

    def test_what_is_not_a_scene(self):
        for content, fault in (("<svg>\n</svg>", "not a scene document: another root element on line 1"),
                               ("\n<scene/>\n<scene/>", "a second root element on line 3"),
                               ("<scene>\n\n<mesh><name>a</name></mesh></scene>",
                                "a mesh without the path of its file on line 3"),
                               ("", "no document element found on line 1"),
                               ("\0\0\0", "not XML: a character that isn't allowed, or isn't UTF-8, on line 1"),
                               ("noise", "no document element found on line 1")):
            with self.subTest(content=content):
                self.write("scene.xml", content)
                self.expect_failure(["info", "scene.xml"], "velmar: scene\\.xml: " + fault)

    def test_a_missing_document(self):
        self.expect_failure(["info", "none.xml"], r"velmar: Failed to open file 'none\.xml': .+ \(code 2\)")

    def test_elements_however_deep(self):
        deep = 300000
        self.write_scene("<material><uid>1</uid><name>a</name>" + "<b>" * deep + "<path>t.png</path>" + "</b>" * deep +
                         "</material>")
        self.assertIn("t.png (missing: looked for t.png)\n", self.info_of_faulty("1 file is missing or damaged"))
        self.write("scene.xml", "<scene>" + "<b>" * deep)
        self.expect_failure(["info", "scene.xml"], r"velmar: scene\.xml: the document ends too early on line 1")

    def test_entities_of_a_document_type_are_not_expanded(self):
        self.write("secret.txt", "secret")
        self.write("scene.xml", '<!DOCTYPE scene [<!ENTITY a "aaaa"><!ENTITY b "&a;&a;"><!ENTITY f SYSTEM "secret.txt">]>\n'
                                "<scene><material><uid>1</uid><name>&b;&f;</name></material></scene>")
        self.assertIn("     1  &b;&f;\n", self.info())

    def test_a_mesh_file_of_a_hostile_name_is_not_waited_for(self):
        self.write_scene("<mesh><uid>1</uid><name>a</name><external><path>.</path></external></mesh>"
                         "<mesh><uid>2</uid><name>a</name><external><path>/dev/tty</path></external></mesh>"
                         "<mesh><uid>3</uid><name>a</name><external><path>scene.xml</path></external></mesh>")
        self.info_of_faulty("3 files are missing or damaged")

    def test_a_scene_is_not_drawn(self):
        self.export("square.obj")
        self.expect_failure(["info", "scene.xml", "--picture", "out.png"],
                            "velmar: scene.xml: a scene isn't drawn; --picture takes a mesh file\n"
                            "'velmar info --help' says more.", 2)
