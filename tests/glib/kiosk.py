#!/usr/bin/env python3
"""Scrapes the kiosk of the examples as collectors do, with their own strict reader: kiosk.py SANDBOX COMMAND..."""
import subprocess
import sys
import urllib.request

from prometheus_client.openmetrics.parser import text_string_to_metric_families
from sandbox import Sandbox, answer

with Sandbox(sys.argv[1], [({"kind": "ad"}, [answer(), 204, answer()])]) as server:
    kiosk = subprocess.Popen([*sys.argv[2:], str(server.key_file), "0", "2"], stdout=subprocess.PIPE, text=True)
    address = kiosk.stdout.readline().strip()
    while int(kiosk.stdout.readline().split()[1]) < 4:  # ads, of loads by their number, of which the second has none
        pass
    with urllib.request.urlopen(address) as answered:
        assert answered.headers["Content-Type"].startswith("application/openmetrics-text; version=1.0.0"), answered.headers
        families = {family.name: family for family in text_string_to_metric_families(answered.read().decode())}
    kiosk.terminate()
    kiosk.wait()
    kiosk.stdout.close()

ends = {}
for sample in families["velto_loads"].samples:
    assert sample.labels["placement"] == "entrance", sample
    ends[sample.labels["reason"]] = sample.value
# On a slow machine an answer or a page may not be there yet when the next load begins.
had_ads = ends.get("refreshed", 0) + ends.get("refresh-without-ad", 0)
assert ends.get("status-no-fill", 0) <= 1 and sum(ends.values()) >= 3, ends
values = {sample.name: sample.value for family in families.values() for sample in family.samples}
assert values["velto_refreshes_total"] == sum(ends.values()) - 1, values
assert values["velto_filled_loads_total"] == values["velto_load_seconds_count"] == had_ads > 0, values
assert 0 < values["velto_load_seconds_sum"] < 60 * had_ads, values
print("as it should be")
