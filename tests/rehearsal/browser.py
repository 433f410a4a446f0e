"""A headless Chromium, spoken to over its DevTools protocol through two pipes: no port, no driver program."""
import base64
import json
import os
import subprocess
import tempfile


class Browser:
    def __init__(self):
        self.folder = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        commands, self.send_end = os.pipe()
        self.read_end, answers = os.pipe()

        def install_pipes():  # Chromium reads from 3 and writes to 4
            for number, end in ((10, commands), (11, answers)):
                os.dup2(end, number)
            os.dup2(10, 3)
            os.dup2(11, 4)

        self.process = subprocess.Popen(
            ["chromium", "--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
             "--no-first-run", "--disable-extensions", "--remote-debugging-pipe",
             f"--user-data-dir={self.folder.name}", "about:blank"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            preexec_fn=install_pipes, close_fds=False)
        os.close(commands)
        os.close(answers)
        self.received, self.number, self.session, self.events = b"", 0, None, []
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Network", "Log"):
            self.call(f"{domain}.enable")

    def close(self):
        self.process.kill()
        self.process.wait()
        os.close(self.send_end)
        os.close(self.read_end)
        self.folder.cleanup()

    def receive(self):
        while b"\0" not in self.received:
            part = os.read(self.read_end, 1 << 20)
            if not part:
                raise EOFError("Chromium has ended")
            self.received += part
        message, _, self.received = self.received.partition(b"\0")
        return json.loads(message)

    def call(self, method, **parameters):
        self.number += 1
        message = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        os.write(self.send_end, json.dumps(message).encode() + b"\0")
        while (answer := self.receive()).get("id") != self.number:
            self.events.append(answer)
        if "error" in answer:
            raise RuntimeError(f"{method}: {answer['error']}")
        return answer["result"]

    def open(self, path, width, scheme="light", javascript=True):
        """Opens a file; returns the events up to its end."""
        self.call("Emulation.setScriptExecutionDisabled", value=not javascript)
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=800, deviceScaleFactor=1, mobile=width < 600)
        self.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])
        self.events.clear()
        self.call("Page.navigate", url=path.as_uri())
        while not any(event.get("method") == "Page.loadEventFired" for event in self.events):
            self.events.append(self.receive())
        return self.events

    def evaluate(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True)
        if "exceptionDetails" in result:
            raise RuntimeError(result["exceptionDetails"])
        return result["result"].get("value")

    def screenshot(self, path, top=0, height=800):
        width = self.evaluate("innerWidth")
        shot = self.call("Page.captureScreenshot", captureBeyondViewport=True,
                         clip={"x": 0, "y": top, "width": width, "height": height, "scale": 1})
        path.write_bytes(base64.b64decode(shot["data"]))
