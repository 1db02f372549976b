# SPDX-License-Identifier: Apache-2.0
"""Scribus documents, proved by Scribus, which opens them and tells the picture of each frame."""
import gzip
import json
import os
import pathlib
import tempfile

import proof

HERE = pathlib.Path(__file__).resolve().parent
MAKE = proof.TESTS / "plugins/scribus/corpus/make-corpus.py"
TOP, PACKED = "Druck/Heft/Heft Größe.sla", "Druck/Heft/Beilage.sla.gz"
COUNTS = {TOP: 4, PACKED: 2}


def run_scribus(*arguments):
    """Without a window, with a home of its own: it asks questions when it has none."""
    with tempfile.TemporaryDirectory() as home:
        environment = {**os.environ, "QT_QPA_PLATFORM": "offscreen", "HOME": home, "XDG_CONFIG_HOME": home}
        proof.run(["scribus", "-g", "-ns", "-py", *arguments], env=environment, cwd=home)


def make_project(folder):
    """The documents, with a picture in a folder further away, which one of them names absolutely."""
    work, far = folder / "Druck", folder / "Archiv & Co"
    run_scribus(MAKE, work)
    far.mkdir()
    (work / "Bilder/木目.png").rename(far / "木目.png")
    proof.replace_in(folder / TOP, ("../Bilder/木目.png", f"{far}/木目.png".replace("&", "&amp;")))
    text = gzip.decompress((folder / PACKED).read_bytes()).decode()
    proof.check(text.count("../Bilder/木目.png") == 1, f"{PACKED} does not name the picture")
    text = text.replace("../Bilder/木目.png", "../../Archiv &amp; Co/木目.png")
    (folder / PACKED).write_bytes(gzip.compress(text.encode()))


def edit(file):
    """The document gets a title, and pictures were painted over."""
    packed = file.suffix == ".gz"
    content = gzip.decompress(file.read_bytes()) if packed else file.read_bytes()
    proof.check(content.count(b' TITLE=""') == 1, f"{file} has a title")
    content = content.replace(b' TITLE=""', b' TITLE="Neu"')
    file.write_bytes(gzip.compress(content) if packed else content)
    work = file.parents[1]
    return [file, *proof.exchange(work / "Bilder/Grün & 50%.png", work.parent / "Archiv & Co/木目.png")]


def opened_as(file):
    """Scribus knows its documents by their names, and a renamed copy is called "a.sla (2).gz"."""
    if file.suffix != ".gz" or file.name.endswith(".sla.gz"):
        return file
    return file.with_name("renamed.sla.gz")


def inspect(file):
    document = opened_as(file)
    if document != file:
        os.link(file, document)
    try:
        return pictures_of(document)
    finally:
        if document != file:
            document.unlink()


def pictures_of(file):
    with tempfile.TemporaryDirectory() as place:
        output = pathlib.Path(place, "found.json")
        run_scribus(HERE / "inspect_scribus.py", file, output)
        proof.check(output.is_file(), f"Scribus did not open {file}")
        found = json.loads(output.read_text(encoding="utf-8"))
    proof.check(len(found) in COUNTS.values(), f"{file}: {found}")
    return [proof.Reference(name, path if os.path.isfile(path) else None,
                            proof.digest(path) if os.path.isfile(path) else None) for name, path in found]


def prove(corsync):
    proof.prove(corsync, make_project, inspect, [TOP, PACKED], edit)


proof.main(prove)
