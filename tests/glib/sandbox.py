"""velto-sandbox for tests: what it answers, and the key file of a client that talks to it."""
import json
import pathlib
import subprocess
import tempfile

PAGE = "<body style='margin:0;background:#c00'>{}<script>onload = () => location = 'velto://{}'</script>"


def answer(width=320, height=50, text="", says="loadFinished", content="html"):
    headers = {"Content-Type": "text/html", "x-content": content, "x-width": width, "x-height": height}
    return {"headers": headers, "body": PAGE.format(text, says)}


AD_SERVER = "https://ads.velto.example"
COMPANION = """</Linear></Creative><Creative><CompanionAds><Companion id="beside" width="300" height="60" adSlotId="right"><AltText>Tea</AltText>
<HTMLResource><![CDATA[Tea]]></HTMLResource></Companion></CompanionAds></Creative><Creative><Linear>"""
VIDEO_AD = f"""<VAST version="4.2"><Ad id="tea"><InLine><AdSystem>S</AdSystem><AdTitle>Tea</AdTitle><Impression>{AD_SERVER}/told/impression</Impression>
<Creatives><Creative><Linear skipoffset="00:00:01"><Duration>00:00:02</Duration><VideoClicks><ClickThrough>https://tea.example/</ClickThrough></VideoClicks>
<MediaFiles><MediaFile type="video/webm" codec="vp8" width="320" height="180">{AD_SERVER}/tea.webm</MediaFile></MediaFiles>{COMPANION}</Linear></Creative>
</Creatives></InLine></Ad></VAST>"""


# For what a busy machine does late.
LONG_AD = VIDEO_AD.replace("tea.webm", "long.webm").replace("00:00:02", "00:01:00")


def film(file, seconds, pictures):
    """With sound, and so many pictures a second."""
    source = f"videotestsrc num-buffers={seconds * pictures} ! video/x-raw,width=320,height=180,framerate={pictures}/1 ! vp8enc deadline=1 ! mux."
    words = f"gst-launch-1.0 -q webmmux name=mux ! filesink location={file} {source} audiotestsrc num-buffers={43 * seconds} ! audioconvert ! vorbisenc ! mux."
    subprocess.run(words.split(), check=True)


class Sandbox:
    """Ends with its `with`. Each rule is the conditions of a request and its answers in turn. `serves` puts files into a folder."""

    def __init__(self, program, rules, serves=None):
        self.folder = tempfile.TemporaryDirectory()
        path = pathlib.Path(self.folder.name)
        scenario = path / "scenario.json"
        scenario.write_text(json.dumps({"rules": [{"when": when, "answers": answers} for when, answers in rules]}))
        words = ["setpriv", "--pdeathsig", "KILL", program, "--port", "0", "--data", str(path / "server"), "--scenario", str(scenario), "--strict", "--log", str(path / "requests")]
        if serves:
            (path / "served").mkdir()
            serves(path / "served")
            words += ["--serve", str(path / "served")]
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
