"""A web server on the loopback, and a second host (another port) that lets nobody read what it has."""

import contextlib
import http.server
import pathlib
import struct
import threading
import time
import zlib

COOKIE = "session=of the person"


def png(red, size=64):
    """A picture that is the same in every run."""
    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    rows = b"".join(b"\0" + bytes(channel for x in range(size) for channel in (red, 4 * x % 256, 4 * y % 256))
                    for y in range(size))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 2, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


STYLED = """<!DOCTYPE html><meta charset=utf-8><title>Ein Titel, 日本 &lt;b&gt;</title>
<style>body { font-family: Georgia }
em { color: rgb(200, 0, 0) } .big { font-size: 24px } .mark { background-color: rgb(255, 255, 0) }
.gone { display: none }</style>
<p id=styled>hello <b>bold</b> <em>red</em> <span class=big>big</span> <span class=mark>marked</span>
<u>under</u> <s>struck</s> <a id=inner href="/x?a=1&amp;b=2">a link</a><span class=gone>hidden</span>
&lt;script&gt; 日本</p>
<p><a id=link href="/there?q=it's">there it is</a></p>"""

PICTURES = """<!DOCTYPE html><meta charset=utf-8><title>Pictures</title><body>
<p><img id=own src="/own.png"> <img id=behind src="/behind.png"> <img id=redirect src="/redirect.png"></p>
<p><img id=blob width=64> <img id=data width=64> <img id=drawn width=64> <canvas id=canvas width=64 height=64></canvas></p>
<p><img id=other src="OTHER/own.png"> <img id=none src="/none.png" width=64 height=64 alt=none>
<img id=away src="/away.png"></p>
<script>
const canvas = document.getElementById("canvas");
canvas.getContext("2d").fillStyle = "rgb(10, 200, 30)";
canvas.getContext("2d").fillRect(0, 0, 64, 64);
document.getElementById("drawn").src = canvas.toDataURL();
(async () => {
  const blob = await (await fetch("/own.png")).blob();
  document.getElementById("blob").src = URL.createObjectURL(blob);
  const reader = new FileReader();
  reader.onload = () => { document.getElementById("data").src = reader.result; };
  reader.readAsDataURL(blob);
})();
</script>"""

FIELD = """<!DOCTYPE html><meta charset=utf-8><title>A field</title>
<p><textarea id=field rows=3>words &amp; more in a field</textarea></p>
<p id=part>wanted <span style="user-select: none">number</span> words</p>"""

# A camera never ends its answer, so a page that waited for it would not be complete.
CAMERA = """<!DOCTYPE html><meta charset=utf-8><title>Camera</title><p><img id=camera width=64 height=64></p><script>
addEventListener("load", () => setTimeout(() => { document.getElementById("camera").src = "/camera.png"; }));
</script>"""

WALKS = """<!DOCTYPE html><meta charset=utf-8><title>Walks around the lake</title>
<style>body { font-family: sans-serif; margin: 20px } h2 { color: rgb(20, 90, 60) } em { color: rgb(200, 0, 0) }</style>
<h2>Walks around the lake</h2>
<div id=walk><p><b>The shore, 2 hours.</b> From the bus stop along the water to the <a href="/mill">old mill</a>;
<em>closed in spring</em>.</p><p><b>The ridge, 5 hours.</b> Steep at first, then level, with a view of
<span style="background-color: rgb(255, 240, 120)">both valleys</span>.</p></div>"""

# Hidden from those who read the screen: browsers take minutes to tell them of as much.
HUGE = """<!DOCTYPE html><meta charset=utf-8><title>Huge</title>
<style>p { content-visibility: auto; contain-intrinsic-size: auto 20px }</style><div id=huge aria-hidden=true></div><script>
for (let size = 0; size < SIZE; size += 15000) {
  const part = document.createElement("p");
  part.textContent = "words and more ".repeat(1000);
  document.getElementById("huge").append(part);
}</script>"""

DENSE = """<!DOCTYPE html><meta charset=utf-8><title>Dense</title><p id=dense aria-hidden=true></p><script>
for (let count = 0; count < COUNT; ++count) {
  const part = document.createElement(count % 2 ? "b" : "i");
  part.style = "color: rgb(1, 2, 3); font-family: Georgia; font-size: 10px";
  part.textContent = "word ";
  document.getElementById("dense").append(part);
}</script>"""

# A page that tries what an extension may have left open.
HOSTILE = """<!DOCTYPE html><meta charset=utf-8><title>Hostile</title><p id=text>text</p><script>
const tries = [
  () => chrome.runtime.sendMessage("pcelcgdofjpbcanjjnbcbldgejlhilma", { version: 1 }),
  () => chrome.runtime.sendMessage("share@quoll2.vorlent.it", "1"),
  () => chrome.runtime.connect("pcelcgdofjpbcanjjnbcbldgejlhilma"),
  () => browser.runtime.sendMessage("share@quoll2.vorlent.it", "1"),
  () => chrome.runtime.connectNative("it.vorlent.quoll2"),
  () => open("chrome-extension://pcelcgdofjpbcanjjnbcbldgejlhilma/help.html#1"),
  () => fetch("chrome-extension://pcelcgdofjpbcanjjnbcbldgejlhilma/manifest.json"),
  () => window.postMessage({ share: { link: "https://example.org/" } }, "*"),
  () => document.dispatchEvent(new KeyboardEvent("keydown", { key: "q", altKey: true, shiftKey: true, bubbles: true })),
  () => document.getElementById("text").dispatchEvent(new MouseEvent("contextmenu", { bubbles: true, button: 2 })),
];
for (const one of tries) { try { Promise.resolve(one()).catch(() => {}); } catch {} }
const frame = document.createElement("iframe");
frame.src = "chrome-extension://pcelcgdofjpbcanjjnbcbldgejlhilma/help.html#1";
document.body.append(frame);
document.title = "Hostile, done";
</script>"""


class Server:
    def __init__(self, other=None):
        server = self

        class Handler(http.server.BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def do_GET(self):
                server.answer(self)

            def log_message(self, *_):
                pass

        self._http = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._http.daemon_threads = True
        self.address = f"http://127.0.0.1:{self._http.server_port}"
        self.other = other.address.replace("127.0.0.1", "localhost") if other else ""
        threading.Thread(target=self._http.serve_forever, daemon=True).start()

    @staticmethod
    def film(request):
        """One picture after another, until the browser has enough."""
        request.close_connection = True
        request.send_response(200)
        request.send_header("Content-Type", "multipart/x-mixed-replace; boundary=next")
        request.end_headers()
        with contextlib.suppress(OSError):
            while True:
                request.wfile.write(b"--next\r\nContent-Type: image/png\r\n\r\n" + png(10) + b"\r\n")
                time.sleep(0.2)

    def answer(self, request):
        path = request.path.split("?")[0]
        if path == "/camera.png":
            self.film(request)
            return
        kind, body, more = "text/html; charset=utf-8", b"", {}
        status = 200
        if path == "/styled":
            body = STYLED.encode()
        elif path == "/pictures":
            body = PICTURES.replace("OTHER", self.other).encode()
            more = {"Set-Cookie": f"{COOKIE.split('=')[0]}=\"of the person\"; HttpOnly; SameSite=Strict"}
        elif path == "/walks":
            body = WALKS.encode()
        elif path == "/field":
            body = FIELD.encode()
        elif path == "/form":
            body = b"""<!DOCTYPE html><title>Form</title><div id=form><b>before</b>
                <form><input name=childNodes hidden>inside</form></div>"""
        elif path == "/camera":
            body = CAMERA.encode()
        elif path == "/huge":
            body = HUGE.replace("SIZE", request.path.split("?")[1]).encode()
        elif path == "/dense":
            body = DENSE.replace("COUNT", request.path.split("?")[1]).encode()
        elif path == "/mailto":
            body = f"""<!DOCTYPE html><title>Measured</title>
                <p><a id=mail href="mailto:?subject=Measured&amp;body={self.address}/mailto">mail</a></p>""".encode()
        elif path == "/hostile":
            body = HOSTILE.encode()
        elif path.startswith("/tab"):
            body = f"<!DOCTYPE html><title>Tab {path[4:]} &amp; <b></title><p>tab</p>".encode()
        elif path == "/own.png":
            kind, body = "image/png", png(10)
        elif path == "/behind.png":
            if "of the person" in request.headers.get("Cookie", ""):
                kind, body = "image/png", png(99)
                more = {"Cache-Control": "no-store"}
            else:
                status = 403
        elif path == "/redirect.png":
            status, more = 302, {"Location": "/own.png"}
        elif path == "/away.png":
            status, more = 302, {"Location": self.other + "/own.png"}
        elif path == "/none.png":
            kind, body = "image/png", b"this is no picture"
        else:
            status, body = 404, b"nothing"
        request.send_response(status)
        request.send_header("Content-Type", kind)
        request.send_header("Content-Length", str(len(body)))
        for name, value in more.items():
            request.send_header(name, value)
        request.end_headers()
        request.wfile.write(body)
