#include "sim/traffic_log.h"

#include <fcntl.h>

#include <cstdio>

#include "firmware/host/hex.h"
#include "firmware/host/host_firmware.h"
#include "sim/error.h"
#include "sim/files.h"

namespace varnok::sim {
namespace {

void AppendBytes(std::string& text, std::span<const std::uint8_t> bytes) {
  for (std::uint8_t byte : bytes) text += " " + host::HexByte(byte);
}

/// The arrow and the address: the BMC at its system interface, or a controller with its channel.
std::string PlaceText(const BusPlace& place, char arrow) {
  if (place.isBmc) return std::string(1, arrow) + " " + host::HexByte(place.address);
  return std::string(2, arrow) + " " + host::HexByte(place.address) + "@" + std::to_string(place.channel);
}

std::string CommandText(std::uint8_t netFunction, std::uint8_t lun, std::uint8_t command) {
  return " " + host::HexByte(netFunction) + "/" + std::to_string(lun) + " " + host::HexByte(command);
}

}  // namespace

bool TrafficLog::Open(const std::string& path) {
  path_ = path;
  file_ = Descriptor(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
  return file_.IsOpen();
}

void TrafficLog::Line(std::string text, std::string_view remark) {
  if (!file_.IsOpen()) return;
  char time[32];
  const std::uint64_t now = clock_();
  const int length =
      std::snprintf(time, sizeof time, "%06llu.%06llu ", static_cast<unsigned long long>(now / 1'000'000),
                    static_cast<unsigned long long>(now % 1'000'000));
  text.insert(0, time, static_cast<std::size_t>(length));
  if (!remark.empty()) text += " # " + Printable(remark);
  text += '\n';
  try {
    WriteAll(file_, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, path_);
  } catch (const BoardError& error) {
    host::Complain(Printable(error.what()) + "; the traffic log ends here");
    file_.Close();
  }
}

void TrafficLog::Asked(const BusPlace& place, const Request& request) {
  if (observer_ != nullptr) observer_->Asked(place, request);
  if (!file_.IsOpen()) return;
  std::string text = PlaceText(place, '>') + CommandText(request.netFunction, request.lun, request.command);
  AppendBytes(text, request.data);
  Line(std::move(text));
}

void TrafficLog::Answered(const BusPlace& place, const Response& response, std::string_view remark) {
  if (observer_ != nullptr) observer_->Answered(place, response);
  if (!file_.IsOpen()) return;
  std::string text = PlaceText(place, '<') +
                     CommandText(response.netFunction, response.lun, response.command) +
                     " cc=" + host::HexByte(response.completionCode);
  AppendBytes(text, response.data);
  Line(std::move(text), remark);
}

void TrafficLog::Unanswered(const BusPlace& place, const Request& request, std::string_view word,
                            std::string_view remark) {
  if (observer_ != nullptr) observer_->Unanswered(place);
  if (!file_.IsOpen()) return;
  Line(PlaceText(place, '<') +
           CommandText(static_cast<std::uint8_t>(request.netFunction + 1), request.lun, request.command) +
           " " + std::string(word),
       remark);
}

void TrafficLog::Event(std::string_view text) {
  if (file_.IsOpen()) Line("! " + Printable(text));
}

void TrafficLog::Failure(std::string_view text) {
  Event(text);
  if (!isFailureTold_) std::fprintf(stderr, "varnok: %s\n", Printable(text).c_str());
  isFailureTold_ = true;
}

void TrafficLog::PowerCut(std::string_view text) {
  Event(text);
  if (observer_ != nullptr) observer_->PowerIsCut();
}

}  // namespace varnok::sim
