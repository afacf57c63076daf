"""`velmar edit`: values and nodes of scene documents are changed."""
import re

from support import ToolTest

# A node of each kind that refers to another one, and parts of classes of the renderer library.
LAMPS = """<scene>
<!-- a comment -->
<camera><uid>1</uid><name>Camera</name><obstacle_map><path>maps/leaves.png</path></obstacle_map>
<keyframe><time>0</time><pos>0 0 0</pos></keyframe><keyframe><time>1</time><pos>1 0 0</pos></keyframe></camera>
<material><uid>2</uid><phong><roughness>0.5</roughness><diffuse><texture><path>maps\\wood &amp; steel.png</path></texture>
</diffuse><medium_uid>9</medium_uid></phong><name>Wood</name></material>
<material><uid>3</uid><diffuse></diffuse><name>Glow</name></material>
<mesh><uid>4</uid><name>Lamp</name><external><path>meshes\\lamp.obj</path></external></mesh>
<model2><uid>5</uid><name>Lamp</name><geometry_uid>4</geometry_uid><keyframe><time>0</time><pos>0 0 0</pos></keyframe>
<keyframe><time>1</time><pos>0 0 1</pos></keyframe><materials><uid>2</uid><uid>3</uid></materials>
<ies_profile><material_uid>3</material_uid><path>lamp.ies</path></ies_profile>
<emission_scale><measure>luminous_flux</measure><value>100</value><material_uid>3</material_uid></emission_scale></model2>
<sphere><uid>6</uid><name>Bulb</name><radius>1</radius><material_uid>3</material_uid></sphere>
<sphere><uid>7</uid><name>Bulb</name><radius>1</radius><material_uid>77</material_uid></sphere>
<medium><uid>9</uid><name>Fog</name><epsilon>1</epsilon></medium>
</scene>
"""


class DocumentTest(ToolTest):
    """A document of lamps, and what becomes of it."""

    def setUp(self):
        super().setUp()
        self.write("lamps.xml", LAMPS)

    def paths(self, name):
        return [path.text for path in self.read_document(name).iter("path")]


class Edit(DocumentTest):
    def edit(self, *changes, to="out.xml", notes=""):
        """The root of the document that is written."""
        self.expect(["edit", "-q", "lamps.xml", to, *changes], errors=notes)
        return self.read_document(to)

    def refuse(self, pattern, *changes, code=1):
        self.expect_failure(["edit", "lamps.xml", "out.xml", *changes],
                            rf"velmar: {pattern}" + (r"\n'velmar edit --help' says more\." if code == 2 else ""), code)
        self.assertNotIn("out.xml", self.files())
        self.assertEqual([name for name in self.files() if "partial" in name], [])

    def test_nothing_else_changes(self):
        self.edit(to="same.xml")
        self.expect(["edit", "-q", "same.xml", "again.xml"])
        same = (self.folder / "same.xml").read_bytes()
        self.assertEqual((self.folder / "again.xml").read_bytes(), same)
        self.expect(["edit", "-q", "same.xml", "out.xml", "--set", "camera.focus_distance=7.5"])
        self.assertEqual((self.folder / "out.xml").read_bytes(),
                         re.sub(rb"<focus_distance>[^<]*<", b"<focus_distance>7.5<", same))

    def test_values_of_each_type_are_set(self):
        root = self.edit("--set", "camera.aperture_radius=0.01", "--set", "camera.up=0 1 0", "--set", "camera.name= A & B ",
                         "--set", "camera.camera_type=spherical", "--set", "camera.autofocus=true",
                         "--set", "model2.invisible_to_camera=true", "--set", "mesh.max_num_subdivisions=3")
        camera = root.find("camera")
        self.assertEqual([camera.findtext(name) for name in ("aperture_radius", "up", "name", "camera_type")],
                         ["0.01", "0 1 0", " A & B ", "spherical"])
        self.assertIsNotNone(camera.find("autofocus"))
        self.assertEqual(root.findtext("model2/invisible_to_camera"), "true")
        self.assertEqual(root.findtext("mesh/max_num_subdivisions"), "3")
        self.expect(["edit", "-q", "out.xml", "out.xml", "--set", "camera.autofocus=false"])
        self.assertIsNone(self.read_document("out.xml").find("camera/autofocus"))

    def test_nested_elements_are_named_by_dots(self):
        root = self.edit("--set", "camera.keyframe[1].pos=5 6 7", "--set", "model2.emission_scale.value=250",
                         "--set", "camera.keyframe[time=0].rotation_quaternion.angle=0.5", "--set",
                         "material[name=Glow].diffuse.albedo.constant.rgb.rgb=1 0 0")
        self.assertEqual([pos.text for pos in root.findall("camera/keyframe/pos")], ["0 0 0", "5 6 7"])
        self.assertEqual(root.findtext("camera/keyframe/rotation_quaternion/angle"), "0.5")
        self.assertEqual(root.findtext("model2/emission_scale/value"), "250")
        self.assertEqual(root.findtext("material/diffuse/albedo/constant/rgb/rgb"), "1 0 0")

    def test_nodes_are_chosen_by_name_uid_and_place(self):
        for choice, radii in (("[uid=7]", ["1", "2"]), ("[0]", ["2", "1"]), ("[name=Bulb][1]", ["1", "2"]),
                              ('[name="Bulb"][*]', ["2", "2"]), ("[*]", ["2", "2"])):
            root = self.edit("--set", f"sphere{choice}.radius=2")
            self.assertEqual([radius.text for radius in root.findall("sphere/radius")], radii)

    def test_a_choice_among_several_nodes_is_left_to_the_user(self):
        for change in (("--set", "sphere.radius=2"), ("--remove", "sphere")):
            self.refuse(r"lamps\.xml: 2 nodes fit 'sphere'; choose one by \[name=\.\.\.\] or \[uid=\.\.\.\], or all by "
                        r"sphere\[\*\]", *change)

    def test_changes_are_made_in_their_order(self):
        root = self.edit("--remove", "model2.keyframe[0]", "--remove", "model2.keyframe", "--set", "model2.pos=1 2 3",
                         "--set", "model2.pos=4 5 6")
        self.assertEqual((root.findtext("model2/pos"), root.find("model2/keyframe")), ("4 5 6", None))

    def test_a_summary_and_notes_are_printed(self):
        code, output, errors = self.run_tool("edit", "lamps.xml", "out.xml", "--remove", "model2", "--set",
                                             "camera.focus_distance=2")
        self.assertRegex(output, r"\Aout\.xml: 7 nodes, 1 element changed, 1 node removed \(\d.*\)\n\Z")
        self.assertEqual((code, errors), (0, "velmar: note: nothing uses material 'Wood' (uid 2), mesh 'Lamp' (uid 4) "
                                             "any more\n"))

    def test_unknown_names_are_refused_with_a_suggestion(self):
        self.refuse(r"lamps\.xml: there is no node 'camra'; did you mean 'camera'\?", "--set", "camra.up=0 0 1")
        self.refuse(r"lamps\.xml: 'camera\.aperture': 'camera' has no element 'aperture'; did you mean "
                    r"'aperture_radius'\?", "--set", "camera.aperture=1")
        self.refuse(r"lamps\.xml: 'camera\.keyframe\[0\]\.brightness': 'keyframe' has no element 'brightness'; it may have "
                    "S, pos, rotation_quaternion, time", "--set", "camera.keyframe[0].brightness=1")
        self.refuse(r"lamps\.xml: no node fits 'model2\[name=Lmap\]'; did you mean 'Lamp'\?", "--remove",
                    "model2[name=Lmap]")
        self.refuse(r"lamps\.xml: no node fits 'model2\[uid=4\]'", "--remove", "model2[uid=4]")
        self.refuse(r"lamps\.xml: 'model2\.materialz': there is no such element", "--remove", "model2.materialz")

    def test_values_of_another_type_are_refused(self):
        for change, fault in (("camera.aperture_radius=wide", "'wide' is no number, or out of range"),
                              ("camera.aperture_radius=1e999", "'1e999' is no number, or out of range"),
                              ("camera.aperture_radius=nan", "'nan' isn't a finite number"),
                              ("camera.aperture_radius=1 2", "'2' after the last number"),
                              ("camera.up=0 1", "'0 1' isn't a list of 3 numbers"),
                              ("camera.up=0 1 inf", "'0 1 inf' isn't a finite number"),
                              ("camera.autofocus=on", "'on' is neither true nor false"),
                              ("camera.camera_type=fish", "'fish' is none of thin-lens-perspective orthographic .*"),
                              ("camera.camera_type=", "a word is needed"),
                              ("model2.invisible_to_camera=1", "'1' is neither true nor false"),
                              ("mesh.num_smoothings=5000000000", "'5000000000' is no whole number, or beyond 32 bits"),
                              ("mesh.num_smoothings=0.5", "'0.5' is no whole number, or beyond 32 bits")):
            self.refuse(rf"lamps\.xml: '{re.escape(change.split('=')[0])}': {fault}", "--set", change)
        self.refuse("'name': the value isn't text that XML may hold", "--set", "camera.name=a\x01", code=2)

    def test_elements_that_exclude_each_other_are_refused(self):
        self.refuse(r"lamps\.xml: 'model2\.pos': with this, 'keyframe' in 'model2' has no place any more; remove it first",
                    "--set", "model2.pos=1 2 3")
        self.refuse(r"lamps\.xml: 'material\[name=Glow\]\.sunsky\.turbidity': 'sunsky' can't be beside what 'material' "
                    r"has; remove that first by --remove", "--set", "material[name=Glow].sunsky.turbidity=3")
        self.refuse(r"lamps\.xml: 'camera\.keyframe': there are 2 of them; choose one by \[0\] to \[1\]", "--set",
                    "camera.keyframe=1")
        self.refuse(r"lamps\.xml: 'model2\.emission_scale': holds other elements, which are set one by one: .*", "--set",
                    "model2.emission_scale=1")
        self.refuse(r"lamps\.xml: 'camera\.keyframe\[2\]': there is no such element", "--set", "camera.keyframe[2].pos=1 2 3")
        self.refuse(r"lamps\.xml: 'model2\.geometry_uid\.x': .*", "--set", "model2.geometry_uid.x=1")
        self.refuse(r"lamps\.xml: 'camera\.keyframe\[1\]\.time': 'keyframe' has no element 'time'", "--remove",
                    "camera.keyframe[1].time")
        self.refuse(r"lamps\.xml: 'camera\.name': every node has one", "--remove", "camera.name")

    def test_nodes_in_use_are_not_removed(self):
        self.refuse(r"lamps\.xml: mesh 'Lamp' \(uid 4\) can't be removed: it is used by model2 'Lamp' \(uid 5\); remove "
                    "what uses it too, or have it use another node", "--remove", "mesh")
        self.refuse(r"lamps\.xml: material 'Glow' \(uid 3\) can't be removed: it is used by model2 'Lamp' \(uid 5\) and 3 "
                    "others; .*", "--remove", "material[name=Glow]")
        root = self.edit("--remove", "mesh", "--remove", "model2")
        self.assertEqual([node.tag for node in root], ["camera", "material", "material", "sphere", "sphere", "medium"])

    def test_references_must_fit(self):
        for uid in ("99", "2"):
            self.refuse(rf"lamps\.xml: model2 'Lamp' \(uid 5\): geometry_uid can't be {uid}: there is no such node that "
                        "fits", "--set", f"model2.geometry_uid={uid}")
        self.refuse(r"lamps\.xml: model2 'Lamp' \(uid 5\): materials\.uid can't be 4: .*", "--set",
                    "model2.materials.uid[0]=4")
        self.refuse("uids can't be set: other nodes refer to them", "--set", "camera.uid=8", code=2)
        self.assertEqual(self.edit("--set", "sphere[0].material_uid=2").findtext("sphere/material_uid"), "2")

    def test_what_is_no_path_of_an_element_is_wrong_usage(self):
        for change, fault in (("camera", r"ELEMENT=VALUE is needed, as camera\.aperture_radius=0\.01"),
                              ("=1", "the name of an element is missing"),
                              ("camera.=1", "the name of an element is missing"),
                              ("camera[name=x=1", r"a '\]' is missing"),
                              ('camera[name="x]=1', "a '\"' is missing"),
                              ("camera[first].up=1", r"\[first\] is none of \[name=\.\.\.\], \[uid=\.\.\.\], .*"),
                              ("cam era.up=1", "'cam era' can't be the name of an element")):
            self.refuse(rf"'{re.escape(change)}': {fault}", "--set", change, code=2)
        self.refuse("'camera' is a node; an element of it is set, as camera.name", "--set", "camera=1", code=2)
        self.refuse(r"'camera=1': '=1' is no part of the path of an element", "--remove", "camera=1", code=2)

    def test_parts_of_the_renderer_library_are_kept_and_can_be_changed(self):
        change = "material[name=Wood].phong.roughness"
        code, _, errors = self.run_tool("edit", "lamps.xml", "out.xml", "--set", change + "=rough")
        self.assertEqual((code, errors), (0, f"velmar: note: '{change}' is of a class of the renderer library, so its "
                                             "value isn't checked\n"))
        self.assertEqual(self.read_document("out.xml").findtext("material/phong/roughness"), "rough")
        (self.folder / "out.xml").unlink()
        self.refuse(r"lamps\.xml: 'material\[name=Wood\]\.phong\.shine': 'phong' is of a class of the renderer library, to "
                    "which no element can be added", "--set", "material[name=Wood].phong.shine=1")

    def test_a_document_in_another_folder_names_the_same_files(self):
        self.assertEqual(self.edit(to="out.xml").findtext("camera/obstacle_map/path"), "maps/leaves.png")
        (self.folder / "a/b").mkdir(parents=True)
        self.edit(to="a/b/out.xml")
        self.assertEqual(self.paths("a/b/out.xml"),
                         [r"..\..\maps\leaves.png", r"..\..\maps\wood & steel.png", r"..\..\meshes\lamp.obj",
                          r"..\..\lamp.ies"])
        # From there it is the first one again.
        self.expect(["edit", "-q", "a/b/out.xml", "back.xml"])
        self.assertEqual(self.paths("back.xml"), [r"maps\leaves.png", r"maps\wood & steel.png", r"meshes\lamp.obj",
                                                  "lamp.ies"])

    def test_meshes_are_found_from_another_folder(self):
        self.run_tool("export", "-q", "square.obj", "scene.xml")
        (self.folder / "sub").mkdir()
        self.expect(["edit", "-q", "scene.xml", "sub/scene.xml"])
        self.assertEqual(self.run_tool("info", "-q", "sub/scene.xml"), (0, "", ""))

    def test_faulty_documents_are_refused_with_their_place(self):
        self.write("lamps.xml", LAMPS.replace("<time>1</time>", "<time>one</time>", 1))
        self.refuse(r"lamps\.xml:4:\d+: error: 'one' is no number, or out of range", "--set", "camera.up=0 0 1")
        self.write("lamps.xml", "<scene><camera>")
        self.refuse(r"lamps\.xml:1:\d+: error: .*", "--set", "camera.up=0 0 1")
        self.expect_failure(["edit", "none.xml", "out.xml"], r"velmar: .*none\.xml.*")

    def test_unknown_elements_are_named_and_left_out(self):
        self.write("lamps.xml", LAMPS.replace("<uid>1</uid>", "<uid>1</uid><colour>red</colour>"))
        code, _, errors = self.run_tool("edit", "lamps.xml", "out.xml")
        self.assertEqual((code, errors), (0, "velmar: note: lamps.xml:3:21: 'colour' in 'camera' is unknown, and left "
                                             "out\n"))

    def test_a_document_with_line_ends_of_windows_is_the_same(self):
        plain = self.edit("--set", "camera.up=0 1 0", to="plain.xml")
        self.write("lamps.xml", "\ufeff" + LAMPS.replace("\n", "\r\n"))
        self.edit("--set", "camera.up=0 1 0")
        self.assertEqual((self.folder / "out.xml").read_bytes(), (self.folder / "plain.xml").read_bytes())
        self.assertEqual(plain.findtext("camera/up"), "0 1 0")
