#!/usr/bin/env python3
"""Prints a table of what `velmar export` and assimp read from the packaged scenes. Fails when a row differs for no known
reason, or has a reason and doesn't differ.

Usage: scene_table.py TOOL SCENE_COUNTS
"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

TOOL, SCENE_COUNTS = sys.argv[1:3]
FOLDER = pathlib.Path("/usr/share/assimp/models")
FORMATS = {".glb", ".gltf", ".fbx", ".dae", ".3ds", ".obj"}

ONE_MODEL = "an OBJ file is one model; assimp makes one of each group and of each material's part"
NO_AREA = "triangles without area are left out"
NO_FACES = "points and lines are no faces, and a scene needs one"
NO_COPIES = "materials of one name and colour are one, and triangles without area are left out"

# Why a row differs, by the beginning of the file's path.
REASONS = {
    "Collada/teapot_instancenodes": NO_AREA,
    "FBX/spider": NO_AREA,
    "OBJ/box_UTF16BE": "both find nothing in UTF-16",
    "OBJ/box_longline": "of a face of 936 corners the first 256 are read, and triangles without area are left out",
    "OBJ/cube_usemtl": ONE_MODEL,
    "OBJ/empty_mat": "a colour of the material library has no numbers; assimp passes over it",
    "OBJ/number_formats": NO_AREA,
    "OBJ/point_cloud": "both refuse points",
    "OBJ/regr01": ONE_MODEL + "; " + NO_AREA,
    "OBJ/regr_3429812": ONE_MODEL,
    "OBJ/spider": ONE_MODEL + "; " + NO_AREA,
    "OBJ/testline": NO_FACES,
    "OBJ/testpoints": NO_FACES,
    "glTF/IncorrectVertexArrays": "assimp also makes models of points and lines",
    "glTF2/IncorrectVertexArrays": "assimp also makes models of points and lines",
    "glTF2/2CylinderEngine": NO_COPIES,
    "glTF2/draco/2CylinderEngine": NO_COPIES,
    "glTF2/BoxWithInfinites": "a scene has finite numbers",
    "glTF2/TestNoRootNode/SceneWithoutNodes": NO_FACES,
    **{f"glTF2/glTF-Asset-Generator/Mesh_PrimitiveMode/Mesh_PrimitiveMode_{number}": NO_FACES
       for number in ("00", "01", "02", "03", "07", "08", "09", "10")},
    "invalid/": "both refuse it",
    "invalid/malformed2.obj": "a face without corners is refused; assimp passes over it",
}


def run(*command):
    return subprocess.run([str(part) for part in command], capture_output=True, text=True, errors="replace")


def export(path, folder):
    """What the document of an export says: "models / triangles / materials", or the tool's message."""
    scene = folder / "scene.xml"
    done = run(TOOL, "export", "-q", "--ground", "none", path, scene)
    if done.returncode != 0:
        return done.stderr.strip().removeprefix("velmar: ").replace(f"{path}", "").removeprefix(": ")
    # Cameras of some files look past the models, which is a warning.
    checked = run(TOOL, "check", "-q", scene)
    if checked.returncode != 0:
        return checked.stdout + checked.stderr
    root = xml.etree.ElementTree.parse(scene).getroot()
    files = {mesh.findtext("uid"): folder / mesh.findtext("external/path").replace("\\", "/") for mesh in root.iter("mesh")}
    described = json.loads(run(TOOL, "info", "--json", *sorted(set(files.values()))).stdout)["files"]
    triangles = {file["file"]: file["triangles"] + 2 * file["quads"] for file in described}
    models = root.findall("model2")
    materials = {uid.text for model in models for uid in model.iterfind("materials/uid")}
    total = sum(triangles[str(files[model.findtext("geometry_uid")])] for model in models)
    return f"{len(models)} / {total} / {len(materials)}"


def main():
    paths = sorted(path for path in FOLDER.rglob("*") if path.suffix.lower() in FORMATS)
    theirs = run(SCENE_COUNTS, *paths).stdout.splitlines()
    unexplained = []
    print("| file | ours | assimp | why they differ |\n|---|---|---|---|")
    for path, their in zip(paths, theirs, strict=True):
        with tempfile.TemporaryDirectory() as folder:
            ours = export(path, pathlib.Path(folder))
        name = path.relative_to(FOLDER).as_posix()
        # The last entry that fits is the closest one.
        reason = next((REASONS[start] for start in reversed(REASONS) if name.startswith(start)), "")
        refused = "invalid/" in name and ours == their
        if (ours != their) != bool(reason) and not refused:
            unexplained.append(name)
        print("|", " | ".join(re.sub(r"\s+", " ", cell.replace("|", "\\|")) for cell in (name, ours, their, reason)), "|")
    if unexplained:
        sys.exit("not explained, or explained without need: " + ", ".join(unexplained))


if __name__ == "__main__":
    main()
