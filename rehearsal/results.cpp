#include "rehearsal/results.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace varnok::rehearsal {

bool Results::Open(std::string& error) {
  memory_ = sim::Descriptor(memfd_create("rehearsal", MFD_CLOEXEC));
  // One write at the end of the file is never mixed with another process's.
  if (memory_.IsOpen() && fcntl(memory_.Number(), F_SETFL, O_APPEND) == 0) return true;
  error = std::string("no memory to share: ") + std::strerror(errno);
  return false;
}

void Results::Add(const Bytes& record) {
  const std::size_t size = record.size();
  Bytes whole(sizeof size);
  std::memcpy(whole.data(), &size, sizeof size);
  whole.insert(whole.end(), record.begin(), record.end());
  [[maybe_unused]] const ssize_t written = write(memory_.Number(), whole.data(), whole.size());
}

bool Results::Take(const std::function<void(std::span<const std::uint8_t>)>& taker) {
  struct stat status {};
  if (fstat(memory_.Number(), &status) != 0) return false;
  Bytes bytes(static_cast<std::size_t>(status.st_size) - taken_);
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t count =
        pread(memory_.Number(), bytes.data() + done, bytes.size() - done, static_cast<off_t>(taken_ + done));
    if (count <= 0) return false;
    done += static_cast<std::size_t>(count);
  }
  // A record that is just being written shows in part: it is taken the next time.
  for (std::span<const std::uint8_t> rest(bytes);;) {
    std::size_t size = 0;
    if (rest.size() < sizeof size) return rest.empty();
    std::memcpy(&size, rest.data(), sizeof size);
    rest = rest.subspan(sizeof size);
    if (size > rest.size()) return false;
    taken_ += sizeof size + size;
    taker(rest.first(size));
    rest = rest.subspan(size);
  }
}

}  // namespace varnok::rehearsal
