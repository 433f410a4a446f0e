// Runs a program and prints what it cost, on standard error: measured_run PROGRAM ARGUMENTS...
//   STATUS CPU-MICROSECONDS WALL-MICROSECONDS PEAK-KIBIBYTES
// A process of its own, because the peak memory of a child begins with its parent's.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

int main(int argc, char* argv[]) {
  if (argc < 2) return 2;
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    execv(argv[1], argv + 1);
    _exit(127);
  }
  int status = 0;
  rusage used{};
  if (child < 0 || wait4(child, &status, 0, &used) < 0) return 3;
  const std::chrono::duration<double, std::micro> wall = std::chrono::steady_clock::now() - start;
  auto microseconds = [](const timeval& time) { return time.tv_sec * 1'000'000L + time.tv_usec; };
  std::fprintf(stderr, "%d %ld %.0f %ld\n", WIFEXITED(status) ? WEXITSTATUS(status) : -1,
               microseconds(used.ru_utime) + microseconds(used.ru_stime), wall.count(), used.ru_maxrss);
}
