// The shells' completion, from the tables that the command lines are read by.
#include <string>
#include <string_view>

#include "app/command_line.h"
#include "fru/nvs_type.h"
#include "programs/board/command.h"

namespace varnok::companion {
namespace {

/// Words with a blank behind each.
template <class Rows, class Name>
std::string Words(const Rows& rows, Name name) {
  std::string words;
  for (const auto& row : rows) words.append(name(row)).append(" ");
  return words;
}

std::string ModeWords() {
  return Words(kModeOptions, [](const ModeRow& row) { return "/" + std::string(row.name); });
}

std::string AreaWords() {
  return Words(kDisplayAreas, [](const ModeRow& row) { return std::string(row.name); });
}

std::string StorageWords() {
  return Words(kNvsTypes, [](const NvsTypeRow& row) { return std::string(row.name); });
}

bool IsNamed(const Option& option) {
  return option.name.starts_with("-");
}

/// Text in single quotes of a shell.
std::string Quoted(std::string_view text) {
  std::string quoted = "'";
  for (char character : text) quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
  return quoted + "'";
}

/// As zsh's _arguments and _describe take explanations.
std::string Explanation(std::string_view text) {
  std::string escaped;
  for (char character : text) {
    if (character == '[' || character == ']' || character == ':' || character == '\\') escaped += '\\';
    escaped += character;
  }
  return escaped;
}

/// What both shells' functions for varnok do, by the word's number: an option, an area, a storage kind go
/// into `variable`. Whatever else stands there is a file's name.
std::string VarnokCases(std::string_view variable, std::string_view number, std::string_view option,
                        std::string_view area) {
  const std::string set = ") " + std::string(variable) + "='";
  std::string text;
  text.append("  case ").append(number).append(" in\n    1").append(set).append(ModeWords()).append("' ;;\n");
  text.append("    2) case ").append(option).append(" in [-/][dD]").append(set).append(AreaWords());
  text.append("' ;; esac ;;\n    3) case ").append(area).append(" in [fF][rR][uU]").append(set);
  return text.append(StorageWords()).append("' ;; esac ;;\n  esac\n");
}

std::string BashScript() {
  std::string text = "# bash completion of varnok and varnok-board.\n\n_varnok() {\n  local words=\n";
  text += VarnokCases("words", "$COMP_CWORD", "${COMP_WORDS[1]}", "${COMP_WORDS[2]}");
  text += "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"${COMP_WORDS[COMP_CWORD]}\")\n}\n\n";
  text +=
      "_varnok_board() {\n  local words= current=${COMP_WORDS[COMP_CWORD]}\n  case $COMP_CWORD:${COMP_WORDS[1]} in\n";
  text += "    1:*) words='" + Words(kCommands, [](auto* row) { return std::string(row->name); }) +
          "--help --version' ;;\n";
  for (const Command* command : kCommands) {
    text += "    *:" + std::string(command->name) + ") words='";
    for (const Option& option : command->options)
      if (IsNamed(option)) text.append(option.name).append(" ");
    text += "--help' ;;\n";
  }
  text +=
      "  esac\n  # Behind the command whatever does not begin an option is a file or a folder.\n"
      "  case $COMP_CWORD:$current in 1:* | *:-*) ;; *) words= ;; esac\n"
      "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n}\n\n"
      "complete -o default -F _varnok varnok\ncomplete -o default -F _varnok_board varnok-board\n";
  return text;
}

std::string ZshOption(const Option& option) {
  const bool isMany = option.count == Option::Many || option.count == Option::OneOrMore;
  if (!IsNamed(option)) return Quoted((isMany ? "*:" : ":") + Explanation(option.name) + ":_files");
  std::string text = (isMany ? "*" : "") + std::string(option.name) + "[" + Explanation(option.help) + "]";
  if (!option.value.empty()) text += ":" + Explanation(option.value) + ":_files";
  return Quoted(text);
}

std::string ZshScript() {
  std::string text = "#compdef varnok varnok-board\n\n_varnok_words() {\n  local words_of=\n";
  text += VarnokCases("words_of", "$((CURRENT - 1))", "$words[2]", "$words[3]");
  text += "  if [[ -n $words_of ]]; then compadd -- ${=words_of}; else _files; fi\n}\n\n";
  text += "_varnok_board_words() {\n  local -a commands=(\n";
  for (const Command* command : kCommands)
    text += "    " + Quoted(std::string(command->name) + ":" + Explanation(command->summary)) + "\n";
  text +=
      "  )\n  if ((CURRENT == 2)); then\n    _describe command commands\n    return\n  fi\n"
      "  local command=$words[2]\n  shift words\n  ((CURRENT--))\n  case $command in\n";
  for (const Command* command : kCommands) {
    text += "    " + std::string(command->name) + ")\n      _arguments '--help[Show this page]'";
    for (const Option& option : command->options) text += " \\\n        " + ZshOption(option);
    text += " ;;\n";
  }
  return text +
         "  esac\n}\n\ncase $service in\n  varnok) _varnok_words ;;\n  *) _varnok_board_words ;;\nesac\n";
}

}  // namespace

std::string CompletionScript(std::string_view shell) {
  if (shell == "bash") return BashScript();
  return shell == "zsh" ? ZshScript() : "";
}

}  // namespace varnok::companion
