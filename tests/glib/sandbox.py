"""velto-sandbox for tests: what it answers, and the key file of a client that talks to it."""
import json
import pathlib
import subprocess
import tempfile

PAGE = "<body style='margin:0;background:#c00'>{}<script>onload = () => location = 'velto://{}'</script>"


def answer(width=320, height=50, text="", says="loadFinished", content="html"):
    headers = {"Content-Type": "text/html", "x-content": content, "x-width": width, "x-height": height}
    return {"headers": headers, "body": PAGE.format(text, says)}


class Sandbox:
    """Ends with its `with`. Each rule is the conditions of a request and its answers in turn."""

    def __init__(self, program, rules):
        self.folder = tempfile.TemporaryDirectory()
        path = pathlib.Path(self.folder.name)
        scenario = path / "scenario.json"
        scenario.write_text(json.dumps({"rules": [{"when": when, "answers": answers} for when, answers in rules]}))
        words = ["setpriv", "--pdeathsig", "KILL", program, "--port", "0", "--data", str(path / "server"), "--scenario", str(scenario), "--strict", "--log", str(path / "requests")]
        self.process = subprocess.Popen(words, stdout=subprocess.PIPE, text=True)
        told = json.loads(self.process.stdout.readline())
        self.key_file = path / "client.ini"
        self.values = {
            "application-id": "org.example.test",
            "publisher-key": "key",
            "ca-file": told["ca"],
            "host-map": f"*.velto.example=127.0.0.1:{told['port']};",
        }
        lines = [f"{name}={value}\n" for name, value in self.values.items()]
        self.key_file.write_text("[Velto]\n" + "".join(lines))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        self.process.stdout.close()
        self.folder.cleanup()
