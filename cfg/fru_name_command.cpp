#include "cfg/fru_name_command.h"

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/fru_address_command.h"
#include "cfg/messages.h"
#include "cfg/script_watcher.h"
#include "fru/fru_data.h"

namespace varnok {
namespace {

constexpr std::string_view kSystem = "SYSTEM";

constexpr const char* kHeaderQuestion =
    "The FRU header area is different from the FRU file you are trying to program.\n"
    "Note: Only the FRU file data is programmed. You will need to re-run the\n"
    "package in order to modify any of the FRU field information.\n"
    "Would you like to program the file data over the existing FRU data? [Y/N]";

/// The common header of the selected FRU.
Status ReadHeader(std::array<std::uint8_t, 8>& header) {
  auto size = static_cast<std::uint32_t>(header.size());
  Status status = FruData::SelectAreaEnum(FruAreaId::CommonHeaderArea);
  return status == kSuccess ? FruData::GetAreaData(header.data(), size) : status;
}

using HasArea = Status (*)(bool& isPresent);
struct PresenceRow {
  FruAreaIndex area;
  HasArea has;
};
constexpr std::array<PresenceRow, 5> kPresence{{
    {FruAreaIndex::InternalUse, FruData::HasInternalUseArea},
    {FruAreaIndex::Chassis, FruData::HasChassisArea},
    {FruAreaIndex::Board, FruData::HasBoardArea},
    {FruAreaIndex::Product, FruData::HasProductArea},
    {FruAreaIndex::MultiRec, FruData::HasMultiRecordArea},
}};

}  // namespace

CCfgFruName::~CCfgFruName() {
  if (parser_ != nullptr && parser_->CurrentFruName() == this) parser_->SetCurrentFruName(nullptr);
}

void CCfgFruName::Register() {
  bool isSystem = EqualsIgnoreCase(GetName(), kSystem);
  parser_->AddUpdateCommand(*this, isSystem ? nullptr : this, true);
  parser_->SetCurrentFruName(this);
}

Status CCfgFruName::ReadFromFile(CFileCfg& file) {
  constexpr const char* kName = "CCfgFruName::ReadFromFile";
  TraceScope scope(kName);
  if (Status status = ReadOneParameter(kName, file, cfg_status::kTooManyParameters); status != kSuccess)
    return status;
  SetName(std::string(FirstParameter()));
  Register();
  return kSuccess;
}

void CCfgFruName::SetFruAddress(const CCfgFruAddress* command) {
  TraceScope scope("CCfgFruName::SetFruAddress");
  addressCommand_ = command;
}

void CCfgFruName::SetFruArea(CCfgFruArea* area) {
  TraceScope scope("CCfgFruName::SetFruArea");
  area_ = area;
}

CCfgFruArea* CCfgFruName::GetFruArea() const {
  TraceScope scope("CCfgFruName::GetFruArea");
  return area_;
}

Status CCfgFruName::SelectFru(bool source) {
  TraceScope scope("CCfgFruName::SelectFru");
  bool fromFile = source && usesFile_;
  FruDeviceAddress address = address_;
  if (addressCommand_ != nullptr && (!source || !usesFile_)) address = addressCommand_->GetAddress();
  Status status = FruData::SelectList(fromFile ? FruList::File : FruList::System);
  if (status == kSuccess) status = FruData::SelectFruByAddress(address);
  if (status == kSuccess) return kSuccess;
  TraceFailure("CCfgFruName::SelectFru", "Unable to select the FRU");
  return ReportFruFailure(status);
}

Status CCfgFruName::Process() {
  TraceScope scope("CCfgFruName::Process");
  ForgetFruMessage();
  if (GetWideName().empty()) {
    CCfgParser::SetLastError(cfg_message::kNullFileName, "FRU");
    return Fail("CCfgFruName::Process", "File name is NULL", cfg_status::kBadValue);
  }
  HeaderBytes fileHeader{};
  usesFile_ = !EqualsIgnoreCase(GetName(), kSystem);
  if (usesFile_) {
    if (Status status = LoadFile(fileHeader); status != kSuccess) return status;
  }
  HeaderBytes systemHeader{};
  if (LoadSystem(systemHeader) != kSuccess) {
    if (isValidateOnly_) {
      // A FRU that cannot be read is what the area's validation finds out; it does not end the script.
      // Without this the block's FRUADDRESS would go to another FRUNAME, and that one's changes to the wrong
      // device.
      parser_->SetCurrentFruName(this);
      CCfgParser::SetLastError("");
      return kSuccess;
    }
    TraceFailure("CCfgFruName::Process", "Unable to load the system FRU");
    return ReportFruFailure(cfg_status::kFruLoadFailed);
  }
  if (usesFile_ && fileHeader != systemHeader) return AskForWholeFile();
  Register();
  return kSuccess;
}

Status CCfgFruName::LoadFile(HeaderBytes& header) {
  if (!GetFile(GetWideName(), path_, kPathCapacity)) {
    CCfgParser::SetLastError(cfg_message::kCannotRetrieve, GetWideName());
    Trace("CCfgFruName::Process - Unable to retrieve file %s", 1, GetWideName());
    return cfg_status::kFileNotFound;
  }
  Status status = FruData::LoadConfigurationFromFile(Narrow(path_));
  if (status == kSuccess) {
    Print("\nProcessing FRU File %s...\n\n", GetName());
    status = FruData::GetFruAddress(address_);
  }
  if (status == kSuccess) status = ReadHeader(header);
  if (status == kSuccess) return kSuccess;
  TraceFailure("CCfgFruName::Process", "Unable to load the FRU file");
  return ReportFruFailure(status == fru_status::kFileNotRead ? cfg_status::kFileNotFound
                                                             : cfg_status::kFruLoadFailed);
}

Status CCfgFruName::LoadSystem(HeaderBytes& header) {
  // From here on the file's image, too, is looked for at this address.
  if (addressCommand_ != nullptr) address_ = addressCommand_->GetAddress();
  bool isImageInvalid = false;
  Status status = FruData::LoadFruAtAddress(address_, isImageInvalid);
  if (status == kSuccess) status = FruData::SelectList(FruList::System);
  if (status == kSuccess) status = FruData::SelectFruByAddress(address_);
  return status == kSuccess ? ReadHeader(header) : status;
}

Status CCfgFruName::AskForWholeFile() {
  Tell(&ScriptWatcher::Asks,
       ScriptQuestion{.kind = ScriptQuestionKind::WholeFile, .text = GetName(), .line = Line()});
  DisplayWide("%s", kHeaderQuestion);
  char answer = ReadYesOrNo();
  EchoAnswer(answer);
  if (ToUpper(answer) != 'N') {
    isWholeFile_ = true;
    Register();
    return kSuccess;
  }
  CCfgParser::SetLastError(
      "The header in the FRU file '%s' does not match the header in the system FRU.  The FRU cannot be updated.",
      GetWideName());
  return Fail("CCfgFruName::Process", "The headers of file and system FRU differ",
              cfg_status::kFruLoadFailed);
}

bool CCfgFruName::AreAllAreasMentioned() const {
  bool isComplete = isMentioned_[static_cast<std::size_t>(FruAreaIndex::Header)];
  for (const PresenceRow& row : kPresence) {
    bool isPresent = false;
    bool isMissed = row.has(isPresent) != kSuccess || isPresent;
    if (isMissed && !isMentioned_[static_cast<std::size_t>(row.area)]) isComplete = false;
  }
  return isComplete;
}

Status CCfgFruName::Execute() {
  TraceScope scope("CCfgFruName::Execute");
  if (!isModified_) return kSuccess;
  ForgetFruMessage();
  Status status = SelectFru(false);
  if (status == kSuccess && isWholeFile_ && !AreAllAreasMentioned()) {
    CCfgParser::SetLastError(
        "The configuration file should update all the FRU ares in the file '%s', to avoid corrupting the FRU.",
        GetWideName());
    return Fail("CCfgFruName::Execute", "An area of the FRU is not updated", cfg_status::kFruCommitFailed);
  }
  if (status == kSuccess) status = FruData::CommitConfigurationToSystem(false);
  if (status == kSuccess) return kSuccess;
  TraceFailure("CCfgFruName::Execute", "CommitConfigurationToSystem failed");
  return ReportFruFailure(cfg_status::kFruCommitFailed);
}

void CCfgFruName::DebugPrint() {
  TraceScope scope("CCfgFruName::DebugPrint");
  Print("%s\n", GetName());
}

void CCfgFruName::Describe(ScriptVisitor& visitor) const {
  if (!EqualsIgnoreCase(GetName(), kSystem)) visitor.Fact(ScriptFact::FruFile, GetName(), Line());
}

CommandFamily FruNameCommands() {
  static constexpr CommandRow kRows[] = {{CommandType{10}, "FRUNAME", "FRUNAME", Create<CCfgFruName>}};
  return kRows;
}

}  // namespace varnok
