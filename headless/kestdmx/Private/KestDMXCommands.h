// The kestdmx commands. Each command lives in its own file and adds itself to the command line with
// one Add...Command routine; the routine's callback stores the command's exit code.
#pragma once

#include <string>
#include <vector>

namespace CLI
{
	class App;
}

// Exit codes every command shares.
constexpr int KestDMXExitSuccess = 0;
constexpr int KestDMXExitFailure = 1;
constexpr int KestDMXExitUsage = 2;

void AddRunCommand(CLI::App& App, int& OutExitCode);
void AddTestCommand(CLI::App& App, int& OutExitCode);
void AddInspectCommand(CLI::App& App, int& OutExitCode);
void AddDocsCommand(CLI::App& App, int& OutExitCode);
void AddCheckCommand(CLI::App& App, int& OutExitCode);
void AddStubsCommand(CLI::App& App, int& OutExitCode);
void AddImportCommand(CLI::App& App, int& OutExitCode);

// Prints the warnings the engine logged since the last call to stderr (or drops them when bPrint is
// false), as the editor's log would show them.
void FlushEngineWarnings(bool bPrint = true);

// Prints "kestdmx: PROBLEM" to stderr and answers KestDMXExitFailure.
int ReportFailure(const std::string& Problem);

// Prints "kestdmx: warning: WARNING" to stderr for each warning the project's load gave.
void PrintProjectWarnings(const struct FKestDMXProject& Project);
