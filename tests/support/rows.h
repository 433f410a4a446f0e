// Cases of a test as rows of a text file beside it, one a line:
//
//   // SET takes one tag.
//   {SET; CLEAR} a b => The $ command takes one tag.
//
// Each alternative in braces makes a case of its own; '$' in the answer stands for its first word. \n, \r,
// \b, \t, \0 and \xE9 are characters, \*9x is nine times x.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/split.h"

namespace varnok::testing {

struct Row {
  std::string text, answer;
};

/// A row's text with its escapes resolved; any other backslash is one.
inline std::string Unescape(std::string_view text) {
  static constexpr std::string_view kLetters = "nrbt0", kCharacters{"\n\r\b\t\0", 5};
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::string next(text.substr(i + 1, 1));
    std::size_t known = next.empty() ? std::string::npos : kLetters.find(next);
    if (text[i] != '\\' || (known == std::string::npos && next != "x" && next != "*")) {
      plain += text[i];
    } else if (known != std::string::npos) {
      plain += kCharacters[known];
      ++i;
    } else {
      std::size_t length = next == "x" ? 2 : text.find_first_not_of("0123456789", i + 2) - i - 2;
      auto number = std::stoul(std::string(text.substr(i + 2, length)), nullptr, next == "x" ? 16 : 10);
      i += 1 + length;
      plain += next == "x" ? std::string(1, static_cast<char>(number)) : std::string(number, text[++i]);
    }
  }
  return plain;
}

/// The rows of a file; a test fails without any, or at a line that is none.
inline std::vector<Row> Rows(const std::string& path) {
  std::vector<Row> rows;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line.starts_with("//")) continue;
    std::size_t arrow = line.find(" =>");
    EXPECT_NE(arrow, std::string::npos) << path << ": " << line;
    std::string text = line.substr(0, arrow), answer = line.substr(std::min(line.size(), arrow + 4));
    std::size_t open = std::min(text.find('{'), text.size()), close = text.find('}');
    bool isList = close != std::string::npos;
    for (const std::string& each : Split(isList ? text.substr(open + 1, close - open - 1) : "")) {
      rows.push_back({text, answer});
      Row& row = rows.back();
      if (isList) row.text.replace(open, close + 1 - open, each);
      if (std::size_t mark = answer.find('$'); isList && mark != std::string::npos)
        row.answer.replace(mark, 1, each.substr(0, each.find(' ')));
      row = {Unescape(row.text), Unescape(row.answer)};
    }
  }
  EXPECT_FALSE(rows.empty()) << path;
  return rows;
}

}  // namespace varnok::testing
