// The run modes of the application object.
#include <memory>

#include "app/app_status.h"
#include "app/messages.h"
#include "app/services/console.h"
#include "app/services/format.h"
#include "app/services/text.h"
#include "app/services/text_output.h"
#include "app/services/trace.h"
#include "app/usage.h"
#include "app/varnok.h"
#include "firmware/firmware.h"
#include "fru/fru_data.h"
#include "platform/smbios.h"
#include "sdr/sdr_data.h"
#include "sdr/sdr_status.h"

namespace varnok {

int CVarnok::Execute() {
  TraceScope scope("CVarnok::Execute");
  switch (mode_) {
    case RunMode::DisplayFru:
    case RunMode::DisplaySdr:
    case RunMode::DisplaySmbios:
      return DisplaySystemInformation();
    case RunMode::LoadFruFile:
      return FruExecutive();
    case RunMode::LoadSdrFile:
      return SdrExecutive();
    case RunMode::RunConfigFile:
      return CfgFileExecutive();
    case RunMode::ShowHelp:
      return DisplayUsage();
    case RunMode::NoMode:
      break;
  }
  return Fail("CVarnok::Execute", "Unknown mode", app_status::kUnknown);
}

int CVarnok::DisplaySystemInformation() {
  TraceScope scope("CVarnok::DisplaySystemInformation");
  switch (mode_) {
    case RunMode::DisplayFru:
      return DisplayFru();
    case RunMode::DisplaySdr:
      return DisplaySdr();
    case RunMode::DisplaySmbios:
      return DisplaySmbios();
    default:
      return Fail("CVarnok::DisplaySystemInformation", "Unknown mode", app_status::kUnknown);
  }
}

int CVarnok::DisplayFru() {
  std::u16string outputFile;
  if (int status = UseTemporaryFile(u"FRU.TMP", outputFile); status != app_status::kSuccess) return status;
  if (!outputFile.empty()) (void)FruData::SetOutputFile(Narrow(outputFile));
  (void)FruData::SetPagingMode(IsPagingOn());
  if (FruData::DisplaySelectedFru() == kSuccess) return app_status::kSuccess;
  return FailStep("CVarnok::DisplaySystemInformation - DisplaySelectedFru failed", app_status::kLoad,
                  FruData::GetLastErrorMessage);
}

int CVarnok::DisplaySdr() {
  std::u16string outputFile;
  if (int status = UseTemporaryFile(u"SDR.TMP", outputFile); status != app_status::kSuccess) return status;
  if (!outputFile.empty()) (void)SdrData::SetOutputFile(Narrow(outputFile));
  (void)SdrData::SetPaging(IsPagingOn());
  if (SdrData::DisplaySdrArea() == kSuccess) return app_status::kSuccess;
  return FailStep("CVarnok::DisplaySystemInformation - DisplaySdrArea failed", app_status::kLoad,
                  SdrData::GetLastErrorMessage);
}

int CVarnok::DisplaySmbios() {
  std::u16string outputFile;
  if (int status = UseTemporaryFile(u"SMB.TMP", outputFile); status != app_status::kSuccess) return status;
  if (!outputFile.empty()) SmbiosSetOutputFile(outputFile);
  if (SmbiosDisplay() == kSuccess) return app_status::kSuccess;
  return FailStep("CVarnok::DisplaySystemInformation - SmbiosDisplay failed", app_status::kSmbios,
                  SmbiosGetLastErrorMessage);
}

int CVarnok::FruExecutive() {
  TraceScope scope("CVarnok::FruExecutive");
  std::u16string outputFile;
  if (int status = UseTemporaryFile(u"FRU.TMP", outputFile); status != app_status::kSuccess) return status;
  if (!outputFile.empty()) (void)FruData::SetOutputFile(Narrow(outputFile));
  if (FruData::LoadConfigurationFromFile(Narrow(fileName_)) != kSuccess)
    return FailStep("CVarnok::FruExecutive - LoadConfigurationFromFile failed", app_status::kLoad,
                    FruData::GetLastErrorMessage);
  constexpr bool kForce = true;
  if (FruData::CommitConfigurationToSystem(kForce) != kSuccess) {
    // Kept: the manager's message is left alone, so that the status text shows.
    return Fail("CVarnok::FruExecutive", "CommitConfigurationToSystem failed", app_status::kUpdate);
  }
  PrintText(kResetRequired);
  return app_status::kSuccess;
}

int CVarnok::SdrExecutive() {
  Trace("CVarnok::SdrExecutive [ENTRY]", 3);
  std::u16string outputFile;
  if (int status = UseTemporaryFile(u"SDR.TMP", outputFile); status != app_status::kSuccess) return status;
  if (!outputFile.empty()) (void)SdrData::SetOutputFile(Narrow(outputFile));
  if (Status result = SdrData::LoadConfigurationFromFile(fileName_); result != kSuccess)
    return FailStep("CVarnok::SdrExecutive - LoadConfigurationFromFile failed",
                    result == sdr_status::kCannotOpenFile ? app_status::kFileIo : app_status::kLoad,
                    SdrData::GetLastErrorMessage);
  if (SdrData::CommitConfigurationToSystem() != kSuccess)
    return FailStep("CVarnok::SdrExecutive - CommitConfigurationToSystem failed", app_status::kUpdate,
                    SdrData::GetLastErrorMessage);
  PrintText(kResetRequired);
  Trace("CVarnok::SdrExecutive [EXIT]", 3);
  return app_status::kSuccess;
}

int CVarnok::DisplayUsage() {
  TraceScope scope("CVarnok::DisplayUsage");
  Print("%s", kShortUsage);
  for (const char* page : {kFruAddressUsage, kExamplesUsage}) {
    if (IsPagingOn() && !PromptMore()) break;
    Print("%s", page);
  }
  return app_status::kSuccess;
}

int CVarnok::ValidateTmpFileName(std::u16string* outName, std::u16string* name) {
  TraceScope scope("CVarnok::ValidateTmpFileName");
  if (outName == nullptr || name == nullptr) {
    Trace("CVarnok::ValidateTmpFileName: Invalid Arguments!!!", 3);
    return app_status::kUnknown;
  }
  std::unique_ptr<File> file;
  if (TheFirmware().OpenFile(*name, FileMode::Write, file) == kSuccess) {
    (void)WriteText(*file, u"\uFEFF");
    *outName = *name;
    return app_status::kSuccess;
  }
  // Kept: the second try opens the name that came in as the output, not the rewritten one.
  *name = FormatUpTo(256, "C:\\%s", *name);
  if (TheFirmware().OpenFile(*outName, FileMode::Write, file) == kSuccess) return app_status::kSuccess;
  return Fail("CVarnok::ValidateTmpFileName", "Unable to open the output file", app_status::kFileIo);
}

int CVarnok::UseTemporaryFile(std::u16string name, std::u16string& outName) {
  if (!IsTemporaryFileOn()) return app_status::kSuccess;
  int status = ValidateTmpFileName(&outName, &name);
  if (status != app_status::kFileIo) return status;
  return FailWith(FormatWide("Failed to create temporary file:%s\n", name), status);
}

}  // namespace varnok
