// varnok-board import: a board folder from dumps that other tools wrote.
#include <algorithm>
#include <optional>
#include <set>

#include "boards/field_text.h"
#include "boards/folder.h"
#include "boards/identity_text.h"
#include "programs/board/command.h"
#include "programs/board/output.h"

namespace varnok::companion {
namespace {

using boards::Board;
using boards::Bytes;

constexpr Option kImportOptions[] = {
    {"FOLDER", "", "The folder to make", Option::Required},
    {"--fru", "ID=FILE", "A FRU image of \"ipmitool fru read\": 0=board.bin, 2@C0=back.bin", Option::Many},
    {"--eeprom", "ID=FILE", "An EEPROM: kind, bus byte, address: AT24C02:03:A0=supply.bin", Option::Many},
    {"--sdr", "FILE", "The SDR repository of \"ipmitool sdr dump\""},
    {"--smbios", "FILE", "The SMBIOS tables of \"dmidecode --dump-bin\""},
    {"--identity", "FILE", "The text of \"ipmitool mc info\""},
};

constexpr std::size_t kLargestFru = 0xFFFF;
constexpr std::size_t kLargestDs1624s = 256;
constexpr std::size_t kLargestAt24c02 = 0x10000;

std::size_t LargestOf(boards::DeviceKind kind) {
  if (kind == boards::DeviceKind::Fru) return kLargestFru;
  return kind == boards::DeviceKind::Ds1624s ? kLargestDs1624s : kLargestAt24c02;
}

/// Collects what the options name; the first error ends it.
class Importer {
 public:
  explicit Importer(Board& board) : board_(board) {}

  bool TakeDevice(const std::string& option, const std::string& text) {
    const std::size_t equals = text.find('=');
    const auto address = boards::ParseDeviceName(text.substr(0, equals));
    const bool isFru = address && address->kind == boards::DeviceKind::Fru;
    if (equals == std::string::npos || equals + 1 == text.size() || !address || isFru != (option == "--fru"))
      return Refuse(
          option + ": \"" + text + "\" is not like " +
              (option == "--fru" ? "0=board.bin or 2@C0=backplane.bin" : "AT24C02:03:A0=supply.bin"),
          kWrongUse);
    if (board_.Find(*address) != nullptr)
      return Refuse(option + ": " + NameOf(*address) + " is named twice", kWrongUse);
    boards::Device device{.address = *address};
    const std::string file = text.substr(equals + 1);
    if (!boards::ReadFile(file, device.bytes, error_)) return false;
    const std::size_t largest = LargestOf(address->kind);
    if (device.bytes.empty() || device.bytes.size() > largest)
      return Refuse(file + ": has " + std::to_string(device.bytes.size()) +
                    " bytes; such a device has 1 to " + std::to_string(largest));
    if (board_.FindController(address->controller, address->channel) == nullptr)
      board_.controllers.push_back({address->controller, address->channel, "", std::nullopt});
    board_.devices.push_back(std::move(device));
    return true;
  }

  bool TakeRecords(const std::string& file) {
    Bytes dump;
    if (!boards::ReadFile(file, dump, error_)) return false;
    const std::size_t rest = boards::SplitRecords(dump, board_.records).size();
    if (rest != 0)
      return Refuse(file + ": the record at byte " + std::to_string(dump.size() - rest) +
                    " goes past the end of the file");
    std::set<unsigned> ids;
    for (const Bytes& record : board_.records)
      if (const unsigned id = record[0] | record[1] << 8; !ids.insert(id).second)
        return Refuse(file + ": two records have the ID " + std::to_string(id));
    return true;
  }

  bool TakeSmbios(const std::string& file) {
    constexpr std::string_view kAnchors[] = {"_SM_", "_SM3_"};
    if (!boards::ReadFile(file, board_.smbios, error_)) return false;
    const bool isDump =
        std::any_of(std::begin(kAnchors), std::end(kAnchors), [this](std::string_view anchor) {
          return board_.smbios.size() > anchor.size() &&
                 std::equal(anchor.begin(), anchor.end(), board_.smbios.begin());
        });
    return isDump ||
           Refuse(file +
                  ": does not begin with an SMBIOS entry point, as \"dmidecode --dump-bin\" writes it");
  }

  bool TakeIdentity(const std::string& file) {
    Bytes bytes;
    if (!boards::ReadFile(file, bytes, error_)) return false;
    std::string complaint;
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return boards::ReadIdentityText(text, board_.bmc.identity.emplace(), complaint) ||
           Refuse(file + ": " + complaint);
  }

  bool Take(const Arguments& arguments) {
    for (const std::string option : {"--fru", "--eeprom"})
      for (const std::string& text : arguments.Values(option))
        if (!TakeDevice(option, text)) return false;
    return (!arguments.Has("--sdr") || TakeRecords(arguments.Value("--sdr"))) &&
           (!arguments.Has("--smbios") || TakeSmbios(arguments.Value("--smbios"))) &&
           (!arguments.Has("--identity") || TakeIdentity(arguments.Value("--identity")));
  }

  /// Says what was wrong and gives the exit status for it.
  int Report() const { return Fail(error_, status_); }

 private:
  bool Refuse(std::string error, ExitStatus status = kFailed) {
    error_ = std::move(error);
    status_ = status;
    return false;
  }

  Board& board_;
  std::string error_;
  ExitStatus status_ = kFailed;
};

int RunImport(const Arguments& arguments) {
  const bool hasInput = std::any_of(std::begin(kImportOptions) + 1, std::end(kImportOptions),
                                    [&](const Option& option) { return arguments.Has(option.name); });
  if (!hasInput) return Fail("name at least one file to import\nSee varnok-board import --help.", kWrongUse);
  Board board;
  board.bmc.name = "BMC";
  Importer importer(board);
  if (!importer.Take(arguments)) return importer.Report();
  std::string error;
  const std::string folder = arguments.Value("FOLDER");
  if (!boards::SaveFolder(folder, board, error)) return Fail(error);
  PrintLine("Made the board " + folder + ": " + boards::Plural(board.devices.size(), "device") + ", " +
            boards::Plural(board.records.size(), "SDR") + ".");
  if (board.smbios.empty())
    Note("Without --smbios the board has no SMBIOS tables, and VARNOK ends with status 8 on it.");
  return kDone;
}

}  // namespace

const Command kImport = {"import", "Make a board folder from dumps of a board", kImportOptions,
                         "  varnok-board import myboard --fru 0=board.bin --sdr sdr.bin --smbios smbios.bin",
                         RunImport};

}  // namespace varnok::companion
