// Rehearsals as reports.
#pragma once

#include "rehearsal/report.h"
#include "rehearsal/run_once.h"

namespace varnok::rehearsal {

/// Puts the roads of a rehearsal into a report, boards that are equal once.
class ReportBuilder {
 public:
  explicit ReportBuilder(Stage& stage);

  /// The index of a question, which is added when it is new.
  std::size_t Add(const Question& question);
  /// The index of the board that holds these images.
  std::size_t Add(const Images& images);
  /// A road that was gone to its end.
  void Add(Outcome outcome);
  void Add(Road road) { report_.roads.push_back(std::move(road)); }
  void MarkTags(const std::vector<std::string>& tags) { tags_.insert(tags.begin(), tags.end()); }

  /// The report, with what its roads tell together.
  Report Finish();
  Report& SoFar() { return report_; }

 private:
  Stage& stage_;
  Report report_;
  std::vector<Images> images_;
  std::map<std::uint64_t, std::vector<std::size_t>> boardsByHash_;
  std::set<std::string> tags_;
};

/// The answers of a road as steps of the report.
std::vector<Answer> StepsOf(ReportBuilder& builder, const std::vector<Given>& given);

}  // namespace varnok::rehearsal
