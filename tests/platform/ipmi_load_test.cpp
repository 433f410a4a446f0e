#include <gtest/gtest.h>

#include "platform/ipmi.h"
#include "tests/support/scripted_ipmi.h"

namespace varnok {
namespace {

using testing::ScriptedIpmi;
using testing::TestFirmware;

/// A machine whose BMC is never asked; each test says how its protocol is found.
struct IpmiLoad : ::testing::Test {
  TestFirmware machine;
  ScriptedIpmi bmc{machine, /*isLoaded=*/false};
  std::size_t idleBlocks = machine.poolBlocks;
};

TEST_F(IpmiLoad, InstalledProtocolIsUsedWithoutDriver) {
  EXPECT_EQ(IpmiLoadProtocol(), ipmi_result::kSuccess);
  EXPECT_TRUE(machine.startedDrivers.empty());
  IpmiReset();
  EXPECT_EQ(machine.poolBlocks, idleBlocks);
}

TEST_F(IpmiLoad, MissingProtocolStartsTheDriver) {
  machine.protocol = nullptr;
  machine.driver = &bmc.protocol();
  EXPECT_EQ(IpmiLoadProtocol(), ipmi_result::kSuccess);
  ASSERT_EQ(machine.startedDrivers.size(), 1u);
  EXPECT_EQ(machine.startedDrivers[0], u".\\ipmi.efi");
}

TEST_F(IpmiLoad, MissingDriver) {
  machine.protocol = nullptr;
  EXPECT_EQ(IpmiLoadProtocol(), ipmi_result::kDriverNotStarted);
}

TEST_F(IpmiLoad, DriverThatInstallsNothing) {
  machine.protocol = nullptr;
  machine.driver = nullptr;
  EXPECT_EQ(IpmiLoadProtocol(), ipmi_result::kNotInstalled);
}

TEST_F(IpmiLoad, OtherRevisionIsRefusedAndItsBufferFreed) {
  bmc.protocol().revision = 0x10001;
  machine.driver = &bmc.protocol();
  EXPECT_EQ(IpmiLoadProtocol(), ipmi_result::kNotInstalled);
  EXPECT_EQ(machine.startedDrivers.size(), 1u);
  EXPECT_EQ(machine.poolBlocks, idleBlocks);
}

TEST_F(IpmiLoad, PoolFailuresAreReturnedWithoutTryingTheDriver) {
  for (int allocation : {1, 2}) {
    IpmiReset();
    machine.FailPoolAllocation(allocation);
    EXPECT_EQ(IpmiLoadProtocol(), ipmi_result::kOutOfMemory) << "allocation " << allocation;
  }
  EXPECT_TRUE(machine.startedDrivers.empty());
}

TEST_F(IpmiLoad, RequestBeforeLoadingFails) {
  IpmiMessage request{.targetAddress = kBmcAddress, .netFunction = 6, .command = 1};
  IpmiMessage response;
  EXPECT_EQ(IpmiTransaction(request, response), ipmi_result::kNotInstalled);
}

/// A firmware whose handle data base changes between the two questions, or whose handle refuses the protocol.
struct BrokenHandles : TestFirmware {
  int refusedLocate = 0;  // counted from 1
  bool refusesOpen = false;
  int locates = 0;

  Status LocateHandles(const Guid& guid, std::size_t& bytes, Handle* handles) override {
    if (++locates == refusedLocate) return uefi_status::kNotFound;
    return TestFirmware::LocateHandles(guid, bytes, handles);
  }
  Status OpenProtocol(Handle handle, const Guid& guid, void*& interface) override {
    return refusesOpen ? uefi_status::kUnsupported : TestFirmware::OpenProtocol(handle, guid, interface);
  }
};

TEST(IpmiLoadBroken, HandleGoneAtTheSecondQuestion) {
  BrokenHandles machine;
  ScriptedIpmi bmc(machine, false);
  machine.refusedLocate = 2;
  machine.driver = &bmc.protocol();
  EXPECT_EQ(IpmiLoadProtocol(), ipmi_result::kSuccess) << "the driver's protocol is found by the next try";
  EXPECT_EQ(machine.startedDrivers.size(), 1u);
}

TEST(IpmiLoadBroken, HandleWithoutInterface) {
  BrokenHandles machine;
  ScriptedIpmi bmc(machine, false);
  machine.refusesOpen = true;
  machine.driver = &bmc.protocol();
  EXPECT_EQ(IpmiLoadProtocol(), ipmi_result::kNotInstalled);
}

}  // namespace
}  // namespace varnok
