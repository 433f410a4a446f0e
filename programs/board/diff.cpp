// varnok-board diff: what differs between two boards, images or dumps.
#include "boards/compare.h"
#include "programs/board/command.h"
#include "programs/board/json.h"
#include "programs/board/output.h"

namespace varnok::companion {
namespace {

constexpr Option kDiffOptions[] = {
    {"BEFORE", "", "A board folder, one device of it (FOLDER#0), a FRU image, an SDR or SMBIOS dump",
     Option::Required},
    {"AFTER", "", "Another of the same kind", Option::Required},
    {"--as", "KIND", "Read files as fru, sdr or smbios, whatever their content looks like"},
    {"--json", "", "The differences as JSON"},
};

std::string Quoted(const boards::Difference& difference, const std::string& value) {
  return difference.isText ? "'" + value + "'" : value;
}

std::string LineOf(const boards::Difference& difference) {
  switch (difference.change) {
    case boards::Change::Added:
      return difference.field + ": added, " + Quoted(difference, difference.after);
    case boards::Change::Removed:
      return difference.field + ": removed, was " + Quoted(difference, difference.before);
    case boards::Change::Changed:
      break;
  }
  return difference.field + ": " + Quoted(difference, difference.before) + " \u2192 " +
         Quoted(difference, difference.after);
}

/// Parts, their groups, the fields of these.
void PrintText(const boards::Comparison& comparison) {
  std::string part;
  std::string group;
  for (const boards::Difference& difference : comparison.differences) {
    const std::string change = difference.change == boards::Change::Added ? ": added" : ": removed";
    if (difference.group.empty()) {
      PrintLine(difference.part + change);
      part.clear();
      continue;
    }
    if (difference.part != part) {
      PrintLine(difference.part);
      group.clear();
    }
    part = difference.part;
    if (difference.field.empty()) {
      PrintLine("  " + difference.group + change);
      group.clear();
      continue;
    }
    if (difference.group != group) PrintLine("  " + difference.group);
    group = difference.group;
    PrintLine("    " + LineOf(difference));
  }
  for (const std::string& remark : comparison.remarks) Note(remark);
}

void PrintJson(const boards::Source& before, const boards::Source& after,
               const boards::Comparison& comparison) {
  constexpr const char* kChanges[] = {"added", "removed", "changed"};
  Json list = Json::Array();
  for (const boards::Difference& difference : comparison.differences) {
    Json json = Json::Object();
    json.Set("part", difference.part).Set("change", kChanges[static_cast<int>(difference.change)]);
    if (!difference.group.empty()) json.Set("group", difference.group);
    if (!difference.field.empty()) json.Set("field", difference.field);
    if (!difference.field.empty() && difference.change != boards::Change::Added)
      json.Set("before", difference.before);
    if (!difference.field.empty() && difference.change != boards::Change::Removed)
      json.Set("after", difference.after);
    list.Add(json);
  }
  Json remarks = Json::Array();
  for (const std::string& remark : comparison.remarks) remarks.Add(remark);
  Json root = Json::Object();
  root.Set("version", 1).Set("before", before.name).Set("after", after.name);
  PrintLine(root.Set("differences", list).Set("remarks", remarks).Text());
}

const char* WordsOf(boards::SourceKind kind) {
  constexpr const char* kWords[] = {"a board folder (FOLDER#0, FOLDER/sdr.bin are parts of it)",
                                    "one FRU device", "a FRU image", "an SDR dump", "an SMBIOS dump"};
  return kWords[static_cast<std::size_t>(kind)];
}

int RunDiff(const Arguments& arguments) {
  std::optional<boards::SourceKind> kind;
  if (arguments.Has("--as")) {
    kind = boards::KindByWord(arguments.Value("--as"));
    if (!kind) return Fail("--as: \"" + arguments.Value("--as") + "\" is not fru, sdr or smbios", kWrongUse);
  }
  boards::Source before;
  boards::Source after;
  std::string error;
  if (!boards::LoadSource(arguments.Value("BEFORE"), kind, before, error) ||
      !boards::LoadSource(arguments.Value("AFTER"), kind, after, error))
    return Fail(error);
  const bool isSameKind = before.kind == after.kind || (before.IsOneDevice() && after.IsOneDevice());
  if (!isSameKind)
    return Fail(before.name + " is " + WordsOf(before.kind) + ", " + after.name + " is " +
                    WordsOf(after.kind) + "\nSee varnok-board diff --help.",
                kWrongUse);
  const boards::Comparison comparison = boards::Compare(before, after);
  if (arguments.Has("--json"))
    PrintJson(before, after, comparison);
  else
    PrintText(comparison);
  return comparison.differences.empty() ? kDone : kFound;
}

}  // namespace

const Command kDiff = {"diff", "Show what differs between two boards, images or dumps", kDiffOptions,
                       "  varnok-board diff before after", RunDiff};

}  // namespace varnok::companion
