#include "boards/desk_machine.h"

#include <algorithm>
#include <cstdlib>

#include "firmware/host/file_system.h"

namespace varnok::boards {

DeskMachine::DeskMachine() : previous_(InstallFirmware(this)) {}

DeskMachine::DeskMachine(const std::string& text) : text_(&text), previous_(InstallFirmware(this)) {}

DeskMachine::~DeskMachine() {
  InstallFirmware(previous_);
}

void DeskMachine::WriteErrorOutput(std::u16string_view text) {
  warnings_ += MessageLine(text);
}

Status DeskMachine::OpenFile(std::u16string_view path, FileMode mode, std::unique_ptr<File>& file) {
  if (mode != FileMode::Read) return uefi_status::kWriteProtected;
  if (text_ == nullptr) return host::OpenFile(path, mode, file);
  file = std::make_unique<TextFile>(*text_);
  return kSuccess;
}

void* DeskMachine::AllocatePool(std::size_t bytes) {
  return std::malloc(bytes);
}

void DeskMachine::FreePool(void* memory) {
  std::free(memory);
}

Status TextFile::Read(std::span<std::uint8_t> buffer, std::size_t& count) {
  count = std::min(buffer.size(), text_.size() - position_);
  std::copy_n(text_.begin() + static_cast<std::ptrdiff_t>(position_), count, buffer.begin());
  position_ += count;
  return kSuccess;
}

std::string MessageLine(std::u16string_view text) {
  std::string line;
  for (char16_t character : text)
    if (character != u'\n' && character != u'\r')
      line += character < 0x80 ? static_cast<char>(character) : '?';
  return line;
}

}  // namespace varnok::boards
