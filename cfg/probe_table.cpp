#include "cfg/probe_table.h"

#include "app/services/text.h"

namespace varnok {

const ProbeRow* FindProbe(std::string_view keyword) {
  for (auto family : kProbeFamilies)
    for (const ProbeRow& row : family())
      if (EqualsIgnoreCase(keyword, row.keyword)) return &row;
  return nullptr;
}

}  // namespace varnok
