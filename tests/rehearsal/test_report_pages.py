"""A rehearsal's page in a headless Chromium, its JUnit in an XML parser: both say what the JSON says.

One report is made of hostile texts, one is big: 4,096 roads, 10,000 faults.
"""
import json
import os
import pathlib
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree

from browser import Browser

ROOT = pathlib.Path(__file__).resolve().parents[2]
HARMLESS = {"rerun helps", "old board", "wanted board"}

# What reaches past the page's edge or is cut off inside a cell, with everything that folds unfolded.
OVERFLOWS = """(() => {
  document.querySelectorAll('details').forEach(fold => fold.open = true);
  const wide = [...document.querySelectorAll('body *')].filter(each => {
    const box = each.getBoundingClientRect();
    return box.right > document.documentElement.clientWidth + 1 || box.left < -1 ||
           (/^(TD|TH|P|LI|H1|H2|CODE)$/.test(each.tagName) && each.scrollWidth > each.clientWidth + 1 && each.clientWidth > 0);
  });
  return wide.slice(0, 5).map(each => each.outerHTML.slice(0, 200));
})()"""
# What a page that only tells something does not have.
FOREIGN = """[...document.querySelectorAll('*')].filter(each =>
  /^(script|img|iframe|link|object|base|form|input)$/i.test(each.tagName) ||
  [...each.attributes].some(attribute => /^on|^style$/.test(attribute.name) || /^(https?|javascript):/.test(attribute.value))
).map(each => each.outerHTML.slice(0, 200))"""
SAID = """(() => {
  const texts = (selector, from = document) => [...from.querySelectorAll(selector)].map(each => each.textContent);
  return {
    title: document.title, findings: texts('.findings a'), details: texts('.findings span'),
    unreached: texts('.unreached th'), script: texts('.script code'),
    boards: texts('article h3'), changes: texts('.changes tbody td:last-child').length,
    changedBytes: [...document.querySelectorAll('.device')].map(each => texts('details:last-of-type > summary', each)[0]),
    bundled: texts('.bundle b').map(each => +each.split(' ')[0].replaceAll(',', '')).reduce((sum, each) => sum + each, 0),
    roads: [...document.querySelectorAll('.leaf[id]')].map(each => [each.id, /status (\\d+)/.exec(each.textContent)?.[1] ?? null]),
    results: [...document.querySelectorAll('.results tbody tr')].map(row => [texts('th', row)[0].trim(), texts('.number', row)[0]]),
    bad: texts('.heat .bad').map(each => +each.replaceAll(',', '')).reduce((sum, each) => sum + each, 0),
    dead: [...document.querySelectorAll('a[href^="#"]')].filter(
        link => !document.getElementById(link.getAttribute('href').slice(1)) && !/#(road|board|line)-/.test(link.href)).length,
  };
})()"""


def numbered(count, noun):
    return f"{count:,} {noun}{'' if count == 1 else 's'}"


def result_of(fault):
    """What a disturbed run came to, the gravest first."""
    is_wrong_success = (fault["exitStatus"] == 0 and not fault["isEndless"] and
                        (fault["board"] != "wanted" or fault["output"] == "other"))
    if fault["hasCrashed"]:
        return "crashed"
    if is_wrong_success and not fault["isTold"]:
        return "false success"
    if not fault["canBeShown"]:
        return "cannot be shown"
    if not fault["rerunReaches"] and not fault["restoreReaches"]:
        return "no way back"
    if is_wrong_success:
        return "told success"
    if not fault["rerunReaches"]:
        return "stuck"
    return "endless" if fault["isEndless"] else {"wanted": "wanted board", "old": "old board"}.get(fault["board"], "rerun helps")


class ReportTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)

    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))

    def check(self):
        folder = self.folder
        report = json.loads((folder / "report.json").read_text())
        page = folder / "report.html"
        self.check_foreign(page, self.browser.open(page, 1280, "light"))
        self.check_page(report)
        self.check_widths(page)
        for fault in report.get("faults", []):
            self.assertEqual(fault["result"], result_of(fault), fault)
        self.check_junit(report, folder / "report.xml")

    def check_foreign(self, page, events):
        asked = [event["params"]["request"]["url"] for event in events
                 if event.get("method") == "Network.requestWillBeSent"]
        self.assertEqual(asked, [page.as_uri()])
        self.assertEqual([event for event in events if event.get("method") == "Log.entryAdded"], [])
        self.assertEqual(self.browser.evaluate(FOREIGN), [])

    def check_widths(self, page):
        """The page that is open, and as a telephone shows it."""
        self.assertEqual(self.browser.evaluate(OVERFLOWS), [], "wide")
        self.browser.open(page, 390, "dark")
        self.assertEqual(self.browser.evaluate(OVERFLOWS), [], "narrow")

    def check_page(self, report):
        said = self.browser.evaluate(SAID)
        self.assertNotEqual(said["title"], "taken")
        self.assertEqual(said["findings"], [finding["title"] for finding in report["findings"]])
        self.assertEqual(said["details"], [finding["detail"] for finding in report["findings"]])
        self.assertEqual([int(line) for line in said["unreached"]], report["unreachedLines"])
        self.assertEqual(len(said["script"]), len(report["script"]))
        shown = report["boards"][:24]
        self.assertEqual(len(said["boards"]), len(shown))
        self.assertEqual(said["changes"], sum(len(board["differences"]) for board in shown))
        self.assertEqual(said["changedBytes"], [numbered(device["changedBytes"], "changed byte")
                                                for board in shown for device in board["devices"]])
        self.assertEqual(len(said["roads"]), len(report["roads"]) - said["bundled"])
        for name, status in said["roads"]:
            road = report["roads"][int(name.removeprefix("road-")) - 1]
            self.assertEqual(status, str(road["exitStatus"]) if road["joins"] is None else None, name)
        self.assertEqual(said["results"], [[name, f"{count:,}"] for name, count in report.get("faultResults", {}).items()])
        self.assertEqual(said["bad"], sum(fault["result"] not in HARMLESS for fault in report.get("faults", [])))
        self.assertEqual(said["dead"], 0)

    def check_junit(self, report, path):
        suites = {suite.get("name"): suite for suite in xml.etree.ElementTree.parse(path).getroot()}
        grave = sum(fault["result"] not in HARMLESS for fault in report.get("faults", []))
        for name, failures in [("roads", len(report["brokenRoads"])), ("faults", grave)]:
            if name not in report:
                continue
            suite, count = suites[name], len(report[name])
            self.assertEqual((suite.get("tests"), suite.get("failures")), (str(count), str(failures)))
            self.assertEqual((len(suite.findall("testcase")), len(suite.findall("testcase/failure"))), (count, failures))

    def test_fleet(self):
        program, fleet = os.environ["VARNOK_BOARD_PROGRAM"], self.folder / "fleet"
        for name in ("<script>document.title='taken'<", "small", "a-name-without-a-blank-" * 8):
            subprocess.run([program, "new", fleet / name], check=True, capture_output=True)
        board = fleet / "small/board.json"
        board.write_text(board.read_text().replace('"capacity": 32768', '"capacity": 128'))
        done = subprocess.run([program, "rehearse", ROOT / "samples/MASTER.CFG", "--boards", fleet, "--all-roads", "--json",
                               "--html", self.folder / "fleet.html", "--junit", self.folder / "fleet.xml"],
                              check=False, capture_output=True)
        self.assertEqual(done.returncode, 1, done.stderr.decode())
        report, page = json.loads(done.stdout), self.folder / "fleet.html"
        self.check_foreign(page, self.browser.open(page, 1280))
        said = self.browser.evaluate(SAID)
        self.assertEqual(said["details"], [finding["detail"] for finding in report["findings"]])
        self.assertEqual(len(said["boards"]), len(report["groups"]))
        self.assertEqual(said["dead"], 0)
        self.check_widths(page)
        cases = {case.get("name"): case for case in xml.etree.ElementTree.parse(self.folder / "fleet.xml").iter("testcase")}
        self.assertEqual([name for name, case in cases.items() if len(case)], ["small"])
        self.assertEqual(list(cases), [each["name"] for each in report["boards"]])

    def test_made_reports(self):
        for kind in ("hostile", "big"):
            with self.subTest(kind):
                subprocess.run([os.environ["VARNOK_MADE_REPORTS"], kind, self.folder], check=True)
                self.check()

    def test_sample_package(self):
        program, board = os.environ["VARNOK_BOARD_PROGRAM"], self.folder / "board"
        subprocess.run([program, "new", board], check=True, capture_output=True)
        done = subprocess.run(
            [program, "rehearse", ROOT / "samples/MASTER.CFG", "--board", board, "--all-roads", "--every-fault", "--step", "97", "--json",
             "--html", self.folder / "report.html", "--junit", self.folder / "report.xml"],
            check=False, capture_output=True)
        self.assertIn(done.returncode, (0, 1), done.stderr.decode())
        (self.folder / "report.json").write_bytes(done.stdout)
        self.check()


if __name__ == "__main__":
    unittest.main()
