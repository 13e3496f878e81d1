// tarn: a book of checking, savings and card accounts on the command line.
// Parses the command line, pins "today" when asked, runs the chosen command
// and turns every failure into one line on standard error: exit status 2 for
// a wrong command line, 1 for a command that could not be done.

#include <clocale>
#include <cstdio>
#include <iostream>
#include <string>

#include <fmt/format.h>

#include "tarn/platform/calendar_date.h"
#include "tarn/platform/error.h"
#include "tarn/platform/log.h"
#include "tools/commands.h"

int main(int argc, char** argv) {
  using namespace tarn::cli;
  std::setlocale(LC_ALL, "");
  // The library logs what it repairs while loading; a command prints only
  // its own output and errors.
  tarn::SetLogSink([](std::string_view) {});

  CLI::App app{"tarn: a check register of accounts kept in one book file", "tarn"};
  app.fallthrough();
  app.require_subcommand(1);
  GlobalOptions global;
  app.add_flag("--json", global.json, "Print the same data as JSON");
  app.add_option("--today", global.today, "Take this date (YYYY-MM-DD) as today");
  app.set_version_flag("--version", "tarn 0.1.0");

  Chosen chosen;
  AddBookCommands(app, chosen, global);
  AddViewCommands(app, chosen, global);
  AddEntryCommands(app, chosen, global);
  AddImportCommands(app, chosen, global);

  try {
    try {
      app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
      std::cout << app.help();
      return 0;
    } catch (const CLI::CallForAllHelp&) {
      std::cout << app.help("", CLI::AppFormatMode::All);
      return 0;
    } catch (const CLI::CallForVersion& version) {
      std::cout << version.what() << '\n';
      return 0;
    } catch (const CLI::ParseError& error) {
      // A mistyped command reads better as such than as a missing one.
      for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word.empty() || word[0] == '-' || std::string(argv[i - 1]) == "--today") continue;
        const auto named = [&](CLI::App* command) { return command->get_name() == word; };
        if (app.get_subcommands(named).empty()) {
          throw UsageError(fmt::format("unknown command \"{}\"", word));
        }
        break;
      }
      throw UsageError(error.what());
    }
    if (!global.today.empty()) {
      const tarn::DateNumber today = ParseDate(global.today, "--today");
      tarn::CalendarDate::overrideNow(tarn::CalendarDate::dateWithDateNumber(today));
    }
    if (chosen) chosen();
    return 0;
  } catch (const UsageError& error) {
    fmt::print(stderr, "tarn: {} (see tarn --help)\n", error.what());
    return 2;
  } catch (const Failure& error) {
    fmt::print(stderr, "tarn: {}\n", error.what());
    return 1;
  } catch (const tarn::FileError& error) {
    fmt::print(stderr, "tarn: {}\n", error.what());
    return 1;
  } catch (const std::exception& error) {
    fmt::print(stderr, "tarn: {}\n", error.what());
    return 1;
  }
}
