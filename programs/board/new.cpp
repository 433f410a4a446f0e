// varnok-board new: a board folder to begin with.
#include "boards/folder.h"
#include "programs/board/command.h"
#include "programs/board/output.h"

namespace varnok::companion {
namespace {

constexpr Option kNewOptions[] = {
    {"FOLDER", "", "The folder to make", Option::Required},
    {"--empty", "", "An erased FRU device and an empty SDR repository in place of the default board"},
};

int RunNew(const Arguments& arguments) {
  const std::string folder = arguments.Value("FOLDER");
  std::string error;
  const bool isMade = arguments.Has("--empty") ? boards::SaveFolder(folder, boards::EmptyBoard(), error)
                                               : boards::SaveDefaultBoard(folder, error);
  if (!isMade) return Fail(error);
  PrintLine("Made the board " + folder + "; VARNOK_BOARD=" + folder + " ./varnok /d fru shows it.");
  return kDone;
}

}  // namespace

const Command kNew = {"new", "Make a board folder, with the default board in it", kNewOptions,
                      "  varnok-board new myboard --empty", RunNew};

}  // namespace varnok::companion
