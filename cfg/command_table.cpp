#include "cfg/command_table.h"

#include "app/services/text.h"

namespace varnok {

const CommandRow* FindCommand(std::string_view keyword) {
  for (auto family : kCommandFamilies)
    for (const CommandRow& row : family())
      if (EqualsIgnoreCase(keyword, row.keyword)) return &row;
  return nullptr;
}

}  // namespace varnok
