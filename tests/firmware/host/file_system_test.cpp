#include "firmware/host/file_system.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/support/host_files.h"

namespace varnok::host {
namespace {

/// Runs in a folder of its own.
class FileSystem : public ::testing::Test {
 protected:
  FileSystem() { std::filesystem::current_path(folder_.Path()); }
  ~FileSystem() override { std::filesystem::current_path(before_); }

  static std::string ContentOf(std::u16string_view path) {
    std::unique_ptr<File> file;
    if (OpenFile(path, FileMode::Read, file) != kSuccess) return "(not opened)";
    std::string text(64, '\0');
    std::size_t count = 0;
    EXPECT_EQ(file->Read({reinterpret_cast<std::uint8_t*>(text.data()), text.size()}, count), kSuccess);
    text.resize(count);
    return text;
  }

  static Status Put(std::u16string_view path, FileMode mode, std::string_view text) {
    std::unique_ptr<File> file;
    if (Status status = OpenFile(path, mode, file); status != kSuccess) return status;
    return file->Write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  }

 private:
  testing::TemporaryFolder folder_;
  std::filesystem::path before_ = std::filesystem::current_path();
};

TEST_F(FileSystem, NameIsFoundWithoutRegardToCase) {
  std::filesystem::create_directories("Boards/Rev2");
  std::ofstream("Boards/Rev2/Main.fru") << "main";
  EXPECT_EQ(ContentOf(u"boards\\rev2/MAIN.FRU"), "main");
  EXPECT_EQ(ContentOf(u".\\BOARDS\\Rev2\\main.FRU"), "main");
  std::ofstream("Boards/Rev2/MAIN.FRU") << "exact";
  EXPECT_EQ(ContentOf(u"boards\\rev2\\MAIN.FRU"), "exact") << "the name as written comes first";
  EXPECT_EQ(ContentOf(u"boards\\rev3\\MAIN.FRU"), "(not opened)");
}

TEST_F(FileSystem, WritingEmptiesAndAppendingAdds) {
  EXPECT_EQ(Put(u"a.txt", FileMode::Append, "one"), kSuccess);
  EXPECT_EQ(Put(u"A.TXT", FileMode::Append, "two"), kSuccess);
  EXPECT_EQ(ContentOf(u"a.txt"), "onetwo");
  EXPECT_EQ(Put(u"a.txt", FileMode::Write, "3"), kSuccess);
  EXPECT_EQ(ContentOf(u"a.txt"), "3");
}

TEST_F(FileSystem, FailureHasTheFirmwaresStatus) {
  std::unique_ptr<File> file;
  EXPECT_EQ(OpenFile(u"missing", FileMode::Read, file), uefi_status::kNotFound);
  std::filesystem::create_directory("folder");
  EXPECT_EQ(OpenFile(u"folder", FileMode::Read, file), uefi_status::kAccessDenied);
  EXPECT_EQ(OpenFile(u"folder", FileMode::Write, file), uefi_status::kAccessDenied);
  ASSERT_EQ(mkfifo("fifo", 0600), 0);
  EXPECT_EQ(OpenFile(u"fifo", FileMode::Read, file), uefi_status::kUnsupported);
  EXPECT_EQ(OpenFile(u"fifo", FileMode::Append, file), uefi_status::kDeviceError) << "nobody reads it";
  EXPECT_EQ(OpenFile(u"/dev/zero", FileMode::Read, file), uefi_status::kUnsupported);
  EXPECT_EQ(file, nullptr);
  EXPECT_EQ(Put(u"/dev/full", FileMode::Write, "x"), uefi_status::kVolumeFull);
}

}  // namespace
}  // namespace varnok::host
