#include "programs/board/command.h"

namespace varnok::companion {

std::string Arguments::Value(std::string_view name, std::string_view fallback) const {
  const auto found = values_.find(name);
  return std::string(found == values_.end() ? fallback : std::string_view(found->second.front()));
}

std::vector<std::string> Arguments::Values(std::string_view name) const {
  const auto found = values_.find(name);
  return found == values_.end() ? std::vector<std::string>{} : found->second;
}

}  // namespace varnok::companion
