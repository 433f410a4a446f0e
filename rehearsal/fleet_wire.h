// A board of a fleet on its way from the process that rehearsed it.
#pragma once

#include "rehearsal/fleet.h"
#include "rehearsal/wire.h"

namespace varnok::rehearsal {

template <class Archive>
void Transfer(Archive& archive, Area& area) {
  archive(area.name, area.offset, area.length);
}
template <class Archive>
void Transfer(Archive& archive, DeviceImage& device) {
  archive(device.device, device.before, device.after, device.areasBefore, device.areasAfter);
}
template <class Archive>
void Transfer(Archive& archive, boards::Difference& difference) {
  archive(difference.change, difference.part, difference.group, difference.field, difference.before,
          difference.after, difference.isText);
}
template <class Archive>
void Transfer(Archive& archive, BoardAfter& after) {
  archive(after.differences, after.devices);
}
template <class Archive>
void Transfer(Archive& archive, DeviceContent& content) {
  archive(content.device, content.hash);
}
template <class Archive>
void Transfer(Archive& archive, FleetEnd& end) {
  archive(end.fate, end.exitStatus, end.message, end.changes, end.reasons, end.roads, end.results,
          end.requests, end.writes, end.microseconds, end.answers, end.first, end.contents);
}
template <class Archive>
void Transfer(Archive& archive, FleetBoard& board) {
  archive(board.name, board.error, board.ends, board.lines, board.tags, board.unusedAnswers, board.roads,
          board.roadsCut, board.runs);
}

}  // namespace varnok::rehearsal
