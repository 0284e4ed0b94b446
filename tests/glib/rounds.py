#!/usr/bin/env python3
"""Plays rounds.c against velto-sandbox: rounds.py SANDBOX PROGRAM SHOWN EMPTY BARE. What the engine and other libraries
never free is theirs; a block is whose code asked for it, by way of those that allocate for others."""
import os
import re
import subprocess
import sys

from sandbox import Sandbox, answer

RULES = [
    ({"kind": "ad", "endpoint": "nofill"}, [204]),
    ({"kind": "ad", "endpoint": "late"}, [{"status": 204, "delayMs": 20}]),
    ({"kind": "ad"}, [answer()]),
]
FOR_OTHERS = re.compile(r"operator new|__interceptor|std::|/usr/include/|libglib-2|libgobject-2|strdup")
OURS = re.compile(r"velto|rounds\.c")

with Sandbox(sys.argv[1], RULES) as server:
    options = {**os.environ, "G_SLICE": "always-malloc", "LSAN_OPTIONS": "fast_unwind_on_malloc=0:max_leaks=0:exitcode=0"}
    command = [sys.argv[2], str(server.key_file), *sys.argv[3:]]
    played = subprocess.run(command, env=options, stderr=subprocess.PIPE, text=True)
checked = "SUMMARY: LeakSanitizer" in played.stderr  # the engine always leaves something, so it has looked
leaks = re.findall(r"leak of .*\n((?:    #.*\n)+)", played.stderr)
whose = [next((line for line in leak.splitlines() if not FOR_OTHERS.search(line)), "") for leak in leaks]
ours = [leak for leak, line in zip(leaks, whose) if OURS.search(line)]
print(*ours, sep="\n")
if played.returncode or not checked:
    sys.exit(f"exit code {played.returncode}\n{played.stderr[-2000:]}")
sys.exit(f"{len(ours)} of {len(leaks)} blocks are ours" if ours else 0)
