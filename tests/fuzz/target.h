// What is fuzzed: a table of targets, each of which takes an input of any bytes. A fault is what the
// sanitizers find, an abort, and a run that does not end.
#pragma once

#include <span>
#include <string_view>

namespace varnok::fuzz {

struct Target {
  std::string_view name;
  void (*run)(std::string_view input);
};

std::span<const Target> Targets();
/// Null when there is none of that name.
const Target* FindTarget(std::string_view name);

// The targets, by what they read. The program as a whole, with a part of its input:
void RunProgram(std::string_view input);
void RunScript(std::string_view input);
void RunFruFile(std::string_view input);
void RunSdrFile(std::string_view input);
void RunFruImage(std::string_view input);
void RunRepository(std::string_view input);
void RunSmbiosTable(std::string_view input);
void RunCommandLine(std::string_view input);
void RunAnswers(std::string_view input);
void RunDescription(std::string_view input);
// Parts:
void RunFormatter(std::string_view input);
void RunScanner(std::string_view input);
void RunKcs(std::string_view input);
void RunMenuFile(std::string_view input);
void RunAnswerFile(std::string_view input);
void RunServer(std::string_view input);
void RunCompanion(std::string_view input);

}  // namespace varnok::fuzz
