// What an SDR file programs, held against the standard and the board.
#include <algorithm>
#include <map>
#include <string_view>

#include "app/services/text.h"
#include "boards/check/file_checks.h"
#include "boards/check/file_text.h"
#include "boards/desk_machine.h"
#include "boards/field_text.h"
#include "boards/sdr_record.h"
#include "sdr/data_set.h"
#include "sdr/file_lines.h"
#include "sdr/read_file.h"

namespace varnok::boards {
namespace {

/// The number of the line, from 1, that holds `position`, or that ends there.
std::size_t LineAt(const std::string& text, std::size_t position) {
  position = std::min(position, text.size());
  if (position > 0) --position;
  return 1 + static_cast<std::size_t>(
                 std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(position), '\n'));
}

class SdrFileCheck {
 public:
  SdrFileCheck(const std::string& file, const std::string& text, const Board* board,
               const std::set<std::string>* tags, Findings& findings)
      : file_(file), raw_(text), text_(text), board_(board), tags_(tags), findings_(findings) {}

  void Run() {
    TheSdr().lineCounter = 0;
    SdrTypeList lists;
    TextFile source(raw_);
    SdrFileLines lines(source, file_);
    if (Status status = SdrReadFile::ReadSdrRecordsFromFile(lines, lists); status != kSuccess) {
      std::string message = MessageLine(TheSdr().lastError.data());
      if (!message.starts_with("Invalid file"))
        message = "a record cannot be read, or the block of records has no end";
      std::size_t line = LineAt(raw_, lines.Position());
      // For a type that it does not know the reader goes back to where it began to look for one.
      if (message.find("Unsupported record type") != std::string::npos)
        line = text_.LineOf("_SDR_TYPE", 0, line + 1);
      Report(Severity::Error, "sdr-refused", line, message,
             "Correct the file here: the program refuses all of it and touches nothing.");
      return;
    }
    for (const auto& list : lists)
      for (const auto& record : list) Take(*record);
    CheckAll();
  }

 private:
  struct Seen {
    std::size_t line;
    Bytes bytes;
  };

  void Report(Severity severity, const char* rule, std::size_t line, std::string text, std::string advice) {
    findings_.push_back({severity, rule, file_, line, std::move(text), std::move(advice)});
  }

  /// Records are listed by type; the file's lines of each type have the same order.
  std::size_t LineOfNext(std::uint8_t type) {
    std::size_t& line = lastLine_[type];
    for (++line; line <= text_.LineCount(); ++line) {
      const std::size_t key = text_.Line(line).find("_SDR_TYPE");
      if (key == std::string_view::npos) continue;
      std::string_view value = text_.Line(line).substr(key + std::string_view("_SDR_TYPE").size());
      value.remove_prefix(std::min(value.size(), value.find_first_not_of(" \t")));
      if (SdrUtility::AHextoUINT32(value) == type) return line;
    }
    return 0;
  }

  void Take(const CSdr& object) {
    const Bytes record(object.Raw().begin(), object.Raw().end());
    const SdrHead head = HeadOf(record);
    const std::size_t line = LineOfNext(head.type);
    ++count_;
    bytes_ += record.size();
    untagged_ += object.Tags().empty() ? 1 : 0;
    for (const Problem& problem : DecodeSdr(record).problems)
      Report(Severity::Warning, "sdr-record", line,
             "byte " + std::to_string(problem.offset) + ": " + problem.text,
             "Compare the record with IPMI v2.0, chapter 43.");
    CheckTags(object, line, head);
    const auto [found, isNew] = byKey_.try_emplace(head.key + TagText(object), Seen{line, record});
    if (!isNew && head.type != 0xC0)
      Report(Severity::Warning, "sdr-duplicate", line,
             "the record has the key of the one on line " + std::to_string(found->second.line) + ": " +
                 head.typeName + " '" + head.name + "'",
             "Give it a key of its own, or take one of the two out: the BMC keeps both.");
  }

  void CheckTags(const CSdr& object, std::size_t line, const SdrHead& head) {
    if (object.Tags().empty() || tags_ == nullptr) return;
    for (const auto& tag : object.Tags())
      if (tags_->contains(Capitals(tag))) return;
    Report(Severity::Warning, "sdr-tag", line,
           "the script sets none of the record's tags: " + head.typeName + " '" + head.name +
               "' is never written",
           "Set the tag in the script, or take the tag or the record out.");
  }

  /// Records of one key may exclude each other by their tags.
  static std::string TagText(const CSdr& object) {
    std::string text;
    for (const auto& tag : object.Tags()) text += "\n" + std::string(tag.begin(), tag.end());
    return text;
  }

  void CheckAll() {
    const std::size_t line = std::max<std::size_t>(1, text_.LineOf("_SDR ("));
    if (count_ == 0)
      Report(Severity::Warning, "sdr-empty", line,
             "the file holds no record; programming it empties the repository",
             "Put records between \"_SDR (\" and \")\".");
    else if (untagged_ == 0 && tags_ == nullptr)
      Report(
          Severity::Warning, "sdr-tags", line,
          "every record has a tag: /sdr empties the repository, and so does a script that sets none of them",
          "Leave the tags of the records out that every board needs.");
    if (board_ == nullptr) return;
    if (!board_->hasRepository)
      Report(Severity::Error, "sdr-device", line, "the board has no SDR repository",
             "Take the file out of the package.");
    else if (board_->repositoryCapacity != 0 && bytes_ > board_->repositoryCapacity)
      Report(Severity::Error, "sdr-size", line,
             "the records have " + Plural(bytes_, "byte") + ", the repository holds " +
                 std::to_string(board_->repositoryCapacity),
             "Shorten ID strings or leave records out: those that find no room are missing on the board.");
  }

  const std::string& file_;
  const std::string& raw_;
  DeskMachine machine_{raw_};
  FileText text_;
  const Board* board_;
  const std::set<std::string>* tags_;
  Findings& findings_;
  std::map<std::uint8_t, std::size_t> lastLine_;
  std::map<std::string, Seen> byKey_;
  std::size_t count_ = 0;
  std::size_t untagged_ = 0;
  std::size_t bytes_ = 0;
};

}  // namespace

void CheckSdrFile(const std::string& file, const std::string& text, const Board* board,
                  const std::set<std::string>* tags, Findings& findings) {
  SdrFileCheck(file, text, board, tags, findings).Run();
}

std::set<std::string> TagsOfSdrFile(const std::string& text) {
  DeskMachine machine(text);
  TextFile source(text);
  SdrFileLines lines(source, "the file");
  SdrTypeList lists;
  std::set<std::string> tags;
  if (SdrReadFile::ReadSdrRecordsFromFile(lines, lists) != kSuccess) return tags;
  for (const auto& list : lists)
    for (const auto& record : list)
      for (const auto& tag : record->Tags()) tags.insert(Capitals(tag));
  return tags;
}

}  // namespace varnok::boards
