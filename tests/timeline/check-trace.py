#!/usr/bin/env python3
"""Checks trace files against the schema of their format, and that the asynchronous spans of each id are nested.

usage: check-trace.py FILE...

Viewers take an array without its end, as a process that was killed leaves it behind.
"""
import collections
import json
import pathlib
import sys

import jsonschema

schema = json.loads(pathlib.Path(__file__).with_name("trace-event.schema.json").read_text())


def events_of(path):
    text = pathlib.Path(path).read_text()
    return json.loads(text if text.rstrip().endswith("]") else text + "]")


def check(path):
    events = events_of(path)
    jsonschema.Draft7Validator(schema).validate(events)
    by_id = collections.defaultdict(list)
    for event in events:
        by_id[event["cat"], event["id"]].append(event)
    ended = 0
    for key, own in by_id.items():
        stack = []
        # A viewer sorts by time; what begins and ends at one moment stays as it was written.
        for event in sorted(own, key=lambda e: e["ts"]):
            if event["ph"] == "b":
                stack.append(event["name"])
            elif event["ph"] == "e":
                assert stack and stack.pop() == event["name"], f"{path}: {key} ends {event['name']} out of turn"
                ended += 1
    assert ended, f"{path}: no span has ended"
    print(f"{path}: {len(events)} events of {len(by_id)} loads, {ended} spans")


if len(sys.argv) < 2:
    sys.exit(__doc__)
for path in sys.argv[1:]:
    check(path)
