// The parts of the program alone: readers of files, decoding, text, the log that is off.
//   bench_parts FRU-FILE SDR-FILE BOARD-FOLDER [Google Benchmark's options]
#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>

#include "app/services/format.h"
#include "app/services/trace.h"
#include "firmware/host/host_firmware.h"
#include "fru/fru.h"
#include "sdr/read_file.h"
#include "sdr/record_lists.h"
#include "sim/board.h"

namespace varnok {
namespace {

std::string fruFile;
std::string sdrFile;

std::unique_ptr<File> Open(const std::string& name) {
  std::unique_ptr<File> file;
  if (TheFirmware().OpenFile(std::u16string(name.begin(), name.end()), FileMode::Read, file) != kSuccess)
    std::fprintf(stderr, "%s cannot be read\n", name.c_str());
  return file;
}

std::int64_t SizeOf(const std::string& name) {
  std::array<std::uint8_t, 4096> part;
  std::int64_t size = 0;
  auto file = Open(name);
  for (std::size_t count = part.size(); file->Read(part, count) == kSuccess && count > 0; count = part.size())
    size += static_cast<std::int64_t>(count);
  return size;
}

void ReadFruFile(benchmark::State& state) {
  for (auto _ : state) {
    CFru fru;
    if (fru.ReadFRUFromFile(fruFile) != kSuccess) state.SkipWithError("not a FRU file");
  }
  state.SetBytesProcessed(state.iterations() * SizeOf(fruFile));
}
BENCHMARK(ReadFruFile);

void ReadSdrFile(benchmark::State& state) {
  for (auto _ : state) {
    auto file = Open(sdrFile);
    SdrFileLines lines(*file, sdrFile);
    SdrTypeList records;
    if (SdrReadFile::ReadSdrRecordsFromFile(lines, records) != kSuccess)
      state.SkipWithError("not an SDR file");
  }
  state.SetBytesProcessed(state.iterations() * SizeOf(sdrFile));
}
BENCHMARK(ReadSdrFile);

/// Titles, places and values of all fields of the file's first full sensor record.
void DecodeSensorRecord(benchmark::State& state) {
  auto file = Open(sdrFile);
  SdrFileLines lines(*file, sdrFile);
  SdrTypeList records;
  if (SdrReadFile::ReadSdrRecordsFromFile(lines, records) != kSuccess || records[0].empty())
    return state.SkipWithError("no sensor record");
  CSdr& record = *records[0].front();
  for (auto _ : state) {
    const char16_t* text = nullptr;
    std::int64_t fields = 0;
    (void)record.GetNumberOfFields(fields);
    for (std::int64_t field = 0; field < fields; ++field) {
      record.SelectField(field);
      (void)record.GetFieldTitle(text);
      (void)record.GetFieldLocation(text);
      (void)record.GetFieldValue(text);
      benchmark::DoNotOptimize(text);
    }
  }
}
BENCHMARK(DecodeSensorRecord);

void FormatLine(benchmark::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(FormatWide("   %-31s= %02Xh of %d\n", "Common Header Area", 0x5A, 100));
}
BENCHMARK(FormatLine);

/// Three tests of the level: on the way in and out, and of a line.
void TraceOff(benchmark::State& state) {
  for (auto _ : state) {
    TraceScope scope("Benchmark::TraceOff");
    Trace("Benchmark::TraceOff - %d", 1, 1);
  }
}
BENCHMARK(TraceOff)->Iterations(1'000'000);

}  // namespace
}  // namespace varnok

int main(int argc, char* argv[]) try {
  if (argc < 4) return 2;
  varnok::fruFile = argv[1];
  varnok::sdrFile = argv[2];
  std::string error;
  auto board = varnok::sim::Board::Open(argv[3], error);
  if (board == nullptr) {
    std::fprintf(stderr, "%s\n", error.c_str());
    return 3;
  }
  varnok::host::HostFirmware firmware(*board);
  varnok::InstallFirmware(&firmware);
  const char* const quiet[] = {"bench"};
  varnok::TraceSelectLevel(1, quiet);
  argv[3] = argv[0];
  int options = argc - 3;
  benchmark::Initialize(&options, argv + 3);
  benchmark::RunSpecifiedBenchmarks();
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 3;
}
