#include "sim/logged_machine.h"

#include <chrono>
#include <utility>

#include "firmware/host/machine_filter.h"
#include "sim/files.h"
#include "sim/traffic_log.h"

namespace varnok::sim {
namespace {

class LoggedMachine : public host::MachineFilter {
 public:
  explicit LoggedMachine(std::unique_ptr<host::Machine> below)
      : MachineFilter(std::move(below)), log_([start = std::chrono::steady_clock::now()] {
          const auto passed = std::chrono::steady_clock::now() - start;
          return std::chrono::duration_cast<std::chrono::microseconds>(passed).count();
        }) {}

  bool Open(const std::string& path) { return log_.Open(path); }

 protected:
  void Asking(const host::SentRequest& request) override {
    request_ = {
        request.netFunction, request.lun, request.command, {request.data.begin(), request.data.end()}};
    isAwaited_ = true;
    log_.Asked(BusPlace{}, request_);
  }
  void Refused(Status) override { EndWithout("refused"); }
  void NotAnswered(Status) override { EndWithout("lost"); }
  void Answered(const host::ReceivedAnswer& answer) override {
    isAwaited_ = false;
    log_.Answered(BusPlace{}, {answer.netFunction,
                               answer.lun,
                               answer.command,
                               answer.completionCode,
                               {answer.data.begin(), answer.data.end()}});
  }

 private:
  /// One line, however often the program tries to receive.
  void EndWithout(std::string_view word) {
    if (std::exchange(isAwaited_, false)) log_.Unanswered(BusPlace{}, request_, word, {});
  }

  TrafficLog log_;
  Request request_;
  bool isAwaited_ = false;
};

}  // namespace

std::unique_ptr<host::Machine> WithTrafficLog(std::unique_ptr<host::Machine> machine,
                                              const Environment& environment, std::string& error) {
  const std::string path = environment("VARNOK_TRAFFIC").value_or("");
  if (machine == nullptr || path.empty()) return machine;
  auto logged = std::make_unique<LoggedMachine>(std::move(machine));
  if (logged->Open(path)) return logged;
  error = Printable(path) + ": the traffic log cannot be written";
  return nullptr;
}

}  // namespace varnok::sim
