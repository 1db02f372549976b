#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Prints the footprints with models that KiCad finds in a board, as JSON: run by prove_kicad.py, with the
system's Python, which has KiCad's module."""
import json
import sys

import pcbnew

board = pcbnew.LoadBoard(sys.argv[1])
print(json.dumps({footprint.GetReference(): [model.m_Filename for model in footprint.Models()]
                  for footprint in board.GetFootprints()}))
