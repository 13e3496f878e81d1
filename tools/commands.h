// The tarn subcommands, registered on the program's CLI11 application. Each
// registration adds its subcommand with its options and a body that runs
// after the whole command line is read (so that --today applies first).
#pragma once

#include <functional>

#include <CLI/CLI.hpp>

#include "tools/cli_support.h"

namespace tarn::cli {

using Chosen = std::function<void()>;

// Adds a subcommand whose body becomes `chosen` when it is on the command line.
CLI::App* AddCommand(CLI::App& app, Chosen& chosen, const std::string& name,
                     const std::string& description, std::function<void()> body);

void AddBookCommands(CLI::App& app, Chosen& chosen, const GlobalOptions& global);
void AddViewCommands(CLI::App& app, Chosen& chosen, const GlobalOptions& global);
void AddEntryCommands(CLI::App& app, Chosen& chosen, const GlobalOptions& global);
void AddImportCommands(CLI::App& app, Chosen& chosen, const GlobalOptions& global);

}  // namespace tarn::cli
