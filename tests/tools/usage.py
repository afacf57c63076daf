"""How the tool is called."""
from support import SQUARE, ToolTest


class Usage(ToolTest):
    def test_help_of_the_tool_names_the_commands(self):
        code, output, errors = self.run_tool("--help")
        self.assertEqual((code, errors), (0, ""))
        for command in ("export", "info", "convert"):
            self.assertRegex(output, rf"(?m)^  {command} +\S")

    def test_help_of_each_command_shows_how_to_call_it(self):
        for command, call in (("export", "velmar export [OPTIONS] MODEL... SCENE.xml"),
                              ("info", "velmar info [OPTIONS] FILE"),
                              ("convert", "velmar convert [OPTIONS] IN OUT")):
            code, output, errors = self.run_tool(command, "--help")
            self.assertEqual((code, errors), (0, ""))
            self.assertIn(call, output)

    def test_help_fits_a_terminal_of_100_columns(self):
        for arguments in (["--help"], ["export", "--help"], ["info", "--help"], ["convert", "--help"]):
            output = self.run_tool(*arguments)[1]
            self.assertEqual([line for line in output.splitlines() if len(line) > 100], [])

    def test_version(self):
        self.assertRegex(self.run_tool("--version")[1], r"\Avelmar \d+\.\d+\.\d+\n\Z")

    def test_no_command_is_wrong_usage(self):
        self.expect_failure([], "velmar: A subcommand is required\n'velmar --help' tells more.", 2)

    def test_an_unknown_option_is_wrong_usage(self):
        self.expect_failure(["info", "--colour", "square.obj"],
                            "velmar: The following argument was not expected: --colour\n"
                            "'velmar info --help' tells more.", 2)

    def test_a_model_alone_is_wrong_usage_and_stays(self):
        code, output, errors = self.run_tool("export", "square.obj")
        self.assertEqual((code, output), (2, ""))
        self.assertEqual(self.files(), ["square.obj", "triangle.obj"])
        self.expect_failure(["export", "triangle.obj", "square.obj"],
                            "velmar: square.obj: the scene must end in .xml\n'velmar export --help' tells more.", 2)
        self.assertEqual((self.folder / "square.obj").read_text(), SQUARE)

    def test_converting_to_another_format_is_wrong_usage(self):
        self.expect_failure(["convert", "square.obj", "square.stl"],
                            "velmar: square.stl: the output must end in .vmmesh\n"
                            "'velmar convert --help' tells more.", 2)

    def test_a_scale_must_be_a_number(self):
        code, output, errors = self.run_tool("convert", "square.obj", "a.vmmesh", "--scale", "big")
        self.assertEqual((code, output), (2, ""))
        self.assertIn("--scale", errors)
