#include "boards/file_writer.h"

#include <algorithm>

#include "boards/field_text.h"

namespace varnok::boards {
namespace {

constexpr std::size_t kBytesPerLine = 16;
// A line of an SDR file has at most 255 bytes; what is longer would be read as a second line, outside its
// comment.
constexpr std::size_t kLongestComment = 180;

bool IsPlain(std::uint8_t byte) {
  return byte >= 0x20 && byte < 0x7F && byte != '\'';
}

/// `text` without control characters, cut between two characters.
std::string CommentText(std::string_view text) {
  std::string comment = Printable(text);
  if (comment.size() <= kLongestComment) return comment;
  std::size_t end = kLongestComment;
  while (end > 0 && (static_cast<std::uint8_t>(comment[end]) & 0xC0) == 0x80) --end;
  return comment.substr(0, end) + "...";
}

}  // namespace

void FileWriter::Line(std::string_view text) {
  text_.append(text).append("\n");
}

void FileWriter::Comment(std::string_view text) {
  Line(std::string(indent_, ' ') + "// " + CommentText(text));
}

void FileWriter::Put(std::string line, std::string_view comment) {
  line.insert(0, indent_, ' ');
  if (!comment.empty()) {
    line.append(line.size() < commentColumn_ ? commentColumn_ - line.size() : 1, ' ');
    line.append("// ").append(CommentText(comment));
  }
  Line(line);
}

void FileWriter::Data(ByteView bytes, std::string_view comment) {
  for (std::size_t i = 0; i < bytes.size(); i += kBytesPerLine)
    Put(HexBytes(Part(bytes, i, kBytesPerLine)), i == 0 ? comment : std::string_view());
}

void FileWriter::TextOrData(ByteView bytes) {
  if (bytes.empty()) return;
  if (!IsQuotable(bytes)) return Data(bytes);
  Put("'" + std::string(bytes.begin(), bytes.end()) + "'", {});
}

bool IsQuotable(ByteView bytes) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  // A comment begins inside quotes too, and a key of the file is found there.
  return !bytes.empty() && std::all_of(bytes.begin(), bytes.end(), IsPlain) &&
         text.find("//") == std::string_view::npos && text.find("_SDR_") == std::string_view::npos &&
         text.find("_REC_LEN") == std::string_view::npos && text.find("_SEE_") == std::string_view::npos;
}

std::string QuotedValue(std::string_view text) {
  std::string value(text);
  for (char& character : value)
    if (!IsPlain(static_cast<std::uint8_t>(character)) || character == '/') character = '_';
  return value;
}

void PutHeadRemarks(FileWriter& file, const std::vector<std::string>& losses,
                    const std::vector<std::string>& remarks) {
  if (!losses.empty()) file.Line("//\n// What a load file cannot give back:");
  for (const std::string& loss : losses) file.Line("//   - " + CommentText(loss));
  if (!remarks.empty()) file.Line("//");
  for (const std::string& remark : remarks) file.Line("// " + CommentText(remark));
}

}  // namespace varnok::boards
