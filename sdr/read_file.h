// The reader of SDR files: a header of keys, then one block per record with its type, tags, size and bytes.
// What is wrong in a file is named, with its line, in the manager's last-error text.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "sdr/data_set.h"
#include "sdr/file_lines.h"

namespace varnok::SdrReadFile {

/// Reads the whole file into `lists`. Records in front of a fault stay in the lists.
Status ReadSdrRecordsFromFile(SdrFileLines& file, SdrTypeList& lists);

/// Finds the header's keys, in their order. kHeaderKeyMissing, kCannotReadFile.
Status FIL_CheckSDRFileHeader(SdrFileLines& file);

using SdrTypeCounts = std::array<std::uint32_t, kSdrTypeCount>;

/// Counts the records from here to the end of the block. kFileTypeNotSupported, kHeaderKeyMissing when the
/// block does not end, kCannotReadFile.
Status FIL_CountIPMI10SDRTypes(SdrFileLines& file, const SdrTypeOrder& typeOrder, SdrTypeCounts& counts,
                               std::uint32_t& total);

/// Reads the next record: its bytes and its tags. kTokenNotFound, kBadRecordInFile, kCannotReadFile,
/// kUnterminatedText, kFileType, kFileLength.
Status ReadRecFromFile(SdrFileLines& file, std::vector<std::uint8_t>& record, SdrTagList& tags);

/// The value of the next line with the token. kTokenNotFound at the end of the block, kHeaderKeyMissing at
/// the end of the file, kCannotReadFile.
Status FIL_SearchForToken(SdrFileLines& file, std::string_view token, std::string& value);
/// The same, ending at the next record, too.
Status FIL_SearchForTokenWithinRecord(SdrFileLines& file, std::string_view token, std::string& value);

}  // namespace varnok::SdrReadFile

namespace varnok::SdrUtility {

/// Hexadecimal digits up to the first other character; the low 32 bits of a longer number, 0 without digits.
std::uint32_t AHextoUINT32(std::string_view text);

}  // namespace varnok::SdrUtility
