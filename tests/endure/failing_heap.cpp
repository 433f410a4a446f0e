// A library to load in front of the program's own (LD_PRELOAD): it fails one allocation, or ends the process
// in front of one allocation or one change of a file. ENDURE says which, counted from 1: "memory 17" fails
// the 17th allocation alone, "memory-on 17" all from there on, "kill 17" is SIGKILL. ENDURE_COUNT names a
// file that gets the number of what could have failed.
#include <fcntl.h>
#include <signal.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// The C library's own, below the names that this library takes.
extern "C" {
void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_realloc(void* memory, std::size_t bytes);
ssize_t __write(int descriptor, const void* bytes, std::size_t count);
}

namespace {

enum class Mode { Unread, None, Once, FromThereOn, Kill } mode = Mode::Unread;
long wanted = 0;
long passed = 0;

void ReadMode() {
  const char* text = std::getenv("ENDURE");
  const char* blank = text == nullptr ? nullptr : std::strchr(text, ' ');
  mode = Mode::None;
  if (blank == nullptr) return;
  wanted = std::strtol(blank + 1, nullptr, 10);
  if (*text == 'k') mode = Mode::Kill;
  if (*text == 'm') mode = blank[-1] == 'n' ? Mode::FromThereOn : Mode::Once;
}

/// Whether the allocation that comes now fails.
bool Fails() {
  if (mode == Mode::Unread) ReadMode();
  ++passed;
  if (mode == Mode::Kill && passed == wanted) kill(getpid(), SIGKILL);
  const bool fails =
      (mode == Mode::Once && passed == wanted) || (mode == Mode::FromThereOn && passed >= wanted);
  if (fails) errno = ENOMEM;
  return fails;
}

/// A change of a file comes now; memory has nothing to do with it.
void Pass() {
  if (mode == Mode::Kill || mode == Mode::None) Fails();
}

__attribute__((destructor)) void Report() {
  const char* path = std::getenv("ENDURE_COUNT");
  std::FILE* file = path == nullptr ? nullptr : std::fopen(path, "w");
  if (file == nullptr) return;
  std::fprintf(file, "%ld\n", passed);
  std::fclose(file);
}

}  // namespace

extern "C" {
void* malloc(std::size_t bytes) {
  return Fails() ? nullptr : __libc_malloc(bytes);
}
void* calloc(std::size_t count, std::size_t bytes) {
  return Fails() ? nullptr : __libc_calloc(count, bytes);
}
void* realloc(void* memory, std::size_t bytes) {
  return Fails() ? nullptr : __libc_realloc(memory, bytes);
}
ssize_t write(int descriptor, const void* bytes, std::size_t count) {
  Pass();
  return __write(descriptor, bytes, count);
}
int rename(const char* from, const char* to) {
  Pass();
  return renameat(AT_FDCWD, from, AT_FDCWD, to);
}
}
