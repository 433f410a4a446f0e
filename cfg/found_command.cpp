#include "cfg/found_command.h"

#include "app/services/console.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"

namespace varnok {

Status CCfgFound::ReadFromFile(CFileCfg& file) {
  TraceScope scope("CCfgFound::ReadFromFile");
  std::string rest;
  if (!ReadLineFromFile(file, rest)) return cfg_status::kBadLine;
  std::string_view cursor = rest;
  std::string tag;
  if (!GetNextInput(cursor, tag)) return MissingParameter("first", cfg_status::kBadLine);
  foundTag_ = tag;
  if (!IsBufferEmpty(cursor) && GetNextInput(cursor, tag)) notFoundTag_ = tag;
  return RefuseExtra(cursor, cfg_status::kTooManyParameters);
}

Status CCfgFound::Process() {
  TraceScope scope("CCfgFound::Process");
  const std::optional<std::string>& tag = isFound_ ? foundTag_ : notFoundTag_;
  if (tag && parser_ != nullptr) parser_->SetTag(tag->c_str());
  return kSuccess;
}

bool CCfgFound::IsValidCommandLocation() {
  TraceScope scope("CCfgFound::IsValidCommandLocation");
  CCfgParser::SetLastError("Command %s can not be used here, it must directly follow a PROBE command.",
                           GetDisplayName());
  Trace("CCfgFound::IsValidCommandLocation - FOUND without PROBE", 1);
  return false;
}

void CCfgFound::DebugPrint() {
  Print("FOUND");
  for (const auto* tag : {&foundTag_, &notFoundTag_})
    if (*tag) Print("%s%s", tag == &foundTag_ ? ":\t" : "\t", **tag);
  Print("\n");
}

}  // namespace varnok
