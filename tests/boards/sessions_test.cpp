#include "tests/support/session.h"

namespace varnok::testing {
namespace {

TEST(Sessions, EndAsTheyAreWritten) {
  PlaySessions("boards/sessions.txt", "b=" VARNOK_BOARD_PROGRAM);
}

}  // namespace
}  // namespace varnok::testing
