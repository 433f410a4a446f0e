#include "app/app_status.h"
#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "app/varnok.h"
#include "app/version.h"
#include "firmware/entry.h"
#include "firmware/lasting.h"
#include "platform/answer_doubts.h"

namespace varnok {
namespace {

int Run(CVarnok& application, int argc, char* argv[]) {
  if (int status = application.Initialize(); status != app_status::kSuccess) return status;
  if (int status = application.ParseCommandLine(argc, argv); status != app_status::kSuccess) return status;
  return application.Execute();
}

void ShowError(const CVarnok& application, int status) {
  const char16_t* message = application.LastErrorMessage();
  bool hasMessage = message != nullptr && *message != u'\0';
  Print("\nERROR:%s\n\n", hasMessage ? std::u16string(message) : Widen(StatusMessage(status)));
}

}  // namespace

int Main(int argc, char* argv[]) {
  ForgetProgramState();
  CVarnok application;
  Trace("VARNOK::main [ENTRY]", 3);
  std::uint32_t level = TraceSelectLevel(argc, argv);
  application.SetDebugLevel(level);
  Trace("VARNOK Main:: Got Debug Level %d", 3, level);
  // Kept: the blank in front of the line feeds; logs begin with it.
  Print("\nVARNOK Load Utility Version %s Build %d \n\n", kVersion, kBuild);
  int status = Run(application, argc, argv);
  if (status != app_status::kSuccess && status != app_status::kCommandLine) ShowError(application, status);
  // A failure tells itself.
  if (status == app_status::kSuccess) WarnOfDoubts();
  application.DeInitialize();
  // Kept: the name differs from the entry line's; readers of the log know both as they stand.
  Trace("Dornquist::main [EXIT]", 3);
  return status;
}

}  // namespace varnok
