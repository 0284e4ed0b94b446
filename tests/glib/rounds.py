#!/usr/bin/env python3
"""Plays rounds.c against velto-sandbox: rounds.py SANDBOX|kit PROGRAM SHOWN EMPTY BARE. What the engine and other libraries
never free is theirs; a block is whose code asked for it, by way of those that allocate for others."""
import contextlib
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

on_kit = sys.argv[1] == "kit"
with contextlib.nullcontext() if on_kit else Sandbox(sys.argv[1], RULES) as server:
    options = {**os.environ, "G_SLICE": "always-malloc", "LSAN_OPTIONS": f"fast_unwind_on_malloc={on_kit:d}:max_leaks=0:exitcode=0"}
    command = [sys.argv[2], "" if on_kit else str(server.key_file), *sys.argv[3:]]
    played = subprocess.run(command, env=options, stderr=subprocess.PIPE, text=True)
checked = "SUMMARY: LeakSanitizer" in played.stderr  # the toolkit always leaves something, so it has looked
leaks = re.findall(r"leak of .*\n(?:    #.*\n)+", played.stderr)
whose = [next((line for line in leak.splitlines()[1:] if not FOR_OTHERS.search(line)), "") for leak in leaks]
often = int(sys.argv[3]) // 2 if on_kit else sys.maxsize  # what every second round leaves is not the toolkit's
ours = [leak for leak, line in zip(leaks, whose) if OURS.search(line) or int(re.search(r"(\d+) object", leak)[1]) >= often]
print(*ours, sep="\n")
if played.returncode or not checked:
    sys.exit(f"exit code {played.returncode}\n{played.stderr[-2000:]}")
sys.exit(f"{len(ours)} of {len(leaks)} blocks are ours" if ours else 0)
