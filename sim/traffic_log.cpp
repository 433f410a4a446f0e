#include "sim/traffic_log.h"

#include <cstdio>

namespace varnok::sim {
namespace {

std::string Hex(unsigned value) {
  char text[8];
  std::snprintf(text, sizeof text, "%02X", value & 0xFF);
  return text;
}

void AppendBytes(std::string& text, std::span<const std::uint8_t> bytes) {
  for (std::uint8_t byte : bytes) text += " " + Hex(byte);
}

/// The arrow and the address: the BMC at its system interface, or a controller with its channel.
std::string Place(const Controller& controller, char arrow) {
  const ControllerConfig& config = controller.Config();
  if (controller.IsBmc()) return std::string(1, arrow) + " " + Hex(config.address);
  return std::string(2, arrow) + " " + Hex(config.address) + "@" + std::to_string(config.channel);
}

std::string Command(unsigned netFunction, unsigned lun, unsigned command) {
  return " " + Hex(netFunction) + "/" + std::to_string(lun) + " " + Hex(command);
}

}  // namespace

bool TrafficLog::Open(const std::string& path) {
  file_.close();
  file_.clear();
  file_.open(path, std::ios::binary | std::ios::trunc);
  return file_.is_open();
}

void TrafficLog::Line(std::string text, std::string_view remark) {
  if (!file_.is_open()) return;
  char time[32];
  const std::uint64_t now = clock_.Elapsed();
  std::snprintf(time, sizeof time, "%06llu.%06llu ", static_cast<unsigned long long>(now / 1'000'000),
                static_cast<unsigned long long>(now % 1'000'000));
  if (!remark.empty()) text += " # " + std::string(remark);
  file_ << time << text << '\n' << std::flush;
}

void TrafficLog::Asked(const Controller& controller, const Request& request) {
  if (!file_.is_open()) return;
  std::string text = Place(controller, '>') + Command(request.netFunction, request.lun, request.command);
  AppendBytes(text, request.data);
  Line(std::move(text));
}

void TrafficLog::Answered(const Controller& controller, const Response& response, std::string_view remark) {
  if (!file_.is_open()) return;
  std::string text = Place(controller, '<') + Command(response.netFunction, response.lun, response.command) +
                     " cc=" + Hex(response.completionCode);
  AppendBytes(text, response.data);
  Line(std::move(text), remark);
}

void TrafficLog::Unanswered(const Controller& controller, const Request& request, std::string_view word,
                            std::string_view remark) {
  Line(Place(controller, '<') + Command(request.netFunction + 1u, request.lun, request.command) + " " +
           std::string(word),
       remark);
}

void TrafficLog::Event(std::string_view text) {
  Line("! " + std::string(text));
}

}  // namespace varnok::sim
