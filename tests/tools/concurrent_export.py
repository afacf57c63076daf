"""Several processes that write the same scene into the same folder."""
import subprocess

from support import COMMAND, ToolTest


class ConcurrentExport(ToolTest):
    def test_processes_that_write_the_same_scene_at_once_all_succeed(self):
        positions = "".join(f"v {i % 100} {i // 100} 0\n" for i in range(10000))
        faces = "".join(f"f {i} {i + 1} {i + 100}\n" for i in range(1, 9900))
        self.write("grid.obj", positions + faces)
        for round_number in range(3):
            with self.subTest(round=round_number):
                scene = f"scene{round_number}"
                processes = [
                    subprocess.Popen([*COMMAND, "export", "grid.obj", f"{scene}.xml", "--quiet"], cwd=self.folder,
                                     stdout=subprocess.PIPE, stderr=subprocess.STDOUT) for _ in range(3)
                ]
                outputs = [process.communicate()[0] for process in processes]
                self.assertEqual([process.returncode for process in processes], [0, 0, 0], outputs)
                meshes = list((self.folder / f"{scene}_meshes").iterdir())
                self.assertEqual({mesh.suffix for mesh in meshes}, {".vmmesh"}, meshes)
