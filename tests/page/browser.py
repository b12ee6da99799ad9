"""A headless Chromium over its debugging pipe: opens a page, acts on it as a user does, looks at it."""
import base64
import json
import os
import pathlib
import select
import shutil
import subprocess
import tempfile
import time

PROGRAMS = ("chromium-headless-shell", "chromium")
KEYS = {"Enter": ("\r", 13), "Tab": ("", 9), "ArrowLeft": ("", 37), "ArrowUp": ("", 38), "ArrowRight": ("", 39),
        "ArrowDown": ("", 40)}


def program():
    """The browser's path, or None."""
    return next(filter(None, map(shutil.which, PROGRAMS)), None)


class Browser:
    """One browser process with one page; what the page says and asks for is kept in `messages` and `requests`."""

    def __init__(self, width=1280, height=900):
        self.messages, self.requests, self.answers, self.number, self.rest = [], [], {}, 0, b""
        self.profile = tempfile.TemporaryDirectory(suffix=".quarl-html")
        to_browser, self.write_end = os.pipe()
        self.read_end, from_browser = os.pipe()
        # The pipe's ends are the browser's descriptors 3 and 4.
        start = f'exec "$@" 3<&{to_browser} 4>&{from_browser}'
        self.process = subprocess.Popen(
            ["bash", "-c", start, "browser", program(), "--headless", "--remote-debugging-pipe", "--no-sandbox",
             "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars", "--no-first-run", "--disable-background-networking",
             f"--user-data-dir={self.profile.name}", "about:blank"],
            pass_fds=(to_browser, from_browser), stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self.session = None
        pages = [t for t in self.call("Target.getTargets")["targetInfos"] if t["type"] == "page"]
        target = pages[0]["targetId"] if pages else self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(f"{domain}.enable")
        self.resize(width, height)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        os.close(self.write_end)
        os.close(self.read_end)
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.profile.cleanup()

    def call(self, method, **parameters):
        self.number += 1
        message = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        self._write(json.dumps(message).encode() + b"\0")
        answer = self._wait_for(self.number)
        if "error" in answer:
            raise RuntimeError(f"{method}: {answer['error']['message']}")
        return answer["result"]

    def _write(self, data):
        while data:
            data = data[os.write(self.write_end, data):]

    def _wait_for(self, number, seconds=60):
        end = time.monotonic() + seconds
        while number not in self.answers:
            self._read(end)
        return self.answers.pop(number)

    def _read(self, end):
        if not select.select([self.read_end], [], [], max(0, end - time.monotonic()))[0]:
            raise TimeoutError("the browser does not answer")
        data = os.read(self.read_end, 1 << 20)
        if not data:
            raise RuntimeError("the browser has gone")
        *texts, self.rest = (self.rest + data).split(b"\0")
        for text in texts:
            self._take(json.loads(text))

    def _take(self, message):
        parameters = message.get("params", {})
        if "id" in message:
            self.answers[message["id"]] = message
        elif message["method"] == "Runtime.consoleAPICalled":
            self.messages.append(" ".join(str(a.get("value", a.get("description"))) for a in parameters["args"]))
        elif message["method"] == "Runtime.exceptionThrown":
            details = parameters["exceptionDetails"]
            self.messages.append(details.get("exception", {}).get("description", details["text"]))
        elif message["method"] == "Log.entryAdded":
            self.messages.append(parameters["entry"]["text"])
        elif message["method"] == "Network.requestWillBeSent":
            self.requests.append(parameters["request"]["url"])
        elif message["method"] == "Page.loadEventFired":
            self.loaded = True
        elif message["method"] == "Page.javascriptDialogOpening":
            self.messages.append(f"dialog: {parameters['message']}")

    def _navigate(self, url):
        self.loaded = False
        self.call("Page.navigate", url=url)
        end = time.monotonic() + 60
        while not self.loaded:
            self._read(end)

    def open(self, path, fragment=""):
        """Loads a file anew and waits until it is drawn; the seconds that took."""
        self._navigate("about:blank")
        self.messages.clear()
        self.requests.clear()
        begin = time.monotonic()
        self._navigate(pathlib.Path(path).resolve().as_uri() + fragment)
        self.settle()
        return time.monotonic() - begin

    def settle(self):
        """Until what was asked for the next frames is drawn."""
        self.evaluate("new Promise(done => requestAnimationFrame(() => requestAnimationFrame(() => setTimeout(done))))")

    def evaluate(self, script):
        result = self.call("Runtime.evaluate", expression=script, awaitPromise=True, returnByValue=True)
        if "exceptionDetails" in result:
            raise RuntimeError(result["exceptionDetails"].get("exception", {}).get("description", script))
        return result["result"].get("value")

    def resize(self, width, height, is_phone=False):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1,
                  mobile=is_phone)

    def media(self, scheme="light", medium=""):
        self.call("Emulation.setEmulatedMedia", media=medium,
                  features=[{"name": "prefers-color-scheme", "value": scheme}])

    def box(self, selector):
        """Left, top, width and height of an element in the window, scrolled into sight before."""
        return self.evaluate(f"(e => (e.scrollIntoView({{block: 'center'}}), (r => [r.x, r.y, r.width, r.height])"
                             f"(e.getBoundingClientRect())))(document.querySelector({json.dumps(selector)}))")

    def mouse(self, kind, x, y, **more):
        self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, **more)

    def click(self, selector):
        left, top, width, height = self.box(selector)
        self.click_at(left + width / 2, top + height / 2)

    def click_at(self, x, y):
        for kind in ("mouseMoved", "mousePressed", "mouseReleased"):
            self.mouse(kind, x, y, **({} if kind == "mouseMoved" else {"button": "left", "clickCount": 1}))
        self.settle()

    def drag(self, x, y, to_x, to_y):
        self.mouse("mouseMoved", x, y)
        self.mouse("mousePressed", x, y, button="left", clickCount=1)
        for i in range(1, 6):
            self.mouse("mouseMoved", x + (to_x - x) * i / 5, y + (to_y - y) * i / 5, button="left", buttons=1)
        self.mouse("mouseReleased", to_x, to_y, button="left", clickCount=1)
        self.settle()

    def wheel(self, x, y, amount, ctrl=False):
        self.mouse("mouseWheel", x, y, deltaX=0, deltaY=amount, modifiers=2 if ctrl else 0)
        self.settle()

    def press(self, key):
        text, code = KEYS.get(key, (key, ord(key[0].upper())))
        for kind in ("keyDown", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=kind, key=key, windowsVirtualKeyCode=code,
                      **({"text": text} if text and kind == "keyDown" else {}))
        self.settle()

    def touch(self, selector, fingers, step):
        """Fingers at these distances across from an element's middle move, each by so much nine times."""
        left, top, width, height = self.box(selector)
        self.settle()
        for i in range(10):
            points = [{"x": left + width / 2 + at + i * dx, "y": top + height / 2 + i * dy, "id": n}
                      for n, (at, (dx, dy)) in enumerate(zip(fingers, step))]
            self.call("Input.dispatchTouchEvent", type="touchMove" if i else "touchStart", touchPoints=points)
        self.call("Input.dispatchTouchEvent", type="touchEnd", touchPoints=[])
        self.settle()

    def screenshot(self, path, whole=False):
        data = self.call("Page.captureScreenshot", format="png", captureBeyondViewport=whole)["data"]
        pathlib.Path(path).write_bytes(base64.b64decode(data))

    def pdf(self, path):
        data = self.call("Page.printToPDF", printBackground=False, paperWidth=8.27, paperHeight=11.69)["data"]
        pathlib.Path(path).write_bytes(base64.b64decode(data))
