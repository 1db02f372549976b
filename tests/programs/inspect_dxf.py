# SPDX-License-Identifier: Apache-2.0
"""What ezdxf reads of a drawing that names files, as JSON: the name, and the path as the drawing has it."""
import json
import re
import sys

import ezdxf

document = ezdxf.readfile(sys.argv[1])
found = [[f"block {block.name}", block.block.dxf.xref_path] for block in document.blocks if block.block.is_xref]
for entity in document.objects:
    kind = entity.dxftype()
    if kind in ("IMAGEDEF", "PDFDEFINITION"):
        found.append([f"{kind} {entity.dxf.handle}", entity.dxf.filename])

def decoded(text):
    """ezdxf leaves the escapes of old versions to those who ask for names."""
    return re.sub(r"\\U\+([0-9A-Fa-f]{4})", lambda escape: chr(int(escape[1], 16)), text)


json.dump([[name, decoded(path)] for name, path in found], sys.stdout)
