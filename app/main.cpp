#include "app/services/console.h"
#include "app/services/trace.h"
#include "firmware/entry.h"

namespace varnok {

int Main(int argc, char* argv[]) {
  TraceSelectLevel(argc, argv);
  Print(u"\nVARNOK Load Utility Version 2.0.1 Build 18 \n\n");
  return 0;
}

}  // namespace varnok
