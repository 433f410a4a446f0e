#include "boards/check/check.h"

#include <algorithm>
#include <filesystem>
#include <tuple>

#include "boards/check/file_checks.h"
#include "boards/check/file_text.h"
#include "boards/folder.h"

namespace varnok::boards {
namespace {

/// A script of any length is read line by line; a load file beyond this is none.
constexpr std::uintmax_t kLargestFile = 64U << 20;

}  // namespace

LoadFileKind KindOfLoadFile(const std::string& file, const std::string& text) {
  const std::string extension = Capitals(std::filesystem::path(file).extension().string());
  if (extension == ".FRU") return LoadFileKind::Fru;
  if (extension == ".SDR") return LoadFileKind::Sdr;
  if (extension == ".CFG") return LoadFileKind::Script;
  if (text.find("_SEE_COMMON") != std::string::npos) return LoadFileKind::Fru;
  return text.find("_SDR (") != std::string::npos ? LoadFileKind::Sdr : LoadFileKind::Script;
}

void Checker::Check(const std::string& file) {
  if (std::find(files_.begin(), files_.end(), file) != files_.end()) return;
  std::error_code code;
  std::string error;
  Bytes bytes;
  if (!std::filesystem::exists(file, code))
    error = "there is no such file";
  else if (!std::filesystem::is_regular_file(file, code))
    error = "is a folder, a device or a pipe, not a file";
  else if (std::filesystem::file_size(file, code) > kLargestFile)
    error = "the file has more than 64 MiB";
  else
    ReadFile(file, bytes, error);
  files_.push_back(file);
  if (!error.empty()) {
    findings_.push_back(
        {Severity::Error, "file", file, 0, error, "Name a FRU file, an SDR file or a script."});
    return;
  }
  const std::string text(bytes.begin(), bytes.end());
  CheckText(file, text, KindOfLoadFile(file, text));
}

void Checker::CheckText(const std::string& file, const std::string& text, LoadFileKind kind) {
  if (text.starts_with("\xEF\xBB\xBF") || text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF"))
    findings_.push_back({Severity::Error, "file-encoding", file, 1, "the file begins with a Unicode mark",
                         "Save it as plain text (ANSI or ASCII)."});
  if (kind == LoadFileKind::Fru) return CheckFruFile(file, text, board_, findings_);
  if (kind == LoadFileKind::Sdr) return CheckSdrFile(file, text, board_, nullptr, findings_);
  const ScriptUse use = CheckScript(file, board_, findings_);
  for (const ScriptUse::File& named : use.files) {
    if (named.path.empty() || std::find(files_.begin(), files_.end(), named.path) != files_.end()) continue;
    files_.push_back(named.path);
    Bytes bytes;
    std::string error;
    if (!ReadFile(named.path, bytes, error)) {
      findings_.push_back({Severity::Error, "script-file", file, named.line, error, "Make it readable."});
      continue;
    }
    const std::string content(bytes.begin(), bytes.end());
    if (named.kind == LoadFileKind::Fru)
      CheckFruFile(named.path, content, named.hasOtherAddress ? nullptr : board_, findings_);
    else
      CheckSdrFile(named.path, content, board_, &use.tagsSet, findings_);
  }
}

std::vector<Finding> Checker::Findings() const {
  std::vector<Finding> sorted = findings_;
  auto place = [this](const Finding& finding) {
    return std::tuple(std::find(files_.begin(), files_.end(), finding.file) - files_.begin(), finding.line);
  };
  std::stable_sort(sorted.begin(), sorted.end(),
                   [&](const Finding& a, const Finding& b) { return place(a) < place(b); });
  return sorted;
}

}  // namespace varnok::boards
