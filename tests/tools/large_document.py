"""Measures what `velmar info` takes for a large scene document.

Usage: large_document.py TOOL GIGABYTES [FOLDER]; the document is made in FOLDER (the system's for temporary files).
"""
import os
import pathlib
import subprocess
import sys
import tempfile
import time

MODEL = """	<model2>
		<uid>{uid}</uid>
		<name>Model {uid}</name>
		<pos>{uid} 0 0</pos>
		<rotation>
			<matrix>1 0 0 0 1 0 0 0 1</matrix>
		</rotation>
		<geometry_uid>4294967295</geometry_uid>
	</model2>
"""


def write_document(path, size):
    """Models of no geometry, about `size` bytes of them. Returns their number."""
    written = uid = 0
    with open(path, "w", encoding="utf-8", newline="\n") as out:
        out.write('<?xml version="1.0" encoding="utf-8"?>\n<scene>\n')
        while written < size:
            text = "".join(MODEL.format(uid=uid + i) for i in range(1, 1001))
            out.write(text)
            written += len(text)
            uid += 1000
        out.write("</scene>\n")
    return uid


def measure_info(command, path):
    """Describes the document `path`. Returns the exit code, the output, the seconds, and the peak of memory in bytes."""
    # Else a build with the sanitizer keeps memory that was freed.
    options = os.environ.get("ASAN_OPTIONS", "") + ":quarantine_size_mb=1"
    with tempfile.TemporaryFile() as output:
        start = time.monotonic()
        process = subprocess.Popen([*command, "info", str(path)], stdin=subprocess.DEVNULL, stdout=output,
                                   stderr=subprocess.STDOUT, env={**os.environ, "ASAN_OPTIONS": options})
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        output.seek(0)
        return process.returncode, output.read().decode(), time.monotonic() - start, usage.ru_maxrss * 1024


def main():
    tool, gigabytes = sys.argv[1], float(sys.argv[2])
    with tempfile.TemporaryDirectory(dir=sys.argv[3] if len(sys.argv) > 3 else None) as folder:
        path = pathlib.Path(folder, "large.xml")
        models = write_document(path, gigabytes * 1e9)
        code, output, seconds, memory = measure_info([tool], path)
        if code != 0:
            sys.exit(output)
        print(f"{path.stat().st_size / 1e9:.2f} GB, {models} models: {seconds:.1f} s, {memory / 1e6:.0f} MB at most")


if __name__ == "__main__":
    main()
