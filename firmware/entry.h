// The program as the image entries see it.
#pragma once

namespace varnok {

/// Runs the program once. `argv[0]` names the program, `argv[argc]` is null; arguments are 8-bit (Latin-1)
/// text. Returns the exit status.
int Main(int argc, char* argv[]);

}  // namespace varnok
