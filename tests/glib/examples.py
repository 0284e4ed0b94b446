#!/usr/bin/env python3
"""Plays an example of examples/glib, with a hand that taps: examples.py SANDBOX COMMAND..."""
import subprocess
import sys

from sandbox import Sandbox, answer

RULES = [
    ({"kind": "ad", "type": "banner"}, [answer()]),
    ({"kind": "ad", "type": "interstitial"}, [answer(300, 250), 204]),
]


def xdotool(*words):
    subprocess.run(["xdotool", *map(str, words)], check=True)


def window_named(name, process):
    """It is there. A search among all windows fails when another one goes meanwhile, so it is asked for until it is found."""
    while process.poll() is None:
        search = ["xdotool", "search", "--onlyvisible", "--name", f"^{name}$"]
        found = subprocess.run(search, stdout=subprocess.PIPE, text=True).stdout.split()
        if found:
            return found[-1]
    raise AssertionError(f"it ended before {name} was found")


def play(sandbox, command):
    with Sandbox(sandbox, RULES) as server:
        process = subprocess.Popen([*command, str(server.key_file)], stdout=subprocess.PIPE, text=True)
        heard = []

        def wait_for(*lines):
            while not all(line in heard for line in lines):
                line = process.stdout.readline()
                assert line, f"it ended after {heard}"
                heard.append(line.strip())

        wait_for("banner: loaded 320 x 50", "interstitial: loaded")
        window = window_named("Levels", process)
        size = subprocess.check_output(["xdotool", "getwindowgeometry", "--shell", window], text=True)
        size = dict(line.split("=") for line in size.split())
        xdotool("windowfocus", "--sync", window)
        xdotool("key", "space")  # the button has the focus
        wait_for("interstitial: presented")
        xdotool("key", "Escape")
        wait_for("interstitial: closed", "interstitial: failed: The server had no ad (status 204).")
        xdotool("mousemove", "--window", window, int(size["WIDTH"]) // 2, int(size["HEIGHT"]) - 25, "click", 1)
        wait_for("banner: pressed")
        process.terminate()
        process.wait()
        process.stdout.close()


if __name__ == "__main__":
    play(sys.argv[1], sys.argv[2:])
    print("as it should be")
