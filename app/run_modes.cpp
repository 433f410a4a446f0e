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
  return app_status::kUnknown;
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
      return app_status::kUnknown;
  }
}

int CVarnok::DisplayFru() {
  std::u16string outputFile;
  if (int status = UseTemporaryFile(u"FRU.TMP", outputFile); status != app_status::kSuccess) return status;
  if (!outputFile.empty()) FruData::SetOutputFile(Narrow(outputFile));
  FruData::SetPagingMode(IsPagingOn());
  if (FruData::DisplaySelectedFru() == kSuccess) return app_status::kSuccess;
  FruData::GetLastErrorMessage(lastErrorMessage_);
  return app_status::kLoad;
}

int CVarnok::DisplaySdr() {
  std::u16string outputFile;
  if (int status = UseTemporaryFile(u"SDR.TMP", outputFile); status != app_status::kSuccess) return status;
  if (!outputFile.empty()) SdrData::SetOutputFile(Narrow(outputFile));
  SdrData::SetPaging(IsPagingOn());
  if (SdrData::DisplaySdrArea() == kSuccess) return app_status::kSuccess;
  SdrData::GetLastErrorMessage(lastErrorMessage_);
  return app_status::kLoad;
}

int CVarnok::DisplaySmbios() {
  std::u16string outputFile;
  if (int status = UseTemporaryFile(u"SMB.TMP", outputFile); status != app_status::kSuccess) return status;
  if (!outputFile.empty()) SmbiosSetOutputFile(outputFile);
  if (SmbiosDisplay() == kSuccess) return app_status::kSuccess;
  lastErrorMessage_ = SmbiosGetLastErrorMessage();
  return app_status::kSmbios;
}

int CVarnok::FruExecutive() {
  TraceScope scope("CVarnok::FruExecutive");
  std::u16string outputFile;
  if (int status = UseTemporaryFile(u"FRU.TMP", outputFile); status != app_status::kSuccess) return status;
  if (!outputFile.empty()) FruData::SetOutputFile(Narrow(outputFile));
  if (FruData::LoadConfigurationFromFile(Narrow(fileName_)) != kSuccess) {
    FruData::GetLastErrorMessage(lastErrorMessage_);
    Trace("CVarnok::FruExecutive - LoadConfigurationFromFile failed", 1);
    return app_status::kLoad;
  }
  constexpr bool kForce = true;
  // The manager's message is left alone: the status text shows.
  if (FruData::CommitConfigurationToSystem(kForce) != kSuccess) return app_status::kUpdate;
  PrintText(kResetRequired);
  return app_status::kSuccess;
}

int CVarnok::SdrExecutive() {
  Trace("CVarnok::SdrExecutive [ENTRY]", 3);
  std::u16string outputFile;
  if (int status = UseTemporaryFile(u"SDR.TMP", outputFile); status != app_status::kSuccess) return status;
  if (!outputFile.empty()) SdrData::SetOutputFile(Narrow(outputFile));
  if (Status result = SdrData::LoadConfigurationFromFile(fileName_); result != kSuccess) {
    SdrData::GetLastErrorMessage(lastErrorMessage_);
    Trace("CVarnok::SdrExecutive - LoadConfigurationFromFile failed", 1);
    return result == sdr_status::kCannotOpenFile ? app_status::kFileIo : app_status::kLoad;
  }
  if (SdrData::CommitConfigurationToSystem() != kSuccess) {
    SdrData::GetLastErrorMessage(lastErrorMessage_);
    Trace("CVarnok::SdrExecutive - CommitConfigurationToSystem failed", 1);
    return app_status::kUpdate;
  }
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
  // The second try opens the name that came in as the output, not the rewritten
  // one.
  *name = FormatUpTo(256, "C:\\%s", *name);
  bool isOpen = TheFirmware().OpenFile(*outName, FileMode::Write, file) == kSuccess;
  return isOpen ? app_status::kSuccess : app_status::kFileIo;
}

int CVarnok::UseTemporaryFile(std::u16string name, std::u16string& outName) {
  if (!usesTemporaryFile_) return app_status::kSuccess;
  int status = ValidateTmpFileName(&outName, &name);
  if (status != app_status::kFileIo) return status;
  return FailWith(FormatWide("Failed to create temporary file:%s\n", name), status);
}

}  // namespace varnok
