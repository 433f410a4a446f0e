// varnok-board check: what can be known of FRU files, SDR files and scripts before a board sees them.
#include "boards/check/check.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "boards/folder.h"
#include "programs/board/command.h"
#include "programs/board/findings.h"
#include "programs/board/json.h"
#include "programs/board/output.h"

namespace varnok::companion {
namespace {

using boards::Severity;

constexpr Option kCheckOptions[] = {
    {"FILES", "", "FRU files, SDR files, scripts; a script's own files are checked with it",
     Option::OneOrMore},
    {"--board", "FOLDER", "The board that they are made for: its devices, their sizes, its repository"},
    {"--strict", "", "Warnings count as findings"},
    {"--format", "FORM", "text (the usual), lines (file:line: for editors), json, or sarif"},
    {"--json", "", "The same as --format json"},
};

const char* WordOf(Severity severity) {
  return severity == Severity::Error ? "error" : "warning";
}

void PrintLines(const std::vector<boards::Finding>& findings) {
  for (const boards::Finding& finding : findings)
    PrintLine(finding.file + ":" + std::to_string(finding.line == 0 ? 1 : finding.line) + ": " +
              WordOf(finding.severity) + ": " + finding.text + " [" + finding.rule + "]");
}

Json AsJson(const std::vector<boards::Finding>& findings, std::size_t files) {
  const auto entry = [](const boards::Finding& finding) {
    return Json::Object()
        .Set("severity", WordOf(finding.severity))
        .Set("rule", finding.rule)
        .Set("file", finding.file)
        .Set("line", finding.line)
        .Set("text", finding.text)
        .Set("advice", finding.advice);
  };
  return Json::Object().Set("version", 1).Set("files", files).Set("findings", ListOf(findings, entry));
}

/// A file's name as a URI reference (RFC 3986): what may not stand in a path comes as %20.
std::string UriOf(const std::string& file) {
  constexpr std::string_view kPlain = "-._~/!$&'()*+,;=@";
  std::string uri;
  for (const char c : file) {
    const bool isPlain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                         kPlain.find(c) != std::string_view::npos;
    if (isPlain) {
      uri += c;
      continue;
    }
    std::array<char, 4> escaped{};
    std::snprintf(escaped.data(), escaped.size(), "%%%02X",
                  static_cast<unsigned>(static_cast<std::uint8_t>(c)));
    uri += escaped.data();
  }
  return uri;
}

/// Static Analysis Results Interchange Format 2.1.0 (OASIS).
Json AsSarif(const std::vector<boards::Finding>& findings) {
  Json results = Json::Array();
  for (const boards::Finding& finding : findings) {
    Json place = Json::Object().Set("artifactLocation", Json::Object().Set("uri", UriOf(finding.file)));
    if (finding.line != 0) place.Set("region", Json::Object().Set("startLine", finding.line));
    results.Add(Json::Object()
                    .Set("ruleId", finding.rule)
                    .Set("level", WordOf(finding.severity))
                    .Set("message", Json::Object().Set(
                                        "text", finding.text + (finding.text.ends_with('.') ? " " : ". ") +
                                                    finding.advice))
                    .Set("locations", Json::Array().Add(Json::Object().Set("physicalLocation", place))));
  }
  const Json driver = Json::Object().Set("name", "varnok-board").Set("version", VARNOK_VERSION);
  const Json run = Json::Object().Set("tool", Json::Object().Set("driver", driver)).Set("results", results);
  return Json::Object()
      .Set("$schema", "https://json.schemastore.org/sarif-2.1.0.json")
      .Set("version", "2.1.0")
      .Set("runs", Json::Array().Add(run));
}

int RunCheck(const Arguments& arguments) {
  const std::string format = arguments.Has("--json") ? "json" : arguments.Value("--format", "text");
  if (format != "text" && format != "lines" && format != "json" && format != "sarif")
    return Fail("--format: \"" + format + "\" is not text, lines, json or sarif", kWrongUse);
  boards::Board board;
  std::string error;
  if (arguments.Has("--board") && !boards::LoadFolder(arguments.Value("--board"), board, error))
    return Fail(error);
  boards::Checker checker(arguments.Has("--board") ? &board : nullptr);
  for (const std::string& file : arguments.Values("FILES")) checker.Check(file);
  const std::vector<boards::Finding> findings = checker.Findings();
  if (format == "text") PrintFindings(findings, checker.FileCount());
  if (format == "lines") PrintLines(findings);
  if (format == "json") PrintLine(AsJson(findings, checker.FileCount()).Text());
  if (format == "sarif") PrintLine(AsSarif(findings).Text());
  return HasErrors(findings) || (arguments.Has("--strict") && !findings.empty()) ? kFound : kDone;
}

}  // namespace

void PrintFindings(const std::vector<boards::Finding>& findings, std::size_t files) {
  std::size_t errors = 0;
  for (const boards::Finding& finding : findings) {
    errors += finding.severity == Severity::Error ? 1 : 0;
    PrintLine(finding.file + (finding.line == 0 ? "" : ", line " + std::to_string(finding.line)) + ": " +
              WordOf(finding.severity) + ": " + finding.text);
    PrintLine("    " + finding.advice);
  }
  PrintLine(std::to_string(files) + (files == 1 ? " file, " : " files, ") + std::to_string(errors) +
            (errors == 1 ? " error, " : " errors, ") + std::to_string(findings.size() - errors) +
            (findings.size() - errors == 1 ? " warning" : " warnings"));
}

bool HasErrors(const std::vector<boards::Finding>& findings) {
  return std::any_of(findings.begin(), findings.end(),
                     [](const boards::Finding& finding) { return finding.severity == Severity::Error; });
}

const Command kCheck = {
    "check", "Check FRU files, SDR files and scripts before a board sees them", kCheckOptions,
    "  varnok-board check MASTER.CFG --board myboard\n  varnok-board check *.fru --format lines", RunCheck};

}  // namespace varnok::companion
