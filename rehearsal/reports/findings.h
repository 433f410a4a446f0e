// What a rehearsal found that somebody must look at, the gravest first: the same list in every report.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "rehearsal/report.h"

namespace varnok::rehearsal {

enum class Weight : std::uint8_t {
  Grave,    ///< a board can be harmed, or a wrong one can be taken for a right one
  Warning,  ///< the package, or its rehearsal, is not what its author meant
  Remark,   ///< may be meant
};

struct Finding {
  Weight weight = Weight::Remark;
  std::string_view rule;       ///< "false-success", "unreached": the same in all versions
  std::string title{};         ///< "3 lines that no road reaches"
  std::string detail{};        ///< which
  std::string_view chapter{};  ///< of the page: "script", "roads", "faults"
};

std::vector<Finding> FindingsOf(const Report& report);
std::string_view WordOf(Weight weight);
/// Findings without the remarks.
std::size_t SeriousCount(const std::vector<Finding>& findings);
/// The rehearsal in one sentence.
std::string Verdict(const Report& report, const std::vector<Finding>& findings);

}  // namespace varnok::rehearsal
