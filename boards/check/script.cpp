// What a script does on its roads, as far as its lines alone tell: nothing is asked, loaded or run.
#include <algorithm>
#include <charconv>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>

#include "boards/check/file_checks.h"
#include "boards/check/file_text.h"
#include "boards/desk_machine.h"
#include "boards/field_text.h"
#include "boards/folder.h"
#include "boards/fru_image.h"
#include "cfg/cfg_parser.h"
#include "cfg/fru_address_command.h"
#include "cfg/fru_tables.h"
#include "firmware/host/utf8.h"
#include "fru/fru.h"

namespace varnok::boards {
namespace {

constexpr std::size_t kLongestField = 63;

/// The words of a command's line; one in double quotes may hold blanks.
std::vector<std::string> Words(std::string_view parameters) {
  std::vector<std::string> words;
  std::string_view word;
  while (CCfgCommand::GetNextInput(parameters, word)) words.emplace_back(word);
  return words;
}

class ScriptCheck : public ScriptVisitor {
 public:
  ScriptCheck(const std::string& file, const Board* board, Findings& findings)
      : file_(file), folder_(std::filesystem::path(file).parent_path()), board_(board), findings_(findings) {}

  ScriptUse Run() {
    CCfgParser parser;
    const std::u16string path = host::FromUtf8(file_);
    if (parser.ParseFile(path.c_str(), nullptr) != kSuccess) {
      ReportRefusal(MessageLine(parser.GetLastError()));
      return std::move(use_);
    }
    WalkScript(parser.Commands(), *this);
    FinishFru();
    CheckTags();
    return std::move(use_);
  }

  void Command(const CCfgCommand& command) override {
    line_ = command.Line() + 1;
    keyword_ = std::string(command.Keyword());
    const bool isElse = keyword_ == "ELSE";
    // An ELSE stands behind its IFSET: what ended there ends here only if both did.
    if (!isElse && roads_.back().isBranchPending) EndBranchPair(false);
    if (!isElse && roads_.back().hasEnded && !roads_.back().isReported) {
      roads_.back().isReported = true;
      Report(Severity::Warning, "script-unreachable", line_,
             "no road reaches this line: every one before it ends",
             "Move it in front of the ERRORLEVEL, or take it out.");
    }
    Take(command);
  }

  void Fact(ScriptFact kind, std::string_view text, std::uint32_t line) override {
    const std::size_t place = line + 1;
    switch (kind) {
      case ScriptFact::TestsTag:
        tests_[Capitals(text)].push_back(place);
        break;
      case ScriptFact::SetsTag:
      case ScriptFact::SetsTagOnYes:
      case ScriptFact::SetsTagOnNo:
        if (!text.empty()) sets_[Capitals(text)].push_back(place);
        break;
      case ScriptFact::ClearsTag:
        break;
      case ScriptFact::Question:
      case ScriptFact::AsksValue:
        hasAsked_ = true;
        break;
      case ScriptFact::Item:
      case ScriptFact::Variable:
        break;
      case ScriptFact::FruFile:
        NameFile(text, place, LoadFileKind::Fru);
        fru_ = LoadFru(use_.files.back().path);
        target_.address = fru_ != nullptr ? fru_->Address() : FruDeviceAddress{};
        break;
      case ScriptFact::SdrFile:
        NameFile(text, place, LoadFileKind::Sdr);
        break;
      case ScriptFact::ValueFile:
        RequireFile(text, place);
        break;
    }
  }

  void EnterBranch() override { roads_.push_back({}); }

  void LeaveBranch() override {
    if (roads_.back().isBranchPending) EndBranchPair(false);
    const bool hasEnded = roads_.back().hasEnded;
    roads_.pop_back();
    if (keywordOfBranch_.back() == "ELSE") {
      EndBranchPair(hasEnded);
    } else {
      roads_.back().isBranchPending = true;
      roads_.back().hasFirstEnded = hasEnded;
    }
    keywordOfBranch_.pop_back();
  }

 private:
  /// The commands of one body, in their order.
  struct Road {
    bool hasEnded = false;  ///< no command behind this place runs
    bool isReported = false;
    bool isBranchPending = false;  ///< an IFSET's body has been left, an ELSE may follow
    bool hasFirstEnded = false;    ///< every road through that body ends
  };

  void EndBranchPair(bool hasSecondEnded) {
    Road& road = roads_.back();
    road.hasEnded = road.hasEnded || (road.hasFirstEnded && hasSecondEnded);
    road.isBranchPending = false;
    road.hasFirstEnded = false;
  }

  void Report(Severity severity, const char* rule, std::size_t line, std::string text, std::string advice) {
    findings_.push_back({severity, rule, file_, line, std::move(text), std::move(advice)});
  }

  /// "Invalid input in file 'F' at line 3:   what is wrong".
  void ReportRefusal(const std::string& message) {
    std::size_t line = 0;
    std::string text = message;
    constexpr std::string_view kAt = " at line ";
    if (const std::size_t at = message.find(kAt); at != std::string::npos) {
      const char* digits = message.data() + at + kAt.size();
      const auto end = std::from_chars(digits, message.data() + message.size(), line).ptr;
      text = message.substr(static_cast<std::size_t>(end - message.data()));
      text.erase(0, std::min(text.size(), text.find_first_not_of(": ")));
    }
    if (text.empty()) text = line == 0 ? "the script cannot be read" : "the line is not complete";
    Report(Severity::Error, "script-refused", line, text,
           "The program refuses the whole script and touches nothing.");
  }

  void Take(const CCfgCommand& command) {
    const std::vector<std::string> words = Words(command.Parameters());
    if (keyword_ == "IFSET" || keyword_ == "ELSE") keywordOfBranch_.push_back(keyword_);
    if (keyword_ == "ERRORLEVEL") roads_.back().hasEnded = true;
    if (keyword_ == "PROBE") hasProbed_ = true;
    if (keyword_ == "FRUNAME" || keyword_ == "SDRNAME" || keyword_ == "CLEARSDR") CheckGuard();
    if (keyword_ == "FRUNAME") StartFru();
    if (keyword_ == "FRUADDRESS") CheckAddress(static_cast<const CCfgFruAddress&>(command));
    if (keyword_ == "FRUAREA" && !words.empty()) TakeArea(words);
    if (keyword_ == "FRUFIELD" && !words.empty()) CheckField(words);
    if (keyword_ == "FRUFIELD" && words.size() > 1) CheckValueLine(words[1]);
    if (keyword_ == "PROBE" && words.size() > 1 && Capitals(words[0]) == "FRUFIELD")
      CheckProbedField(words[1]);
  }

  void CheckGuard() {
    if (hasProbed_ || hasAsked_ || isGuardReported_) return;
    isGuardReported_ = true;
    Report(
        Severity::Warning, "script-guard", line_, keyword_ + " comes before any PROBE or question",
        "Probe first that the board is the one that the package is made for: the script runs on any board.");
  }

  // --- FRU blocks ---

  void StartFru() {
    FinishFru();
    fru_ = nullptr;
    area_ = nullptr;
    target_ = {line_, {}};
  }

  /// A script reads the device before it writes, so that one that was never programmed ends it.
  void FinishFru() {
    if (board_ == nullptr || target_.line == 0) return;
    const Device* device = board_->Find(DeviceAt(target_.address));
    if (device != nullptr && IsFill(device->bytes))
      Report(Severity::Error, "script-blank", target_.line,
             "device " + NameOf(device->address) + " is blank: the script ends when it reads it",
             "Program the whole file with /fru first.");
  }

  /// The file as the program reads it; null for one that it refuses, which has a finding of its own.
  static std::unique_ptr<CFru> LoadFru(const std::string& path) {
    auto fru = std::make_unique<CFru>();
    Bytes bytes;
    std::string error;
    if (!ReadFile(path, bytes, error)) return nullptr;
    const std::string text(bytes.begin(), bytes.end());
    DeskMachine machine(text);
    return fru->ReadFRUFromFile("file") == kSuccess ? std::move(fru) : nullptr;
  }

  void CheckAddress(const CCfgFruAddress& command) {
    if (!use_.files.empty()) use_.files.back().hasOtherAddress = true;
    target_.address = command.GetAddress();
    if (board_ == nullptr) return;
    CheckDevice(target_.address, fru_ != nullptr ? WrittenLength(*fru_) : 0, *board_,
                {Severity::Error, "fru-device", file_, line_, {}, {}}, findings_);
  }

  static std::size_t WrittenLength(CFru& fru) {
    std::size_t length = kFruHeaderLength;
    if (fru.HasInternalArea()) length += fru.InternalUse().GetLength();
    for (FruAreaId area : {FruAreaId::ChassisInfoArea, FruAreaId::BoardInfoArea, FruAreaId::ProductInfoArea})
      if (fru.HasArea(area)) length += fru.FindInfoArea(area)->GetLength();
    return length + (fru.HasMultiRecArea() ? fru.MultiRecLength() : 0);
  }

  void TakeArea(const std::vector<std::string>& words) {
    area_ = nullptr;
    for (const varnok::FruAreaRow& row : varnok::kFruAreas)
      if (Capitals(words[0]) == Capitals(row.keyword)) area_ = &row;
    if (area_ == nullptr || fru_ == nullptr) return;
    if (!fru_->HasArea(area_->area)) {
      Report(Severity::Error, "script-area", line_,
             "the FRU file has no " + std::string(area_->keyword) + " area",
             "Take the line out, or give the file the area.");
      return;
    }
    if (area_->area != FruAreaId::MultiRecordArea || words.size() < 2) return;
    std::size_t number = 0;
    std::from_chars(words[1].data(), words[1].data() + words[1].size(), number);
    const auto count =
        static_cast<std::size_t>(std::distance(fru_->MultiRecords().begin(), fru_->MultiRecords().end()));
    if (number > count)
      Report(Severity::Error, "script-area", line_, "the FRU file has " + Plural(count, "multi-record"),
             "Name one that it has.");
  }

  void CheckField(const std::vector<std::string>& words) {
    const std::uint32_t field = FindFruField(words[0]);
    if (area_ == nullptr || field == fru_field::kNone) return;
    InfoArea* info = fru_ != nullptr ? fru_->FindInfoArea(area_->area) : nullptr;
    const bool isAsked = words.size() > 1 && Capitals(words[1]).starts_with("@STDIN");
    if (field == fru_field::kChassisType && isAsked)
      Report(Severity::Error, "script-field", line_, "an operator's answer cannot be stored as chassis type",
             "Give the type in the script: FRUFIELD CT 17.");
    const bool isLiteral = words.size() > 1 && !words[1].starts_with("@");
    if (isLiteral && field != fru_field::kChassisType && words[1].size() > kLongestField)
      Report(Severity::Error, "script-field", line_,
             "the value has " + Plural(words[1].size(), "character") + ", a field holds 63", "Shorten it.");
    if (info == nullptr || !fru_->HasArea(area_->area)) return;
    if (field == fru_field::kCustom) {
      const int number = words[0].size() > 2 ? words[0][2] - '0' : 0;
      if (number > static_cast<int>(info->GetNumberOfCustomFields()))
        Report(Severity::Error, "script-field", line_,
               "the " + std::string(area_->keyword) + " area of the FRU file has " +
                   Plural(info->GetNumberOfCustomFields(), "custom field"),
               "Give the file the field, empty if need be: scripts cannot add any.");
      return;
    }
    if (isLiteral) CheckRoom(*info, field, words[1].size());
  }

  /// "@FILE:ASCII:name:line": the file must have the line.
  void CheckValueLine(const std::string& value) {
    const std::size_t number = value.rfind(':');
    const std::size_t name = value.find(':', value.find(':') + 1);
    if (!Capitals(value).starts_with("@FILE:") || name >= number) return;
    Bytes bytes;
    std::string error;
    const std::string path = PathOf(std::string_view(value).substr(name + 1, number - name - 1));
    if (!ReadFile(path, bytes, error)) return;  // a finding of its own
    std::size_t line = 0;
    std::from_chars(value.data() + number + 1, value.data() + value.size(), line);
    const FileText text(std::string(bytes.begin(), bytes.end()));
    if (line > text.LineCount())
      Report(Severity::Error, "script-file", line_, path + " has " + Plural(text.LineCount(), "line"),
             "Name a line that it has.");
  }

  void CheckRoom(const InfoArea& info, std::uint32_t field, std::size_t length) {
    const auto index = static_cast<FruAreaIndex>(area_ - varnok::kFruAreas.data());
    const std::optional<FruFieldId> id = FixedFruField(kFruFields[field], index);
    if (!id || field == fru_field::kChassisType || field == fru_field::kMfgDate) return;
    std::span<const std::uint8_t> old;
    if (!info.GetFieldData(info.GetFieldIndexFromEnum(*id), old)) return;
    const std::ptrdiff_t room =
        static_cast<std::ptrdiff_t>(old.size()) + std::max<std::ptrdiff_t>(0, info.GetPadLength());
    if (static_cast<std::ptrdiff_t>(length) > room)
      Report(Severity::Warning, "script-room", line_,
             "the value has " + Plural(length, "byte") + ", the area of the FRU file has room for " +
                 std::to_string(room),
             "Leave more padding in the file's area, or give FRUAREA a size.");
  }

  void CheckProbedField(const std::string& keyword) {
    if (area_ == nullptr)
      return Report(Severity::Error, "script-field", line_,
                    "no FRUAREA stands before the probe of a FRU field",
                    "Put FRUNAME and FRUAREA in front of it.");
    const std::uint32_t field = FindFruField(keyword);
    if (field != fru_field::kNone && (area_->fieldMask & kFruFields[field].bit) == 0)
      Report(Severity::Error, "script-field", line_,
             "the " + std::string(area_->keyword) + " area has no field " + keyword,
             "Ask for a field that it has.");
  }

  // --- Files and tags ---

  std::string PathOf(std::string_view name) const {
    std::string path(name);
    std::replace(path.begin(), path.end(), '\\', '/');
    return (folder_ / path).string();
  }

  bool RequireFile(std::string_view name, std::size_t line) {
    const std::string path = PathOf(name);
    std::error_code error;
    if (std::filesystem::is_regular_file(path, error)) return true;
    std::string advice = "Put it beside the script.";
    for (const auto& entry : std::filesystem::directory_iterator(
             std::filesystem::path(path).parent_path().empty() ? std::filesystem::path(".")
                                                               : std::filesystem::path(path).parent_path(),
             error))
      if (Capitals(entry.path().filename().string()) ==
          Capitals(std::filesystem::path(path).filename().string()))
        advice = "Write " + entry.path().filename().string() + ": the letters' case counts on Linux.";
    Report(Severity::Error, "script-file", line, "there is no file " + path, advice);
    return false;
  }

  void NameFile(std::string_view name, std::size_t line, LoadFileKind kind) {
    use_.files.push_back({PathOf(name), line, kind, false});
    if (!RequireFile(name, line)) use_.files.back().path.clear();
  }

  void CheckTags() {
    for (const auto& [tag, lines] : sets_) use_.tagsSet.insert(tag);
    std::set<std::string> recordTags;
    for (const ScriptUse::File& named : use_.files) {
      Bytes bytes;
      std::string error;
      if (named.kind == LoadFileKind::Sdr && !named.path.empty() && ReadFile(named.path, bytes, error))
        recordTags.merge(TagsOfSdrFile(std::string(bytes.begin(), bytes.end())));
    }
    for (const auto& [tag, lines] : tests_) {
      const auto set = sets_.find(tag);
      if (set == sets_.end())
        Report(Severity::Warning, "script-tag", lines.front(),
               "the tag " + tag + " is tested and never set: the block never runs",
               "Set the tag, or correct its name.");
      else if (*std::min_element(set->second.begin(), set->second.end()) > lines.front())
        Report(Severity::Warning, "script-tag", lines.front(),
               "the tag " + tag + " is set behind this test alone, on line " +
                   std::to_string(set->second.front()) + ": the block never runs",
               "Move the test behind what sets the tag.");
    }
    for (const auto& [tag, lines] : sets_)
      if (!tests_.contains(tag) && !recordTags.contains(tag))
        Report(Severity::Warning, "script-tag", lines.front(),
               "the tag " + tag + " is set and nothing asks for it",
               "Test it, name it in the SDR file, or take it out.");
  }

  DeskMachine machine_;  // first: what the readers keep is its memory
  const std::string& file_;
  std::filesystem::path folder_;
  const Board* board_;
  Findings& findings_;
  ScriptUse use_;
  std::size_t line_ = 0;
  std::string keyword_;
  std::vector<Road> roads_{Road{}};
  std::vector<std::string> keywordOfBranch_;
  bool hasProbed_ = false;
  bool hasAsked_ = false;
  bool isGuardReported_ = false;
  std::map<std::string, std::vector<std::size_t>> sets_;
  std::map<std::string, std::vector<std::size_t>> tests_;
  std::unique_ptr<CFru> fru_;  ///< of the FRUNAME told last; null for SYSTEM and for a file that is refused
  const varnok::FruAreaRow* area_ = nullptr;
  /// The FRUNAME told last and the device that it programs.
  struct {
    std::size_t line = 0;
    FruDeviceAddress address{};
  } target_;
};

}  // namespace

ScriptUse CheckScript(const std::string& file, const Board* board, Findings& findings) {
  return ScriptCheck(file, board, findings).Run();
}

}  // namespace varnok::boards
