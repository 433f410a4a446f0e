#include "rehearsal/views.h"

#include "firmware/host/hex.h"
#include "rehearsal/answers.h"
#include "rehearsal/run_once.h"

namespace varnok::rehearsal {
namespace {

using host::HexByte;

std::vector<std::string> ShowCommand(const boards::DeviceAddress& address) {
  switch (address.kind) {
    case boards::DeviceKind::At24c02:
      return {"varnok", "/d", "fru", "AT24C02", HexByte(address.bus), HexByte(address.slave)};
    case boards::DeviceKind::Ds1624s:
      return {"varnok", "/d", "fru", "DS1624S", HexByte(address.bus), HexByte(address.slave)};
    case boards::DeviceKind::Fru:
      break;
  }
  if (address.controller == boards::kBmc) return {"varnok", "/d", "fru", "IMBDEVICE", HexByte(address.id)};
  return {"varnok", "/d", "fru", "IMBDEVICE", 'C' + HexByte(address.controller), HexByte(address.id)};
}

}  // namespace

std::vector<View> ViewsOf(const boards::Board& board) {
  std::vector<View> views;
  for (const boards::Device& device : board.devices) {
    const bool isFru = device.address.kind == boards::DeviceKind::Fru;
    views.push_back({(isFru ? "FRU " : "") + NameOf(device.address), ShowCommand(device.address)});
  }
  if (board.hasRepository) views.push_back({"SDR", {"varnok", "/d", "sdr"}});
  return views;
}

bool Shows(Stage& stage, const View& view, const Images& images) {
  SameAnswers none({});
  Outcome outcome;
  std::string ignored;
  stage.Put(images);
  stage.SetArguments(view.command);
  return RunOnce(stage, none, outcome, ignored) && outcome.run.exitStatus == 0;
}

}  // namespace varnok::rehearsal
