#include "programs/start/ending.h"

#include <span>

#include "app/services/format.h"
#include "app/services/text.h"

namespace varnok::start {
namespace {

struct StatusWords {
  Status status;
  const char* words;
};

// Why the firmware starts no image (UEFI 2.10, section 7.4).
constexpr const char* kRefused =
    "the firmware refuses it: Secure Boot is on, and it is not signed with a certificate that the firmware knows";
constexpr StatusWords kNotStarted[] = {
    {uefi_status::kNotFound, "it is not on the stick"},
    {uefi_status::kAccessDenied, kRefused},
    {uefi_status::kSecurityViolation, kRefused},
    {uefi_status::kUnsupported, "it is no program for this firmware"},
    {uefi_status::kLoadError, "it is no program, or it is damaged"},
    {uefi_status::kOutOfResources, "there is not enough memory"},
    {uefi_status::kDeviceError, "the stick cannot be read"},
};

// A script's own error level may be any of these numbers, too.
constexpr StatusWords kVarnok[] = {
    {1, "the command line is wrong"},
    {2, "a file could not be read or written"},
    {3, "the BMC does not answer, or it is being updated"},
    {4, "writing to the board failed, or what it holds is not what was written"},
    {5, "FRU, SDR or a file of them could not be read"},
    {6, "the script could not be read"},
    {7, "the script could not be carried out"},
    {8, "the SMBIOS tables could not be read"},
    {9, "no way to the BMC: ipmi.efi is missing, was refused, or found none"},
    {12, "there was no memory for the arguments"},
};
constexpr StatusWords kSnapshot[] = {
    {1, "something could not be read, or was not wanted"},
    {2, "wrong use"},
    {3, "it could not be done"},
};
// A platform's status has its top bit set.
constexpr Status kLastOwnStatus = 0xFFFF;
// How an image ends that its own status does not tell.
constexpr const char* kNotAllowed = "the firmware does not allow it while Secure Boot is on";
constexpr StatusWords kEnds[] = {
    {uefi_status::kOutOfResources, "memory ran out"},
    {uefi_status::kDeviceError, "the console or a device failed"},
    {uefi_status::kAborted, "it was aborted"},
    {uefi_status::kAccessDenied, kNotAllowed},
    {uefi_status::kSecurityViolation, kNotAllowed},
};

struct ProgramRow {
  std::string_view name;
  std::span<const StatusWords> words;
  const char* others;  ///< for any other status; null: no words
};
constexpr ProgramRow kPrograms[] = {{"VARNOK", kVarnok, "the script's error level"},
                                    {"SNAPSHOT", kSnapshot, nullptr}};

const char* Find(std::span<const StatusWords> rows, Status status) {
  for (const StatusWords& row : rows)
    if (row.status == status) return row.words;
  return nullptr;
}

/// Of a status that the program itself ended with.
const char* WordsOf(std::string_view program, Status status) {
  for (const ProgramRow& row : kPrograms) {
    if (!EqualsIgnoreCase(row.name, program)) continue;
    const char* words = Find(row.words, status);
    return words != nullptr ? words : row.others;
  }
  return nullptr;
}

}  // namespace

std::string_view ProgramName(std::string_view command) {
  std::string_view name = command.substr(0, command.find_first_of(" \t"));
  name = name.substr(name.find_last_of("\\/") + 1);
  const std::size_t dot = name.rfind('.');
  return dot != std::string_view::npos && EqualsIgnoreCase(name.substr(dot), ".efi") ? name.substr(0, dot)
                                                                                     : name;
}

std::string EndingText(std::string_view program, const Ending& ending) {
  if (!ending.isStarted) {
    const char* words = Find(kNotStarted, ending.status);
    const std::string reason = words != nullptr ? words : Format("the firmware says %llX", ending.status);
    return Format("%s was not started: %s.", program, reason);
  }
  if (ending.status == kSuccess) return Format("%s: done.", program);
  const bool isOwn = ending.status <= kLastOwnStatus;
  const char* words = isOwn ? WordsOf(program, ending.status) : Find(kEnds, ending.status);
  // Scripts count in hexadecimal.
  const char* format = !isOwn               ? "%s ended with %llX"
                       : ending.status <= 9 ? "%s ended with %u"
                                            : "%s ended with %u (%Xh)";
  const std::string text = Format(format, program, ending.status, ending.status);
  return words != nullptr ? Format("%s: %s.", text, words) : text + '.';
}

}  // namespace varnok::start
