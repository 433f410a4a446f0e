// varnok-board, the companion on the desk: reads the command line by the tables of its commands and runs one.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <iterator>
#include <new>
#include <string>
#include <string_view>

#include "programs/board/command.h"
#include "programs/board/output.h"
#include "sim/board_source.h"

namespace varnok::companion {
namespace {

constexpr const char* kExitStatuses =
    "Exit status: 0 done and nothing found, 1 differences or findings, 2 wrong use, 3 could not be done.";

/// Puts the row into the page; what it is given goes into `arguments`.
void AddOption(CLI::App& page, const Option& row, Arguments& arguments) {
  const std::string name(row.name);
  const bool isMany = row.count == Option::Many || row.count == Option::OneOrMore;
  const std::string help = std::string(row.help) + (isMany ? " (may repeat)" : "");
  const bool isRequired = row.count == Option::Required || row.count == Option::OneOrMore;
  const bool isNamed = name.starts_with("-");
  if (isNamed && row.value.empty()) {
    page.add_flag_callback(
        name, [&arguments, name] { arguments.Add(name, {}); }, help);
    return;
  }
  CLI::Option* option = page.add_option(
      name,
      [&arguments, name](const CLI::results_t& values) {
        for (const std::string& value : values) arguments.Add(name, value);
        return true;
      },
      help);
  option->type_name(isNamed ? std::string(row.value) : "")->required(isRequired)->type_size(1);
  if (isMany)
    option->expected(isRequired || isNamed ? 1 : 0, CLI::detail::expected_max_vector_size)
        ->allow_extra_args(!isNamed);
  // One value for each time that a named option stands there, so that it does not swallow what follows.
  if (isMany && isNamed) option->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  if (!isMany) option->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::Throw);
}

bool IsCommand(std::string_view name) {
  return std::any_of(std::begin(kCommands), std::end(kCommands),
                     [name](auto* row) { return row->name == name; });
}

int Run(int argc, char* argv[]) {
  CLI::App app("The companion of VARNOK: boards as folders of files, from a machine and back.",
               "varnok-board");
  app.set_version_flag("--version", "varnok-board " VARNOK_VERSION, "Show the version");
  app.set_help_flag("--help,-h", "Show this page; behind a command, that command's");
  app.require_subcommand(1);
  app.footer(kExitStatuses);
  app.get_formatter()->label("SUBCOMMAND", "COMMAND");
  app.get_formatter()->label("Positionals", "Arguments");
  app.get_formatter()->column_width(34);
  int (*run)(const Arguments&) = nullptr;
  Arguments arguments;
  for (const Command* command : kCommands) {
    CLI::App* page = app.add_subcommand(std::string(command->name), std::string(command->summary));
    page->footer("Example:\n" + std::string(command->example));
    page->group("Commands");
    page->set_help_flag("--help,-h", "Show this page");
    for (const Option& option : command->options) AddOption(*page, option, arguments);
    page->callback([&run, command] { run = command->run; });
  }
  app.get_formatter()->label("REQUIRED", "(required)");
  // For who builds a package; no page shows it.
  if (argc == 3 && argv[1] == std::string_view("--completion")) {
    const std::string script = CompletionScript(argv[2]);
    if (script.empty()) return Fail("--completion: bash or zsh", kWrongUse);
    std::fputs(script.c_str(), stdout);
    return kDone;
  }
  // The parser's own words for these two are about subcommands.
  if (argc < 2) return Fail("a command is required\nSee varnok-board --help.", kWrongUse);
  if (argv[1][0] != '-' && !IsCommand(argv[1]))
    return Fail(std::string("there is no command \"") + argv[1] + "\"\nSee varnok-board --help.", kWrongUse);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& end) {
    if (end.get_exit_code() == 0) return app.exit(end);
    const std::string page =
        std::string(app.get_subcommands().empty() ? "" : std::string(argv[1]) + " ") + "--help.";
    return Fail(std::string(end.what()) + "\nSee varnok-board " + page, kWrongUse);
  }
  return run(arguments);
}

}  // namespace
}  // namespace varnok::companion

int main(int argc, char* argv[]) {
  using namespace varnok::companion;
  varnok::sim::TakeStandardDescriptors();
  try {
    const int status = Run(argc, argv);
    // A result that did not reach its file or pipe is no result.
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) return Fail("the output cannot be written");
    return status;
  } catch (const std::bad_alloc&) {
    return Fail("out of memory");
  } catch (const std::exception& error) {
    return Fail(error.what());
  }
}
