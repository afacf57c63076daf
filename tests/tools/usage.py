"""How the tool is called."""
import os
import re
import shutil
import subprocess
import unittest

from support import EMULATOR, SQUARE, ToolTest


class Usage(ToolTest):
    def test_help_of_the_tool_names_the_commands(self):
        code, output, errors = self.run_tool("--help")
        self.assertEqual((code, errors), (0, ""))
        for command in ("export", "info", "convert", "check", "diff"):
            self.assertRegex(output, rf"(?m)^  {command} +\S")

    def test_help_of_each_command_shows_how_to_call_it(self):
        for command, call in (("export", "velmar export [OPTIONS] MODEL... SCENE.xml"),
                              ("info", "velmar info [OPTIONS] FILE..."),
                              ("check", "velmar check [OPTIONS] SCENE.xml..."),
                              ("diff", "velmar diff [OPTIONS] A.xml B.xml"),
                              ("convert", "velmar convert [OPTIONS] IN OUT")):
            code, output, errors = self.run_tool(command, "--help")
            self.assertEqual((code, errors), (0, ""))
            self.assertIn(call, output)

    def test_help_fits_a_terminal_of_100_columns(self):
        for arguments in (["--help"], ["export", "--help"], ["info", "--help"], ["convert", "--help"],
                          ["check", "--help"], ["diff", "--help"]):
            output = self.run_tool(*arguments)[1]
            self.assertEqual([line for line in output.splitlines() if len(line) > 100], [])

    def test_version(self):
        self.assertRegex(self.run_tool("--version")[1], r"\Avelmar \d+\.\d+\.\d+\n\Z")

    def test_no_command_is_wrong_usage(self):
        self.expect_failure([], "velmar: A subcommand is required\n'velmar --help' says more.", 2)

    def test_an_unknown_option_is_wrong_usage(self):
        self.expect_failure(["info", "--colour", "square.obj"],
                            "velmar: The following argument was not expected: --colour\n"
                            "'velmar info --help' says more.", 2)

    def test_a_model_alone_is_wrong_usage_and_stays(self):
        code, output, errors = self.run_tool("export", "square.obj")
        self.assertEqual((code, output), (2, ""))
        self.assertEqual(self.files(), ["none.mtl", "square.obj", "triangle.obj"])
        self.expect_failure(["export", "triangle.obj", "square.obj"],
                            "velmar: square.obj: the scene must end in .xml\n'velmar export --help' says more.", 2)
        self.assertEqual((self.folder / "square.obj").read_text(), SQUARE)

    def test_converting_to_another_format_is_wrong_usage(self):
        self.expect_failure(["convert", "square.obj", "square.step"],
                            "velmar: square.step: the output must end in .vmmesh, .obj, .ply or .stl\n"
                            "'velmar convert --help' says more.", 2)

    def test_a_scale_must_be_a_number(self):
        code, output, errors = self.run_tool("convert", "square.obj", "a.vmmesh", "--scale", "big")
        self.assertEqual((code, output), (2, ""))
        self.assertIn("--scale", errors)

    def test_help_of_a_command_by_the_command_help(self):
        for command in ("export", "info", "convert", "check", "diff"):
            self.assertEqual(self.run_tool("help", command), self.run_tool(command, "--help"))
        self.assertEqual(self.run_tool("help"), self.run_tool("--help"))

    def test_what_was_meant_is_guessed(self):
        for arguments, guess in ((["exprot", "square.obj", "scene.xml"], "unknown command 'exprot'; did you mean 'export'?"),
                                 (["help", "convertt"], "unknown command 'convertt'; did you mean 'convert'?"),
                                 (["export", "--azimut", "3", "square.obj", "scene.xml"], "; did you mean '--azimuth'?"),
                                 (["info", "--jsno", "square.obj"], "; did you mean '--json'?"),
                                 (["frobnicate"], "unknown command 'frobnicate'\n")):
            code, output, errors = self.run_tool(*arguments)
            self.assertEqual((code, output), (2, ""))
            self.assertIn(guess, errors)

    def test_the_manual_page_describes_every_option(self):
        page = self.run_tool("manual")[1]
        self.assertTrue(page.startswith(".TH VELMAR 1"))
        for command in ("export", "info", "convert", "check", "diff"):
            for option in re.findall(r"(?m)^  (?:-\w,)?(--[a-z-]+)", self.run_tool(command, "--help")[1]):
                self.assertIn("\\fB" + option.replace("-", "\\-") + "\\fR", page)

    @unittest.skipIf(EMULATOR or not shutil.which("man"), "needs man")
    def test_the_manual_page_has_no_faults(self):
        self.write("velmar.1", self.run_tool("manual")[1])
        done = subprocess.run(["man", "--warnings", "-l", "velmar.1"], cwd=self.folder, capture_output=True,
                              env={**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "100"}, text=True)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("--on-ground", done.stdout)

    @unittest.skipIf(EMULATOR, "a shell of this system")
    def test_bash_completes_commands_options_and_words(self):
        self.write("completion", self.run_tool("completion")[1])
        for line, expected in ((["velmar", "ex"], "export"), (["velmar", "help", "conv"], "convert"),
                               (["velmar", "export", "--tone"], "--tone-mapping"),
                               (["velmar", "export", "--light", "sun"], "sunsky"), (["velmar", "convert", "--to", "p"], "ply"),
                               (["velmar", "export", "--up", "-y"], "-y")):
            script = ("source ./completion; COMP_WORDS=(" + " ".join(line) + f"); COMP_CWORD={len(line) - 1}; "
                      'COMPREPLY=(); _velmar; echo "${COMPREPLY[@]}"')
            done = subprocess.run(["bash", "-c", script], cwd=self.folder, capture_output=True, text=True, check=True)
            self.assertEqual(done.stdout.split(), [expected])
