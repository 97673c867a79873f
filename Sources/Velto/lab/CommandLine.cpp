#include "CommandLine.h"

#include "Console.h"
#include "StandardStreams.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <memory>
#include <utility>

namespace velto {

namespace {

constexpr const char* programName = "velto-lab";
constexpr std::size_t nameColumn = 26;

struct Leaf {
  const Lab::Command* command;
  CLI::App* arguments;
  Lab::Action action;
};

bool isBelow(const CLI::App* app, const CLI::App* ancestor) {
  while (app != nullptr && app != ancestor)
    app = app->get_parent();
  return app != nullptr;
}

// The help of a single command is the library's. That of the program, or of a group of commands,
// lists all commands with their whole names. The layout is the same with every version of the
// library: newer ones indent the switches and wrap all paragraphs anew.
class Help : public CLI::Formatter {
public:
  explicit Help(const std::vector<Leaf>& leaves) : leaves_(leaves) {
    column_width(nameColumn);
    // The second is the key since CLI11 2.6.
    label("Positionals", "Arguments");
    label("POSITIONALS", "Arguments");
    label("REQUIRED", "");
  }

  std::string make_help(const CLI::App* app, std::string name,
                        CLI::AppFormatMode mode) const override {
    std::string text = withNewline(app->get_description());
    text += make_usage(app, std::move(name)) + make_positionals(app) + make_groups(app, mode);
    return text + make_subcommands(app, mode) + "\n" + withNewline(app->get_footer());
  }

  std::string make_option(const CLI::Option* option, bool isPositional) const override {
    const std::string margin(nameColumn, ' ');
    std::string text = "  " + make_option_name(option, isPositional) + make_option_opts(option);
    if (text.size() < nameColumn)
      text.resize(nameColumn, ' ');
    else
      text += "\n" + margin;
    for (const char character : make_option_desc(option)) {
      text += character;
      if (character == '\n')
        text += margin;
    }
    return text + "\n";
  }

  std::string make_usage(const CLI::App* app, std::string name) const override {
    std::string usage = "\nUsage: " + name;
    if (!app->get_subcommands({}).empty())
      return usage + " COMMAND [SWITCH]... [ARGUMENT]...\n";
    usage += " [SWITCH]...";
    for (const CLI::Option* argument :
         app->get_options([](const CLI::Option* option) { return option->get_positional(); }))
      usage += " " + make_option_usage(argument);
    return usage + "\n";
  }

  std::string make_subcommands(const CLI::App* app, CLI::AppFormatMode) const override {
    std::string text;
    for (const Leaf& leaf : leaves_) {
      if (leaf.arguments == app || !isBelow(leaf.arguments, app))
        continue;
      std::string line = "  " + std::string(leaf.command->name);
      line.resize(std::max(line.size() + 1, nameColumn), ' ');
      text += line + std::string(leaf.command->explanation) + "\n";
    }
    return text.empty() ? text : "\nCommands:\n" + text;
  }

private:
  static std::string withNewline(const std::string& text) {
    return text.empty() ? text : text + "\n";
  }

  const std::vector<Leaf>& leaves_;
};

// The app of a command; creates its group if needed.
CLI::App& appOf(CLI::App& root, const Lab::Command& command) {
  const std::string name(command.name), explanation(command.explanation);
  const std::size_t space = name.find(' ');
  if (space == name.npos)
    return *root.add_subcommand(name, explanation);
  const std::string group = name.substr(0, space);
  const auto groups =
      root.get_subcommands([&](const CLI::App* app) { return app->get_name() == group; });
  CLI::App& parent = groups.empty() ? *root.add_subcommand(group) : *groups.front();
  parent.require_subcommand(1);
  return *parent.add_subcommand(name.substr(space + 1), explanation);
}

// The command line of the whole program.
struct Tree {
  explicit Tree(std::span<const Lab::Command> commands)
      : root("Reads, measures and makes what Velto practises with.", programName) {
    root.require_subcommand(1);
    root.option_defaults()->group("Switches");
    root.set_help_flag("--help", "print this text, or that of a command");
    root.set_version_flag("--version", "velto-lab " VELTO_VERSION, "print the version");
    root.footer("velto-lab COMMAND --help explains a command. The exit status is 0 on success,\n"
                "1 on failure and 2 for wrong use. The user's guide is guide.md in\n"
                "share/doc/velto of the installation.");
    leaves.reserve(commands.size());
    for (const Lab::Command& command : commands) {
      CLI::App& arguments = appOf(root, command);
      arguments.set_help_flag("--help", "print this text");
      leaves.push_back({&command, &arguments, command.declare(arguments)});
    }
    const auto help = std::make_shared<Help>(leaves);
    root.formatter(help);
    for (CLI::App* child : root.get_subcommands({})) {
      child->formatter(help);
      child->footer("");
      for (CLI::App* grandchild : child->get_subcommands({}))
        grandchild->formatter(help);
    }
  }

  CLI::App root;
  std::vector<Leaf> leaves;
};

// The innermost command or group that has been recognised.
const CLI::App& recognised(const CLI::App& app) {
  const auto parsed = app.get_subcommands();
  return parsed.empty() ? app : recognised(*parsed.back());
}

// With the names of the program and of the group.
std::string fullName(const CLI::App& app) {
  const CLI::App* parent = app.get_parent();
  return parent == nullptr ? app.get_name() : fullName(*parent) + " " + app.get_name();
}

std::string helpOf(const CLI::App& app) {
  const CLI::App* parent = app.get_parent();
  return app.help(parent == nullptr ? "" : fullName(*parent));
}

// What is wrong, in words.
std::string problem(const CLI::App& root, const CLI::ParseError& error) {
  const CLI::App& app = recognised(root);
  const std::vector<std::string> left = root.remaining(true);
  if (!left.empty() && left.front().size() > 1 && left.front().front() == '-')
    return "unknown switch '" + left.front() + "'";
  if (!app.get_subcommands([](const CLI::App*) { return true; }).empty())
    return left.empty() ? "a command is missing" : "unknown command '" + left.front() + "'";
  if (!left.empty())
    return "unexpected argument '" + left.front() + "'";
  std::string text = error.what();
  if (const auto end = text.find(" was given a disallowed flag override"); end != text.npos)
    return "--" + text.substr(0, end) + " takes no value";
  return text;
}

// One line on standard error.
void complain(std::string text) {
  std::replace_if(
      text.begin(), text.end(),
      [](char character) { return std::iscntrl(static_cast<unsigned char>(character)) != 0; }, '?');
  StandardStreams::writeToError(std::string(programName) + ": " + text + "\n");
}

int refuse(const CLI::App& root, const std::string& text) {
  complain(text + "; see " + fullName(recognised(root)) + " --help");
  return Lab::wrongUse;
}

// Parses, then runs what was parsed. Throws what the command throws.
int parseAndRun(Tree& tree, std::vector<std::string> words) {
  std::reverse(words.begin(), words.end()); // as the parser expects them
  try {
    tree.root.parse(std::move(words));
  } catch (const CLI::CallForHelp&) {
    Lab::Console::print(helpOf(recognised(tree.root)));
    return Lab::done;
  } catch (const CLI::CallForVersion& version) {
    Lab::Console::print(std::string(version.what()) + "\n");
    return Lab::done;
  } catch (const CLI::ParseError& error) {
    return refuse(tree.root, problem(tree.root, error));
  }
  for (const Leaf& leaf : tree.leaves)
    if (leaf.arguments->parsed())
      leaf.action();
  return Lab::done;
}

} // namespace

int Lab::run(std::span<const Command> commands, std::vector<std::string> words) {
  Tree tree(commands);
  try {
    return parseAndRun(tree, std::move(words));
  } catch (const WrongUse& error) {
    return refuse(tree.root, error.what());
  } catch (const std::exception& error) {
    complain(error.what());
    return failed;
  }
}

} // namespace velto
