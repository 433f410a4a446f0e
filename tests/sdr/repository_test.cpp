// Requests to the BMC's SDR repository, to the byte, and what every kind of bad answer does.
#include <gtest/gtest.h>

#include "platform/ipmi.h"
#include "sdr/read_system.h"
#include "tests/sdr/records.h"
#include "tests/support/expectations.h"
#include "tests/support/scripted_ipmi.h"

namespace varnok::testing {
namespace {

using namespace SdrReadSystem;

/// One operation: its status, and what it delivered.
std::pair<Status, std::string> Perform(const std::string& operation, TestFirmware& machine) {
  if (operation == "info") {
    SdrRepositoryInfo info{.extra = 7};
    const Status status = LoadSdrProperties(info);
    return {status, Format("version %02X, %d records, %X free, support %02X, %d, added %X, erased %X",
                           info.version, info.recordCount, info.freeSpace, info.support, info.extra,
                           info.lastAddition, info.lastErase)};
  }
  if (operation == "read") {
    std::array<std::uint8_t, kRecordCapacity> record{};
    std::uint16_t id = 0x0102;
    const Status status = ReadRecFromBMC(record, id);
    std::string shown = Format("%04X behind", id);
    for (std::size_t end = record.size(), i = 0; i < end; ++i) {
      while (end > i && record[end - 1] == 0) --end;
      if (i < end) shown += Format(" %02X", record[i]);
    }
    return {status, shown};
  }
  if (operation == "walk") {
    SdrTypeList lists;
    const Status status = LoadSdrRecordsToList(lists);
    return {status, Format("%d records", lists[3].size())};
  }
  if (operation != "clear") return {SendRecordToBMC(BytesOf(operation.substr(6))), "sending"};
  const Status status = ClearSDRRepository();
  EXPECT_EQ(machine.console, status == kSuccess ? "\n\nClearing SDR repository\n\n" : machine.console);
  return {status, Format("%d s", machine.waitedMicroseconds / 1'000'000)};
}

TEST(Repository, OperationsAreWireAndOutcome) {
  for (const auto& [name, text] : Expectations("sdr/repository.txt")) {
    SCOPED_TRACE(name);
    const WireStep step = WireSteps(text).front();
    TestFirmware machine;
    ScriptedIpmi bmc(machine);
    bmc.Play(step.wire);
    auto [status, shown] = Perform(step.operation, machine);
    const std::vector<std::string> trace = machine.TraceLines();
    std::string summary = Format("%X %s\n", status.value & 0xFFFFF, shown);
    if (!trace.empty()) summary += Format("%s, record %04X\n", trace.back(), TheSdr().LastFailingRecordId);
    EXPECT_EQ(summary, step.outcome);
  }
}

}  // namespace
}  // namespace varnok::testing
