#include <array>
#include <memory>
#include <string>
#include <vector>

#include "app/services/text.h"
#include "tests/uefi/probe/probe.h"

namespace varnok::probe {
namespace {

void Read(const std::u16string& name) {
  std::unique_ptr<File> file;
  Status status = TheFirmware().OpenFile(name, FileMode::Read, file);
  if (status != kSuccess) return AnswerStatus(u"read", status);
  std::string content;
  std::array<std::uint8_t, 5> part;
  for (std::size_t count = 1; count > 0;) {
    status = file->Read(part, count);
    content.append(part.begin(), part.begin() + count);
  }
  if (status != kSuccess) return AnswerStatus(u"read", status);
  Answer(u"read", std::string_view(content));
}

void Put(const std::u16string& name, FileMode mode, std::string_view text) {
  std::unique_ptr<File> file;
  Status status = TheFirmware().OpenFile(name, mode, file);
  if (status == kSuccess)
    status = file->Write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  AnswerStatus(mode == FileMode::Write ? u"write" : u"append", status);
}

/// Writes until the volume takes no more.
void Fill(const std::u16string& name) {
  std::unique_ptr<File> file;
  Status status = TheFirmware().OpenFile(name, FileMode::Write, file);
  if (status != kSuccess) return AnswerStatus(u"fill", status);
  std::vector<std::uint8_t> part(256 << 10, 0xF1);
  // A write that does not fit leaves what is free, so smaller ones follow.
  for (; !part.empty(); part.resize(part.size() / 2))
    for (status = kSuccess; status == kSuccess;) status = file->Write(part);
  AnswerStatus(u"fill", status);
}

}  // namespace

/// files ACTION NAME [TEXT], any number of times.
int ProbeFiles(int count, char* words[]) {
  for (int i = 0; i + 1 < count;) {
    std::string_view action = words[i];
    std::u16string name = Widen(words[i + 1]);
    i += 2;
    if (action == "read")
      Read(name);
    else if (action == "fill")
      Fill(name);
    else if (i < count)
      Put(name, action == "write" ? FileMode::Write : FileMode::Append, words[i++]);
  }
  return 0;
}

}  // namespace varnok::probe
