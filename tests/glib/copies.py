#!/usr/bin/env python3
"""Plays copies.cpp against velto-sandbox: copies.py SANDBOX PROGRAM."""
import subprocess
import sys

from sandbox import Sandbox, answer

RULES = [({"kind": "ad", "type": "banner"}, [answer()]), ({"kind": "ad"}, [answer(300, 250)])]
with Sandbox(sys.argv[1], RULES) as server:
    sys.exit(subprocess.run([sys.argv[2], str(server.key_file)]).returncode)
