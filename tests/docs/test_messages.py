"""Every message that a technician can meet is on the technician's page.

Messages are the texts of the sources that are neither names and labels of a display nor words of the trace log. What
is filled in stands on the page as three points.
"""
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = ROOT / "docs/technician.md"
SOURCES = ["app/**/*.*", "cfg/*.*", "fru/*.*", "sdr/*.*", "platform/*.*", "firmware/uefi/*.*", "boards/snapshot/*.cpp",
           "programs/snapshot/*.cpp", "programs/start/*.cpp", "driver/entry.cpp", "firmware/host/host_firmware.cpp",
           "firmware/host/interruption.cpp", "firmware/host/linux_machine.cpp", "firmware/host/write_account.cpp"]
# Files of labels, of forms of files, of the usage.
LABELS = re.compile(r"sdr/(decode_tables|record_rows|record_writer|record_lists\.h|file_keys|output|data_set)|_display\.cpp"
                    r"|info_area_rows|app/usage|cfg/fru_tables|fru/fru_output|boards/snapshot/save|\.h\.in$")
# Calls whose texts go into the trace log, or are sought in what is read.
SILENT = {"Trace", "Fail", "TraceFailure", "scope", "trace", "IsReady", "FailStep", "SdrRequestFailure", "TraceHexDump",
          "FailRow", "GetInfoArea", "Step", "find", "find_first_of", "find_first_not_of", "find_last_of", "CutAt"}
# What is no message, by file: words of the trace log that stand apart, parts of texts, names that messages
# take.
APART = {
    "boards/snapshot/restore.cpp": r"SDR repository: its",
    "fru/fru.cpp": r"ID\(",
    "programs/snapshot/main.cpp": r"SNAPSHOT \[FOLDER\]",
    "programs/start/efi_station.cpp": r"SHELLX64",
    "programs/start/menu.cpp": r"SNAPSHOT /restore",
    "programs/start/menu_file.cpp": r"ENTRY \"|TITLE \"",
    "sdr/record_fields.cpp": r"SDR Type|Bad Record",
    "fru/fru_file.cpp": r"(Load f|IPMI v|NVS|Device|Common H|Internal U|Chassis I|Board I|Product I|Multi R|FRU T|Data l|_)",
}
POINTS = "..."


def plain(text):
    """A text with what is filled in as points, in one line."""
    text = text.replace('\\"', '"').replace("\\r", "").replace("\\n", " ").replace("\\t", " ").replace("%%", "%")
    text = re.sub(r"%[-#0-9.]*l*[a-zA-Z]", POINTS, text)
    return re.sub(r"\s+", " ", text).strip()


def call_round(code, at):
    """The name of the innermost call round a place, in code whose texts are blanked."""
    depth = 0
    for place in range(at - 1, -1, -1):
        if code[place] in ")}]":
            depth += 1
        elif code[place] in "({[":
            if not depth and code[place] == "(":
                return re.search(r"(\w*)\s*$", code[:place])[1]
            depth = max(0, depth - 1)
        elif code[place] == ";" and not depth:
            break
    return ""


def messages_of(path):
    code = re.sub(r"(^|\s)//[^\n]*", r"\1", path.read_text())
    blanked = re.sub(r'"(?:\\.|[^"\\\n])*"', lambda text: '"' + "_" * (len(text[0]) - 2) + '"', code)
    blanked = re.sub(r"'(?:\\.|[^'\\\n])'", lambda text: "_" * len(text[0]), blanked)
    for found in re.finditer(r'(?:u?"(?:\\.|[^"\\\n])*"\s*)+', code):
        text = plain("".join(re.findall(r'"((?:\\.|[^"\\\n])*)"', found[0])))
        if " " in text and re.search("[A-Za-z]{3}", text) and call_round(blanked, found.start()) not in SILENT:
            yield text


class Messages(unittest.TestCase):
    def test_every_message_is_on_the_page(self):
        shown = "\n".join(plain(span) for span in re.findall(r"`([^`]+)`", PAGE.read_text()))
        missing, count = set(), 0
        for header in ("app/app_status.h", "firmware/host/host_firmware.h"):
            for status in re.findall(r"constexpr int k\w+ = (\d+);", (ROOT / header).read_text()):
                if f"**{status}**" not in PAGE.read_text() and status != "255":
                    missing.add(f"{header}: status {status}")
        for pattern in SOURCES:
            for path in ROOT.glob(pattern):
                name = str(path.relative_to(ROOT))
                if path.is_dir() or LABELS.search(name):
                    continue
                for text in messages_of(path):
                    count += 1
                    if text not in shown and not re.match(APART.get(name, "$"), text):
                        missing.add(f"{name}: {text}")
        self.assertGreater(count, 250, "the sources are not where they were")
        self.assertFalse(missing, "not on the page:\n" + "\n".join(sorted(missing)))


if __name__ == "__main__":
    unittest.main()
