// Text of SDR files for tests.
#pragma once

#include <string>

namespace varnok::testing {

/// The keys in front of the records.
inline const std::string kSdrFileHeader =
    "// Board of a test\n"
    "_LF_NAME      'BOARD.SDR'\n"
    "_LF_VERSION   '1.00'\n"
    "_LF_FMT_VER   '2.00'\n"
    "_IPMI_VERSION '2.0'\n"
    "_SDR (\n"
    "_START_ADDR  0000\n"
    "_DATA_LEN    0000\n"
    "_NVS_TYPE    IMBDEVICE\n"
    "_DEV_BUS     FF\n"
    "_DEV_ADDRESS 20\n";

inline const std::string kSdrFileEnd = ")\n";

/// An association record, its lines in three ways of writing bytes.
inline const std::string kAssociationLines =
    "_SDR_TYPE 08\n"
    "_REC_LEN 0010\n"
    "   12 00 51 08 0B  // header\n"
    "\n"
    "   17018003\n"
    "   1 3 2 8 1 8 10\n";

/// A FRU locator named "Riser" with a tag.
inline const std::string kLocatorLines =
    "_SDR_TYPE 11\n"
    "_SDR_TAG 'RISER'\n"
    "_REC_LEN 0015\n"
    "   13 00 51 11 10\n"
    "   20 02 80 00 00 10 00 11 01 00 C5\n"
    "   'Riser' // name\n";

inline std::string SdrFile(const std::string& records) {
  return kSdrFileHeader + records + kSdrFileEnd;
}

}  // namespace varnok::testing
