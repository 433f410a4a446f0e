// Probes in scripts: what FOUND makes of them in front of a scripted BMC and a built SMBIOS table.
#pragma once

#include "platform/smbios.h"
#include "tests/cfg/script_test.h"
#include "tests/support/scripted_ipmi.h"
#include "tests/support/smbios_builder.h"

namespace varnok::testing {

class ProbeScript : public ScriptTest {
 protected:
  ProbeScript() { Discard(SmbiosInitialize()); }
  ~ProbeScript() override {
    machine.smbiosEntryPoint = nullptr;
    Discard(SmbiosInitialize());
  }

  void Install(SmbiosBuilder& table) {
    table.Install(machine);
    Discard(SmbiosInitialize());
  }

  /// The answer as FOUND's tags tell it: "yes" or "no"; else the status that stopped the script, with the
  /// message behind it when there is one.
  std::string Ask(const std::string& probe) {
    Status status = Run("PROBE " + probe + "\nFOUND YES NO\n");
    bool isYes = parser.IsTagSet("YES"), isNo = parser.IsTagSet("NO");
    if (status == kSuccess) return isYes == isNo ? "neither or both" : isYes ? "yes" : "no";
    EXPECT_FALSE(isYes || isNo) << "a failed query must not change a tag";
    return Format("%X", status) + (Message().empty() ? "" : " " + Message());
  }
  /// Expects the same answer of each probe of a list ("a; b; c").
  void ExpectAnswers(const std::string& probes, const std::string& answer) {
    for (const std::string& probe : Split(probes)) EXPECT_EQ(Ask(probe), answer) << probe;
  }
};

}  // namespace varnok::testing
