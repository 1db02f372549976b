# SPDX-License-Identifier: Apache-2.0
"""gltf-validator and Blender open imported glTF scenes and find everything that they link: see README.md.

gltf-validator is looked for in build/programs, where ./test --programs puts it, or in the folder that the
variable GLTF_VALIDATOR_MODULES names.
"""
import json
import os
import pathlib
import tempfile
import urllib.parse

from proof import Reference, TESTS, check, digest, exchange, main, prove, run, run_blender

HERE = pathlib.Path(__file__).resolve().parent
MODULES = pathlib.Path(os.environ.get("GLTF_VALIDATOR_MODULES", TESTS.parent / "build/programs/node_modules"))
HOUSE, ADDRESSES = "Szenen/Haus 木.gltf", "Szenen/Datei.gltf"
TOPS = (HOUSE, "Szenen/Garten.gltf", "Szenen/Roh.gltf", ADDRESSES, "Kiste.glb")
EXTENSION = "Python: /extensions/EXT_lights_ies/lights/0/uri"


def make_project(folder):
    run_blender("-P", HERE / "make_gltf_project.py", "--", folder)


def edit(file):
    """The scene gets a name, and a picture was painted over."""
    content = file.read_bytes()
    if file.suffix == ".gltf":
        file.write_bytes(with_name(content))
    else:
        size = int.from_bytes(content[12:16], "little")
        scene = with_name(content[20:20 + size])
        scene += b" " * (-len(scene) % 4)
        content = content[:12] + len(scene).to_bytes(4, "little") + content[16:20] + scene + content[20 + size:]
        file.write_bytes(content[:8] + len(content).to_bytes(4, "little") + content[12:])
    pictures = next(folder for folder in (file.parent / "Bilder", file.parent.parent / "Bilder") if folder.exists())
    return [file, *exchange(pictures / "50% grün.png", pictures / "木目.png")]


def with_name(text):
    scene = json.loads(text)
    scene["scenes"][0]["name"] = "Neu"
    return json.dumps(scene, ensure_ascii=False).encode()


def by_validator(file):
    """A missing resource is told by the exit code, too; an error in the file ends the proof."""
    result = run(["node", TESTS / "plugins/gltf/validate-gltf.mjs", "--modules", MODULES, "--json", file], expect=(0, 1))
    report = json.loads(result.stdout)
    check(not report["errors"], f"{file}: {report['errors']}")
    return [Reference(f"validator: {resource['pointer']}", resource["path"], resource["content"])
            for resource in report["resources"]]


def by_blender(file):
    with tempfile.TemporaryDirectory() as work:
        output = pathlib.Path(work, "found.json")
        run_blender("-P", HERE / "inspect_gltf.py", "--", file, output)
        return [Reference(**reference) for reference in json.loads(output.read_text())]


def by_extension(file):
    """Neither program follows extensions that name files."""
    scene = json.loads(file.read_bytes()) if file.suffix == ".gltf" else {}
    references = []
    for light in scene.get("extensions", {}).get("EXT_lights_ies", {}).get("lights", []):
        path = file.parent / urllib.parse.unquote(light["uri"])
        found = path.is_file()
        references.append(Reference(EXTENSION, str(path) if found else None, digest(path) if found else None))
    return references


def inspect(file):
    references = by_validator(file) + by_extension(file)
    if not file.name.startswith(pathlib.Path(ADDRESSES).stem):
        return references + by_blender(file)
    # Blender reads no file:// addresses; it can be asked where the import has made them relative.
    if b"file://" not in file.read_bytes():
        seen = by_blender(file)
        check(len(seen) == 4 and all(reference.path for reference in seen), f"{file}: Blender found {seen}")
    return references


def lost(top):
    return {"validator: /images/4", "Blender: picture verloren.png"} if top == HOUSE else ()


def exit_codes(top):
    return (4,) if top == HOUSE else (0,)


def proof(corsync):
    check((MODULES / "gltf-validator").is_dir(), f"gltf-validator is not in {MODULES}")
    prove(corsync, make_project, inspect, TOPS, edit, missing=lost, exit_codes=exit_codes)


if __name__ == "__main__":
    main(proof)
