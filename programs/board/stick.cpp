// varnok-board stick: a package on a stick that starts by itself.
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>

#include "app/services/text.h"
#include "boards/folder.h"
#include "firmware/host/argument_list.h"
#include "programs/board/command.h"
#include "programs/board/findings.h"
#include "programs/board/output.h"
#include "programs/start/ending.h"
#include "programs/start/menu_file.h"

namespace varnok::companion {
namespace {

namespace fs = std::filesystem;
using boards::Severity;

constexpr Option kStickOptions[] = {
    {"OUT", "", "The stick: an image (.img) for dd, or an archive (.zip) to unpack onto a formatted stick",
     Option::Required},
    {"--package", "FOLDER", "What goes onto it: scripts, FRU and SDR files, START.CFG", Option::Required},
    {"--board", "FOLDER", "The board that the package is made for, for its check"},
    {"--efi", "FOLDER", "Where VARNOK.EFI, SNAPSHOT.EFI, START.EFI and ipmi.efi are, signed ones perhaps"},
};
constexpr const char* kImages[] = {"VARNOK.EFI", "SNAPSHOT.EFI", "START.EFI", "ipmi.efi"};
constexpr const char* kPage = "README.TXT";
constexpr const char* kPrintedPage = "TECHNIC.HTM";

/// Where this program's own files are: installed beside it, or in the tree that it was built in.
struct Supplies {
  fs::path packer;
  fs::path images;
  fs::path page;
  fs::path printedPage;  ///< the page for a browser; may be missing
};

Supplies FindSupplies() {
  const fs::path program = fs::read_symlink("/proc/self/exe").parent_path();
  const fs::path installed = program.parent_path() / "lib/varnok";
  if (fs::exists(installed / "make-stick"))
    return {installed / "make-stick", installed, installed / kPage, installed / kPrintedPage};
  const fs::path tree = program.parent_path().parent_path();
  const fs::path built = tree / "build/uefi";
  return {tree / "tools/make-stick", built, tree / "stick" / kPage, built / kPrintedPage};
}

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = fs::temp_directory_path() / "varnok-stick-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error(pattern + ": cannot be made");
    path_ = pattern;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const fs::path& Path() const { return path_; }

 private:
  fs::path path_;
};

std::string Capital(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) { return ToUpper(c); });
  return text;
}

/// The files of a package.
class Package {
 public:
  explicit Package(const std::string& folder) : folder_(folder) {}

  /// Fills the list; a stick knows no difference between small and capital letters.
  bool Load(std::string& error) {
    if (!fs::is_directory(folder_)) return error = folder_.string() + ": is no folder", false;
    std::map<std::string, std::string> known;
    for (const char* image : kImages) known[Capital(image)] = "the stick's own program";
    known["EFI/BOOT/BOOTX64.EFI"] = "the stick's own program";
    for (const auto& entry :
         fs::recursive_directory_iterator(folder_, fs::directory_options::follow_directory_symlink)) {
      if (entry.is_directory()) continue;
      const std::string name = entry.path().lexically_relative(folder_).string();
      if (!entry.is_regular_file()) return error = entry.path().string() + ": is no file", false;
      const auto [place, isNew] = known.emplace(Capital(name), name);
      if (!isNew) return error = entry.path().string() + ": has the name of " + place->second, false;
      names_.push_back(name);
    }
    std::sort(names_.begin(), names_.end());
    if (names_.empty()) error = folder_.string() + ": is empty";
    return error.empty();
  }

  /// The file's name as it is written; nothing when the package has none of that name.
  const std::string* Find(std::string_view name) const {
    for (const std::string& known : names_)
      if (EqualsIgnoreCase(known, name)) return &known;
    return nullptr;
  }

  const fs::path& Folder() const { return folder_; }
  const std::vector<std::string>& Names() const { return names_; }
  /// Of the files in the package's root.
  std::vector<std::string> RootNames() const {
    std::vector<std::string> names;
    for (const std::string& name : names_)
      if (name.find('/') == std::string::npos) names.push_back(name);
    return names;
  }

 private:
  fs::path folder_;
  std::vector<std::string> names_;
};

/// What an entry starts must be there.
void CheckEntries(const start::Menu& menu, const Package& package, const std::string& file,
                  std::vector<boards::Finding>& findings) {
  for (const start::Entry& entry : menu.entries) {
    std::string name = entry.text;
    if (entry.action == start::Action::Program) {
      name.resize(std::min(name.size(), name.find_first_of(" \t")));
      if (name.ends_with(start::ProgramName(name))) name += ".EFI";
    } else if (entry.action != start::Action::Page) {
      continue;
    }
    std::replace(name.begin(), name.end(), '\\', '/');
    const bool isOwn = std::any_of(std::begin(kImages), std::end(kImages),
                                   [&name](const char* image) { return EqualsIgnoreCase(image, name); });
    if (isOwn || EqualsIgnoreCase(name, kPage) || package.Find(name) != nullptr) continue;
    findings.push_back({Severity::Error, "start-file", file, 0,
                        "\"" + entry.title + "\" wants " + name + ", which is not on the stick",
                        "Put it into the package, or name another one."});
  }
}

/// Reads the package's START.CFG, or makes the usual one in `folder`. False when the file cannot be had.
bool TakeMenu(const Package& package, const fs::path& folder, std::vector<boards::Finding>& findings,
              std::string& error) {
  const std::string* own = package.Find(start::kMenuFile);
  if (own == nullptr) {
    std::ofstream file(folder / start::kMenuFile);
    std::string text = start::UsualMenu(start::ScriptsAmong(package.RootNames()));
    for (const char character : text) file << (character == '\n' ? "\r" : "") << character;
    if (!file.flush()) error = (folder / start::kMenuFile).string() + ": cannot be written";
    return error.empty();
  }
  boards::Bytes bytes;
  const std::string path = package.Folder() / *own;
  if (!boards::ReadFile(path, bytes, error)) return false;
  start::Menu menu;
  for (const start::Problem& problem : ReadMenu(std::string(bytes.begin(), bytes.end()), menu))
    findings.push_back({Severity::Error, "start-line", path, problem.line, problem.text,
                        "docs/uefi.md has the lines of START.CFG."});
  CheckEntries(menu, package, path, findings);
  return true;
}

/// Scripts first: the files that they name are checked with what the script does.
void CheckFiles(const Package& package, boards::Checker& checker) {
  for (const bool wantsScripts : {true, false})
    for (const std::string& name : package.Names()) {
      const std::string extension = Capital(fs::path(name).extension().string());
      const bool isScript = extension == ".CFG" && !EqualsIgnoreCase(name, start::kMenuFile);
      const bool isLoadFile = extension == ".FRU" || extension == ".SDR";
      if (wantsScripts ? isScript : isLoadFile) checker.Check(package.Folder() / name);
    }
}

/// The packer's exit status; its name is the first word.
int Pack(host::ArgumentList words) {
  pid_t child = 0;
  int status = 0;
  if (posix_spawn(&child, words.Pointers()[0], nullptr, nullptr, words.Pointers(), environ) != 0)
    return kFailed;
  while (waitpid(child, &status, 0) < 0)
    if (errno != EINTR) return kFailed;
  return WIFEXITED(status) ? WEXITSTATUS(status) : kFailed;
}

int RunStick(const Arguments& arguments) {
  const fs::path out = arguments.Value("OUT");
  if (out.extension() != ".img" && out.extension() != ".zip")
    return Fail(out.string() + ": a stick is an .img or a .zip", kWrongUse);
  if (fs::exists(out) && !fs::is_regular_file(out)) return Fail(out.string() + ": is there, and is no file");
  Supplies supplies = FindSupplies();
  if (arguments.Has("--efi")) supplies.images = arguments.Value("--efi");
  std::vector<std::string> items{supplies.packer, out.string()};
  for (const char* image : kImages) {
    items.push_back(supplies.images / image);
    if (!fs::exists(items.back()))
      return Fail(items.back() + ": is not there; --efi names the folder of the EFI files");
  }
  Package package(arguments.Value("--package"));
  boards::Board board;
  std::string error;
  if (!package.Load(error)) return Fail(error);
  if (arguments.Has("--board") && !boards::LoadFolder(arguments.Value("--board"), board, error))
    return Fail(error);

  boards::Checker checker(arguments.Has("--board") ? &board : nullptr);
  CheckFiles(package, checker);
  std::vector<boards::Finding> findings = checker.Findings();
  const TemporaryFolder work;
  if (!TakeMenu(package, work.Path(), findings, error)) return Fail(error);
  if (!findings.empty()) PrintFindings(findings, package.Names().size());
  if (HasErrors(findings)) return Fail("the package is refused; " + out.string() + " was not made", kFound);

  if (package.Find(kPage) == nullptr) items.push_back(supplies.page);
  if (package.Find(kPrintedPage) == nullptr && fs::exists(supplies.printedPage))
    items.push_back(supplies.printedPage);
  items.push_back(work.Path() / ".");
  items.push_back(package.Folder() / ".");
  if (Pack(host::ArgumentList(std::move(items))) != 0) return Fail(out.string() + ": could not be made");
  const std::size_t count = package.Names().size();
  PrintLine("Made " + out.string() + ": the programs, " + std::to_string(count) +
            (count == 1 ? " file" : " files") + " of the package" +
            (package.Find(start::kMenuFile) == nullptr ? ", the usual START.CFG." : "."));
  return kDone;
}

}  // namespace

const Command kStick = {"stick", "Make a stick that starts by itself, with a package on it", kStickOptions,
                        "  varnok-board stick hearth.img --package hearth --board myboard", RunStick};

}  // namespace varnok::companion
