#include <gtest/gtest.h>

#include "platform/ipmi.h"
#include "tests/support/scripted_ipmi.h"

namespace varnok {
namespace {

using namespace testing;

enum class Driver { Missing, InstallsNothing, Works };
enum class Fault { None, OtherRevision, GoneWhenRead, RefusesOpen, NoHandleBuffer, NoWorkBuffer };

/// A firmware whose handle data base may change between the two questions, or whose handle refuse the
/// protocol.
struct FaultyFirmware : TestFirmware {
  Fault fault = Fault::None;
  int locates = 0;

  Status LocateHandles(const Guid& guid, std::size_t& bytes, Handle* handles) override {
    if (++locates == 2 && fault == Fault::GoneWhenRead) return uefi_status::kNotFound;
    return TestFirmware::LocateHandles(guid, bytes, handles);
  }
  Status OpenProtocol(Handle handle, const Guid& guid, void*& interface) override {
    if (fault == Fault::RefusesOpen) return uefi_status::kUnsupported;
    return TestFirmware::OpenProtocol(handle, guid, interface);
  }
};

TEST(IpmiLoad, InstalledProtocolIsTakenOrTheDriverStarted) {
  struct Case {
    const char* name;
    bool isInstalled;
    Driver driver;
    Fault fault;
    IpmiResult result;
    std::size_t startedDrivers, keptBlocks;
  } const cases[] = {
      {"installed", true, Driver::Works, Fault::None, ipmi_result::kSuccess, 0, 2},
      {"by the driver", false, Driver::Works, Fault::None, ipmi_result::kSuccess, 1, 2},
      {"no driver", false, Driver::Missing, Fault::None, ipmi_result::kDriverNotStarted, 1, 0},
      {"idle driver", false, Driver::InstallsNothing, Fault::None, ipmi_result::kNotInstalled, 1, 0},
      {"revision", true, Driver::Works, Fault::OtherRevision, ipmi_result::kNotInstalled, 1, 0},
      {"gone when read", true, Driver::Works, Fault::GoneWhenRead, ipmi_result::kSuccess, 1, 2},
      {"not opened", true, Driver::Works, Fault::RefusesOpen, ipmi_result::kNotInstalled, 1, 1},
      {"first block", true, Driver::Works, Fault::NoHandleBuffer, ipmi_result::kOutOfMemory, 0, 0},
      {"second block", true, Driver::Works, Fault::NoWorkBuffer, ipmi_result::kOutOfMemory, 0, 1},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.name);
    FaultyFirmware machine;
    ScriptedIpmi bmc(machine, /*isLoaded=*/false);
    if (one.driver != Driver::Missing)
      machine.driver = one.driver == Driver::Works ? &bmc.protocol() : nullptr;
    if (!one.isInstalled) machine.protocol = nullptr;
    if (one.fault == Fault::OtherRevision) bmc.protocol().revision = 0x10001;
    machine.fault = one.fault;
    machine.FailPoolAllocation(one.fault == Fault::NoHandleBuffer ? 1
                               : one.fault == Fault::NoWorkBuffer ? 2
                                                                  : 0);
    EXPECT_EQ(IpmiLoadProtocol(), one.result);
    EXPECT_EQ(machine.startedDrivers, std::vector<std::u16string>(one.startedDrivers, u".\\ipmi.efi"));
    EXPECT_EQ(machine.poolBlocks, one.keptBlocks);
    ForgetProgramState();
    EXPECT_EQ(machine.poolBlocks, 0u);
  }
}

TEST(IpmiLoad, RequestBeforeLoadingFails) {
  TestFirmware machine;
  ForgetProgramState();
  IpmiMessage response;
  EXPECT_EQ(IpmiTransaction({.targetAddress = kBmcAddress}, response), ipmi_result::kNotInstalled);
}

}  // namespace
}  // namespace varnok
