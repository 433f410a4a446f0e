// FRU images read by freeipmi's ipmi-fru beside ours, field by field. Skips, and says so, where that is not
// installed.
#include <gmock/gmock.h>

#include <cstdio>
#include <fstream>
#include <map>

#include "boards/fru_image.h"
#include "sim/default_board.h"
#include "tests/boards/generated.h"
#include "tests/support/host_files.h"

namespace varnok::testing {
namespace {

using namespace boards;

/// What it calls our fields; those that are missing here it shows in another form.
const std::map<std::string, std::string> kNames = {
    {"Chassis Type", "FRU Chassis Type"},
    {"Chassis Part Number", "FRU Chassis Part Number"},
    {"Chassis Serial Number", "FRU Chassis Serial Number"},
    {"Board Manufacturer", "FRU Board Manufacturer"},
    {"Board Product Name", "FRU Board Product Name"},
    {"Board Serial Number", "FRU Board Serial Number"},
    {"Board Part Number", "FRU Board Part Number"},
    {"Board FRU File ID", "FRU FRU File ID"},
    {"Board Custom Field 1", "FRU Board Custom Info"},
    {"Product Manufacturer", "FRU Product Manufacturer Name"},
    {"Product Name", "FRU Product Name"},
    {"Product Part/Model Number", "FRU Product Part/Model Number"},
    {"Product Version", "FRU Product Version"},
    {"Product Serial Number", "FRU Product Serial Number"},
    {"Product Asset Tag", "FRU Product Asset Tag"},
    {"Product Custom Field 1", "FRU Product Custom Info"},
};

/// "07/13/15 - 14:29:00" as it has our "2015-07-13 14:29".
std::string ItsDate(const std::string& date) {
  return date.substr(5, 2) + "/" + date.substr(8, 2) + "/" + date.substr(2, 2) + " - " + date.substr(11) +
         ":00";
}

std::string ReadingOf(const Bytes& image) {
  TemporaryFolder folder;
  const std::string file = folder.Path() / "image.bin";
  std::ofstream(file, std::ios::binary)
      .write(reinterpret_cast<const char*>(image.data()), static_cast<std::streamsize>(image.size()));
  const std::string output = folder.Path() / "output";
  (void)std::system(("TZ=UTC ipmi-fru --fru-file=" + file + " >" + output + " 2>&1").c_str());
  return ContentOf(output);
}

TEST(SecondReader, IpmiFruReadsTheSameFields) {
  if (std::system("ipmi-fru --version >/dev/null 2>&1") != 0)
    GTEST_SKIP() << "ipmi-fru (Debian: freeipmi-tools) is not installed; no second reader was asked";
  std::vector<Bytes> images;
  for (const sim::DefaultFile& file : sim::DefaultBoardImages())
    if (file.name != "sdr.bin" && file.content[0] == 1) images.push_back(file.content);
  sim::FruLayout layout;
  layout.boardMinutes = 0xAF362C;
  layout.board = {{2, "\x64\xC9\xB2"}, "Board", "S-1", {2, "\x64\xC9"}, "F", "Custom"};
  images.push_back(sim::BuildFruImage(layout, 128));
  int compared = 0;
  for (const Bytes& image : images) {
    const std::string theirs = ReadingOf(image);
    for (const Section& section : DecodeFru(image).sections) {
      for (const Field& field : section.fields) {
        const auto name = kNames.find(field.label);
        const bool isDate = field.label == "Board Mfg Date/Time" && field.value != "not given";
        if (field.value.empty() || (name == kNames.end() && !isDate)) continue;
        const std::string line = isDate ? "FRU Board Manufacturing Date/Time: " + ItsDate(field.value)
                                        : name->second + ": " + field.value;
        EXPECT_THAT(theirs, ::testing::HasSubstr("  " + line + "\n"));
        ++compared;
      }
    }
  }
  EXPECT_GT(compared, 40);
}

}  // namespace
}  // namespace varnok::testing
