# SPDX-License-Identifier: Apache-2.0
"""Run by Scribus: the picture of each frame of a document, as JSON: inspect_scribus.py DOCUMENT OUTPUT."""
import json
import pathlib
import sys

import scribus

IMAGE_FRAME = 2

document, output = sys.argv[-2:]
scribus.openDoc(document)
found = []
for page in range(1, scribus.pageCount() + 1):
    scribus.gotoPage(page)
    for name, kind, _ in scribus.getPageItems():
        if kind == IMAGE_FRAME:
            found.append([name, scribus.getImageFile(name)])
pathlib.Path(output).write_text(json.dumps(found), encoding="utf-8")
scribus.closeDoc()
