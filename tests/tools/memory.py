"""The memory that documents take which were made to take much of it."""
import subprocess
import sys

from support import COMMAND, ToolTest

SIZE = 2_000_000
# A process of its own, because a child takes over the peak of the memory of the one that started it.
LAUNCHER = """
import os, sys
output = [(os.POSIX_SPAWN_OPEN, fd, os.devnull, os.O_WRONLY, 0) for fd in (1, 2)]
_, status, usage = os.wait4(os.posix_spawn(sys.argv[1], sys.argv[1:], os.environ, file_actions=output), 0)
print(os.waitstatus_to_exitcode(status), usage.ru_maxrss * 1024)
"""


def many(make, size=SIZE):
    """As many as make about `size` bytes of what `make` gives for 1, 2, 3 ..., or of one text."""
    parts, written = [], 0
    while written < size:
        parts.append(make if isinstance(make, str) else make(len(parts) + 1))
        written += len(parts[-1])
    return "".join(parts)


def node(element, content="", uid=1):
    return f"<{element}><uid>{uid}</uid><name/>{content}</{element}>"


def shader(content):
    return node("material", f"<diffuse><shared_shader_info>{content}</shared_shader_info></diffuse>")


DOCUMENTS = {
    "cameras": lambda: many(lambda i: node("camera", uid=i)),
    "models": lambda: many(lambda i: node("model2", uid=i)),
    "nodes of unknown classes": lambda: many(lambda i: node("a", uid=i)),
    "materials of unknown classes": lambda: many(lambda i: node("material", "<f/>", i)),
    "unknown elements": lambda: node("camera", many("<abcdefg/>")),
    "short unknown elements": lambda: node("camera", many("<a/>")),
    "attributes": lambda: f"<camera{many(' a=' + chr(34) * 2)}><uid>1</uid><name/></camera>",
    "references": lambda: node("model2", f"<materials>{many('<uid>1</uid>')}</materials>"),
    "scatter nodes that aren't there": lambda: node(
        "material", f"<diffuse/><scatter_uids>{many(lambda i: f'<uid>{i + 4}</uid>')}</scatter_uids>"),
    "shader parameters": lambda: shader(many("<abcdefg/>")),
    "short shader parameters": lambda: many(shader("<a/>" * 1000)),
    "textures of a material that is named often": lambda: shader(
        many("<texture><path>a</path></texture>", SIZE // 2)) + node(
            "model2", f"<materials>{many('<uid>1</uid>', SIZE // 2)}</materials>", 2),
}
FIRST = "<sphere><uid>4000000000</uid><name>first</name><radius>1</radius></sphere>"


class Memory(ToolTest):
    def peak(self, *arguments):
        """The most memory that a run has at a time, in bytes, with all of the process."""
        done = subprocess.run([sys.executable, "-c", LAUNCHER, *COMMAND, *arguments], cwd=self.folder, check=True,
                              capture_output=True, text=True, timeout=120)
        code, peak = map(int, done.stdout.split())
        self.assertIn(code, (0, 1, 2), arguments)
        return peak

    def test_is_less_than_twenty_times_the_size_of_the_documents(self):
        (self.folder / "elsewhere").mkdir()
        faults = []
        for name, make in DOCUMENTS.items():
            content = make()
            document = f"<scene>{FIRST}{content}</scene>"
            # As few bytes as can be are different, in the large node too.
            changed = document.replace("<radius>1", "<radius>2").replace("<name/>", "<name>b</name>")
            # Each reference is another one now.
            changed = changed.replace("<scatter_uids><uid>5</uid>", "<scatter_uids>")
            self.write("a.xml", document)
            self.write("b.xml", changed)
            size = len(document)
            runs = {
                ("check", "a.xml"): size,
                ("diff", "a.xml", "b.xml"): size + len(changed),
                ("edit", "a.xml", "c.xml", "--set", "sphere[name=first].radius=2"): size,
                ("merge", "a.xml", "a.xml", "elsewhere/c.xml"): 2 * size,
            }
            for arguments, bytes_read in runs.items():
                times = self.peak(*arguments) / bytes_read
                if times > 20:
                    faults.append(f"{name}: {' '.join(arguments)}: {times:.1f} times")
        self.assertEqual(faults, [])
