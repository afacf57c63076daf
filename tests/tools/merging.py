"""`velmar merge`: scene documents become one."""
from editing import LAMPS, DocumentTest

BOUND = LAMPS.replace("<material_uid>77</material_uid>", "<material_uid>3</material_uid>")


class Merge(DocumentTest):
    def setUp(self):
        super().setUp()
        self.write("lamps.xml", BOUND)

    def merge(self, *paths, notes=()):
        code, output, errors = self.run_tool("merge", *paths)
        self.assertEqual((code, errors), (0, "".join(f"velmar: note: {note}\n" for note in notes)))
        self.assertRegex(output, rf"\A{paths[-1]}: \d+ nodes of {len(paths) - 1} documents \(.*\)\n\Z")
        return self.read_document(paths[-1])

    def test_uids_are_distinct_and_references_intact(self):
        root = self.merge("lamps.xml", "lamps.xml", "lamps.xml", "out.xml",
                          notes=["lamps.xml: left out, because a document before it has one: camera"] * 2)
        nodes = {node.findtext("uid"): node for node in root}
        self.assertEqual(len(nodes), len(root))
        self.assertEqual(len(root), 8 + 7 + 7)
        models = root.findall("model2")
        self.assertEqual(len(models), 3)
        for model in models:
            self.assertEqual(nodes[model.findtext("geometry_uid")].tag, "mesh")
            self.assertEqual([nodes[uid.text].findtext("name") for uid in model.findall("materials/uid")], ["Wood", "Glow"])
            for light in ("ies_profile", "emission_scale"):
                self.assertEqual(nodes[model.find(light).findtext("material_uid")].findtext("name"), "Glow")
        self.assertEqual(len({model.findtext("geometry_uid") for model in models}), 3)
        for sphere in root.findall("sphere"):
            self.assertEqual(nodes[sphere.findtext("material_uid")].findtext("name"), "Glow")
        # Also what is of the renderer library.
        fogs = [material.findtext("phong/medium_uid") for material in root.findall("material") if material.find("phong")]
        self.assertEqual([nodes[uid].tag for uid in fogs], ["medium"] * 3)
        self.assertEqual(len(set(fogs)), 3)

    def test_the_first_document_that_has_a_camera_or_settings_gives_it(self):
        single = ("<renderer_settings><uid>1</uid><name>%s</name></renderer_settings><camera><uid>2</uid><name>%s</name>"
                  "</camera><tonemapping><uid>3</uid><name>%s</name></tonemapping><background_settings><uid>4</uid>"
                  "<name>%s</name></background_settings>")
        self.write("bare.xml", "<scene><sphere><uid>1</uid><name>s</name></sphere></scene>")
        for name in ("a", "b"):
            self.write(f"{name}.xml", f"<scene>{single % (name, name, name, name)}</scene>")
        root = self.merge("bare.xml", "a.xml", "b.xml", "out.xml",
                          notes=["b.xml: left out, because a document before it has one: renderer_settings, camera, "
                                 "tonemapping, background_settings"])
        self.assertEqual([node.findtext("name") for node in root], ["s", "a", "a", "a", "a"])
        self.assertEqual([node.findtext("uid") for node in root], ["1", "2", "3", "4", "5"])

    def test_a_document_that_has_several_cameras_keeps_them(self):
        camera = "<camera><uid>%d</uid><name>%s</name></camera>"
        self.write("a.xml", f"<scene>{camera % (1, 'left')}{camera % (2, 'right')}</scene>")
        self.write("b.xml", f"<scene>{camera % (1, 'other')}</scene>")
        root = self.merge("a.xml", "b.xml", "out.xml",
                          notes=["b.xml: left out, because a document before it has one: camera"])
        self.assertEqual([node.findtext("name") for node in root], ["left", "right"])

    def test_documents_of_several_folders_keep_their_meshes(self):
        for folder in ("a", "b", "c"):
            (self.folder / folder).mkdir()
        self.run_tool("export", "-q", "square.obj", "a/scene.xml")
        self.run_tool("export", "-q", "triangle.obj", "b/scene.xml")
        self.expect(["merge", "-q", "a/scene.xml", "b/scene.xml", "c/out.xml"])
        self.assertEqual(self.run_tool("info", "-q", "c/out.xml"), (0, "", ""))
        folders = [path.rsplit("\\", 1)[0] for path in self.paths("c/out.xml")]
        self.assertEqual(folders, [r"..\a\scene_meshes"] * 2 + [r"..\b\scene_meshes"] * 2)

    def test_a_document_may_be_replaced_by_the_result(self):
        self.run_tool("export", "-q", "square.obj", "scene.xml")
        self.expect(["merge", "-q", "scene.xml", "lamps.xml", "scene.xml"])
        self.assertEqual(len(self.read_document("scene.xml").findall("model2")), 3)

    def test_references_to_nothing_are_refused(self):
        self.write("lamps.xml", LAMPS)
        self.write("old.xml", "old")
        self.expect_failure(["merge", "lamps.xml", "lamps.xml", "old.xml"],
                            r"velmar: lamps\.xml: sphere 'Bulb' \(uid 7\): material_uid is 77, and there is no such node "
                            "that fits")
        self.assertEqual((self.folder / "old.xml").read_text(), "old")

    def test_uids_have_an_end(self):
        self.write("last.xml", "<scene><sphere><uid>4294967294</uid><name>s</name></sphere></scene>")
        self.expect_failure(["merge", "last.xml", "lamps.xml", "out.xml"],
                            r"velmar: lamps\.xml: there are no UIDs left for its nodes")
        self.assertEqual(len(self.merge("lamps.xml", "last.xml", "out.xml")), 9)

    def test_faults_are_reported(self):
        self.write("broken.xml", "<scene>\n<camera></camera></scene>")
        self.expect_failure(["merge", "lamps.xml", "broken.xml", "out.xml"],
                            r"velmar: broken\.xml:2:1: error: 'camera' has no element 'uid'")
        self.assertNotIn("out.xml", self.files())
        code, _, _ = self.run_tool("merge", "lamps.xml", "out.xml")
        self.assertEqual(code, 2)
