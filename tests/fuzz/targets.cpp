#include <algorithm>

#include "tests/fuzz/target.h"

namespace varnok::fuzz {
namespace {

// clang-format off
constexpr Target kTargets[] = {
    {"program", RunProgram},          {"script", RunScript},
    {"fru-file", RunFruFile},         {"sdr-file", RunSdrFile},
    {"fru-image", RunFruImage},       {"sdr-repository", RunRepository},
    {"smbios", RunSmbiosTable},       {"command-line", RunCommandLine},
    {"bmc-answers", RunAnswers},      {"board-json", RunDescription},
    {"formatter", RunFormatter},      {"scanner", RunScanner},
    {"kcs", RunKcs},                  {"server", RunServer},
    {"companion", RunCompanion},      {"start-cfg", RunMenuFile},
    {"answer-file", RunAnswerFile},
};
// clang-format on

}  // namespace

std::span<const Target> Targets() {
  return kTargets;
}

const Target* FindTarget(std::string_view name) {
  const auto* found = std::ranges::find(kTargets, name, &Target::name);
  return found == std::end(kTargets) ? nullptr : found;
}

}  // namespace varnok::fuzz
