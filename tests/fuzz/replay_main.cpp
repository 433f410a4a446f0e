// Runs every input of a folder, which has a folder of inputs for each target: fuzz_replay FOLDER
#include <algorithm>
#include <cstdio>
#include <vector>

#include "tests/fuzz/target.h"
#include "tests/support/host_files.h"

int main(int argc, char* argv[]) {
  namespace fs = std::filesystem;
  if (argc != 2) return 2;
  std::size_t count = 0;
  for (const fs::directory_entry& folder : fs::directory_iterator(argv[1])) {
    const varnok::fuzz::Target* target = varnok::fuzz::FindTarget(folder.path().filename().string());
    if (target == nullptr) {
      std::fprintf(stderr, "%s: no such target\n", folder.path().c_str());
      return 1;
    }
    std::vector<fs::path> inputs{fs::directory_iterator(folder), {}};
    std::ranges::sort(inputs);
    for (const fs::path& input : inputs) {
      std::fprintf(stderr, "%s\n", input.c_str());  // the last one named is the one that fails
      target->run(varnok::testing::ContentOf(input));
      ++count;
    }
  }
  std::fprintf(stderr, "%zu inputs\n", count);
  return count > 0 ? 0 : 1;
}
