"""What is run: boards, load files and scripts of known sizes, and the jobs over them."""

import json
import struct
from pathlib import Path

CAPACITY = 1 << 20
SENSOR_BYTES = 64


def sensor_record(number: int) -> bytes:
    """A full sensor record (IPMI v2.0, section 43.1) with a name of 16 bytes."""
    name = b"Sensor %09d" % number
    body = bytes([0x20, 0, number & 0xFF, 0x07, 1, 0x7F, 0x68, 1, 1]).ljust(42, b"\0")
    body += bytes([0xC0 | len(name)]) + name
    return struct.pack("<HBBB", number & 0xFFFF, 0x51, 1, len(body)) + body


def oem_record(number: int) -> bytes:
    """The shortest record: an OEM record of a number."""
    return struct.pack("<HBBB", number & 0xFFFF, 0x51, 0xC0, 5) + bytes([1, 2, 3]) + struct.pack("<H", number & 0xFFFF)


def sdr_file(records: list[bytes]) -> str:
    """The load file of these records."""
    text = ("_LF_NAME\n_LF_VERSION\n_LF_FMT_VER\n_IPMI_VERSION\n"
            "_SDR (\n_START_ADDR\n_DATA_LEN\n_NVS_TYPE\n_DEV_BUS\n_DEV_ADDRESS\n")
    for record in records:
        text += f"_SDR_TYPE {record[3]:02X}\n_REC_LEN {len(record):02X}\n"
        text += "".join(record[i:i + 16].hex(" ") + "\n" for i in range(0, len(record), 16))
    return text + ")\n"


def fru_image(records: int) -> bytes:
    """A device with `records` OEM records of 200 bytes and nothing else."""
    image = bytes([1, 0, 0, 0, 0, 1, 0, 0xFE])
    for number in range(records):
        data = bytes((number + i) & 0xFF for i in range(200))
        head = bytes([0xC0, 0x82 if number == records - 1 else 0x02, len(data), -sum(data) & 0xFF])
        image += head + bytes([-sum(head) & 0xFF]) + data
    return image


def make_board(folder: Path, smbios: bytes, records: list[bytes] = (), fru: bytes = b"\xFF" * 1024) -> Path:
    folder.mkdir(parents=True)
    for name, content in [("smbios.bin", smbios), ("sdr.bin", b"".join(records)), ("fru.bin", fru)]:
        (folder / name).write_bytes(content)
    (folder / "board.json").write_text(json.dumps({"bmc": {
        "sdrs": {"capacity": CAPACITY}, "frus": [{"id": 0, "file": "fru.bin", "size": len(fru)}]}}))
    return folder


def flat_script(lines: int) -> str:
    return "".join(f'SET TAG{i % 50}\n' if i % 2 else f'DISPLAY "line {i}"\n' for i in range(lines))


def nested_script(blocks: int) -> str:
    return "IFSET NONE\n" * blocks + "ENDIF\n" * blocks


def tagged_script(tags: int) -> str:
    return "".join(f"SET TAG{i}\n" for i in range(tags)) + "".join(f"IFSET TAG{i}\nENDIF\n" for i in range(tags))
