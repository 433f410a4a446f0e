#include "rehearsal/rehearse.h"

#include <algorithm>

#include "rehearsal/hash.h"

namespace varnok::rehearsal {

ReportBuilder::ReportBuilder(Stage& stage) : stage_(stage) {
  const std::vector<std::string>& arguments = stage.Arguments();
  report_.command.assign(arguments.begin() + 1, arguments.end());
  report_.board = stage.Folder().string();
  report_.script = stage.TheScript().lines;
  report_.package = stage.TheScript().file;
  for (const std::string& argument : report_.command)
    if (stage.TheScript().file.empty()) report_.package += (report_.package.empty() ? "" : " ") + argument;
}

std::size_t ReportBuilder::Add(const Question& question) {
  const auto found = std::find(report_.questions.begin(), report_.questions.end(), question);
  const auto index = static_cast<std::size_t>(found - report_.questions.begin());
  if (found == report_.questions.end()) report_.questions.push_back(question);
  return index;
}

std::size_t ReportBuilder::Add(const Images& images) {
  std::uint64_t hash = 0;
  for (const Bytes& image : images) hash = Mixed(hash, HashOf(image));
  std::vector<std::size_t>& alike = boardsByHash_[hash];
  for (std::size_t index : alike)
    if (images_[index] == images) return index;
  alike.push_back(images_.size());
  images_.push_back(images);
  report_.boards.push_back(stage_.Describe(images));
  return alike.back();
}

std::vector<Answer> StepsOf(ReportBuilder& builder, const std::vector<Given>& given) {
  std::vector<Answer> answers;
  answers.reserve(given.size());
  for (const Given& each : given)
    answers.push_back(
        {.question = builder.Add(each.question), .text = each.text, .isInvalid = each.isInvalid});
  return answers;
}

void ReportBuilder::Add(Outcome outcome) {
  outcome.run.board = Add(outcome.images);
  MarkTags(outcome.tags);
  Road road{.answers = StepsOf(*this, outcome.given), .run = std::move(outcome.run), .lines = outcome.lines};
  Add(std::move(road));
}

Report ReportBuilder::Finish() {
  for (std::size_t i = 0; i < report_.roads.size(); ++i) {
    const Road& road = report_.roads[i];
    for (std::size_t line : road.lines)
      if (line <= report_.script.size()) ++report_.script[line - 1].reached;
    if (road.run.exitStatus != 0 && road.run.writes != 0) report_.brokenRoads.push_back(i);
  }
  for (const std::string& tag : stage_.TheScript().tags)
    if (!tags_.contains(tag)) report_.unsetTags.push_back(tag);
  for (std::size_t i = 0; i < images_.size(); ++i) report_.boards[i].images = std::move(images_[i]);
  return std::move(report_);
}

}  // namespace varnok::rehearsal
