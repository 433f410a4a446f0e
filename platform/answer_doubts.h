// Answers of the BMC that the run went on without, or on which it relied though they may be those to other
// requests: most answers do not say what they answer. The operator is told at the end of a run that succeeds.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/ipmi_message.h"

namespace varnok {

enum class AnswerDoubt : std::uint8_t {
  Missing,   ///< none came; if it comes late it may be taken for another's
  Foreign,   ///< one to another command
  Repeated,  ///< the bytes of the answer before, where others were asked for
  Useless,   ///< one that does not hold what was asked for
};
void NoteDoubt(AnswerDoubt doubt);

/// Notes a repeated answer. `device` and `place` say what was asked for; `head` bytes of the answer stand in
/// front of the content. A content of one byte value only is no sign: storage is filled so.
void WatchForRepeat(std::uint64_t device, std::uint32_t place, const IpmiMessage& answer, std::size_t head);
/// Notes an answer of FFh alone as useless: so reads a bus on which nothing drives the lines. One byte
/// or two may be that by right, and so may the content of erased storage.
void WatchForErased(const IpmiMessage& answer);

/// While it lives nothing is noted: a BMC that was told to restart does not answer.
class ExpectedSilence {
 public:
  ExpectedSilence();
  ~ExpectedSilence();
  ExpectedSilence(const ExpectedSilence&) = delete;
  ExpectedSilence& operator=(const ExpectedSilence&) = delete;
};

/// One line on the error output when there were doubts.
void WarnOfDoubts();

}  // namespace varnok
