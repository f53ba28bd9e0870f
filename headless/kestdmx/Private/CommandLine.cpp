// The kestdmx command line: one subcommand per command file, parsed with CLI11. Usage errors print
// the problem and a hint to stderr and exit 2; --help and --version print to stdout and exit 0.
// CLI11 first: the engine's check() macro would rewrite its Option::check.
#include <CLI/CLI.hpp>

#include "KestDMXRunner.h"
#include "KestDMXCommands.h"
#include "KestDMXProject.h"
#include "KestDMXText.h"

#include <algorithm>
#include <iostream>

#include "UObject/HeadlessObjectRegistry.h"

#ifndef KESTDMX_VERSION
#define KESTDMX_VERSION "unknown"
#endif

void FlushEngineWarnings(bool bPrint)
{
	TArray<FString>& Warnings = FHeadlessObjectRegistry::Get().Warnings;
	if (bPrint)
	{
		for (const FString& Warning : Warnings)
		{
			std::cerr << ToUTF8(Warning) << "\n";
		}
	}
	Warnings.Reset();
}

int ReportFailure(const std::string& Problem)
{
	std::cerr << "kestdmx: " << Problem << "\n";
	return KestDMXExitFailure;
}

void PrintProjectWarnings(const FKestDMXProject& Project)
{
	for (const std::string& Warning : Project.Warnings)
	{
		std::cerr << "kestdmx: warning: " << Warning << "\n";
	}
}

int RunKestDMXCommandLine(const std::vector<std::string>& Args)
{
	CLI::App App("Runs, tests and inspects DMX scripts and projects in the headless editor.", "kestdmx");
	App.set_version_flag("--version", "kestdmx " KESTDMX_VERSION);
	App.require_subcommand(1);
	App.footer("Exit status: 0 done, 1 failed (a script, test, file or project), 2 bad command line.");

	int ExitCode = KestDMXExitSuccess;
	AddRunCommand(App, ExitCode);
	AddTestCommand(App, ExitCode);
	AddInspectCommand(App, ExitCode);
	AddDocsCommand(App, ExitCode);
	AddCheckCommand(App, ExitCode);
	AddStubsCommand(App, ExitCode);
	AddImportCommand(App, ExitCode);

	// CLI11 would take an unknown command for a stray argument and only ask for a command.
	if (!Args.empty() && !Args[0].empty() && Args[0][0] != '-')
	{
		const std::vector<CLI::App*> Commands = App.get_subcommands([&Args](CLI::App* Command) { return Command->get_name() == Args[0]; });
		if (Commands.empty())
		{
			std::cerr << "kestdmx: unknown command '" << Args[0] << "'\n";
			std::cerr << "Run 'kestdmx --help' for the commands.\n";
			return KestDMXExitUsage;
		}
	}

	// CLI11 takes the arguments last first.
	std::vector<std::string> Reversed(Args.rbegin(), Args.rend());
	try
	{
		App.parse(Reversed);
	}
	catch (const CLI::ParseError& Error)
	{
		if (Error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
		{
			App.exit(Error, std::cout, std::cerr);
			return KestDMXExitSuccess;
		}
		std::cerr << "kestdmx: " << Error.what() << "\n";
		std::cerr << "Run 'kestdmx --help' or 'kestdmx COMMAND --help' for usage.\n";
		return KestDMXExitUsage;
	}
	return ExitCode;
}
