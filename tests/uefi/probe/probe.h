// PROBE.EFI runs the facade and the driver as the program does, one small question per command line, and
// shows the answers for the end-to-end tests to judge.
#pragma once

#include <string_view>
#include <type_traits>

#include "app/services/console.h"
#include "firmware/firmware.h"

namespace varnok::probe {

int ProbeFiles(int count, char* words[]);
int ProbeIpmi(int count, char* words[]);

/// Shows one answer as "name: value".
template <class Value>
void Answer(std::u16string_view name, const Value& value) {
  if constexpr (std::is_integral_v<Value>)
    Print("%ls: %d\n", name, value);
  else
    Print("%ls: %s\n", name, value);
}
inline void AnswerStatus(std::u16string_view name, Status status) {
  Print("%ls: status %X\n", name, status);
}

}  // namespace varnok::probe
