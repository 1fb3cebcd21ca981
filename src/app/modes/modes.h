// The run modes. Each does its work and returns the exit status; what goes wrong is thrown.
#pragma once

#include "app/settings.h"

namespace Vesk::modes {

/// Builds the requested target, or repeats a build that found nothing to do.
int build(const Settings& settings);

/// Builds what the tests need, runs them, and returns 1 unless all succeeded. Throws VeskException
/// where there are none.
int test(const Settings& settings);

/// A line for each test, with its description. Builds nothing.
int listTests(const Settings& settings);

/// Removes what builds have made. Files that stay are named, with the reason.
int clean(const Settings& settings);

/// Without a project file these report so and return -1.
int listProfiles(const Settings& settings);
int listUnits(const Settings& settings);

int listTargets(const Settings& settings);
int registerProject(const Settings& settings);
int findCompilers(const Settings& settings);
int createProject(const Settings& settings);

/// Writes a unit file for the sources below the current directory, and sources where there are
/// none. Throws VeskException for a file that is there already.
int init(const Settings& settings);

/// A line for each word that may stand in the place of the last one: the word, a tab, what it is.
/// Says nothing else, whatever is wrong.
int complete(const Settings& settings);

/// Lays out the files of the command line, or those of the project, or says which of them are laid
/// out otherwise; returns 1 for one of these, and for one that cannot be.
int format(const Settings& settings);

/// Prints what is wrong with the same files, and writes it as SARIF if asked; returns 1 for an
/// error and, with --strict, for a warning.
int lint(const Settings& settings);

/// Serves an editor over standard input and output until it says that it is done.
int languageServer(const Settings& settings);

int printVersion(const Settings& settings);

/// What -h prints never changes; `printOptions` prints the whole table.
int printHelp(const Settings& settings);
int printOptions(const Settings& settings);

/// What the variable of --explain means, or a line for each variable. Throws VeskException for an
/// unknown one.
int explainVariables(const Settings& settings);

/// The tables of the documentation, see scripts/variable-tables.
int printVariableTables(const Settings& settings);

}  // namespace Vesk::modes
