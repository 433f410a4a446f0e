// What the rehearsals of one board and of many take from their command line.
#pragma once

#include <string>
#include <vector>

#include "programs/board/command.h"
#include "rehearsal/answers.h"

namespace varnok::companion {

/// The program's arguments: as given, or those that run the script.
std::vector<std::string> ProgramArguments(const Arguments& arguments);
/// Reads the file of --answers, if there is one. False, with `error` set, when it cannot be read.
bool ReadAnswers(const Arguments& arguments, rehearsal::AnswerFile& file, std::string& error);
/// A number from 1 on; false, and the error is told, for anything else.
bool ReadNumber(const Arguments& arguments, const char* option, std::size_t& number);
/// Processes that this computer runs at once.
unsigned Cores();

/// rehearse --boards.
int RehearseBoards(const Arguments& arguments);

}  // namespace varnok::companion
