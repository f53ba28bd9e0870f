// kestdmx check [--project DIR] [--json] [--strict] SCRIPT.lua...: the scripts run as `run` runs them
// (never saving), and what the module silently did with their arguments is reported on stdout.
// CLI11 first: the engine's check() macro would rewrite its Option::check.
#include <CLI/CLI.hpp>

#include "KestDMXCheck.h"
#include "KestDMXCommands.h"
#include "KestDMXProject.h"
#include "KestDMXRunner.h"

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <unistd.h>

namespace
{
	struct FCheckOptions
	{
		std::string ProjectDir;
		bool bJson = false;
		bool bStrict = false;
		std::vector<std::string> Scripts;
	};

	// While it lives, what the scripts print goes to stderr, so stdout holds the findings alone.
	class FScriptOutputToStderr
	{
	public:
		FScriptOutputToStderr()
		{
			std::cout.flush();
			std::fflush(stdout);
			SavedStdout = dup(STDOUT_FILENO);
			if (SavedStdout >= 0)
			{
				dup2(STDERR_FILENO, STDOUT_FILENO);
			}
		}
		~FScriptOutputToStderr()
		{
			std::cout.flush();
			std::fflush(stdout);
			if (SavedStdout >= 0)
			{
				dup2(SavedStdout, STDOUT_FILENO);
				close(SavedStdout);
			}
		}
		FScriptOutputToStderr(const FScriptOutputToStderr&) = delete;
		FScriptOutputToStderr& operator=(const FScriptOutputToStderr&) = delete;

	private:
		int SavedStdout = -1;
	};

	// Runs the scripts in a check session; false after a Lua error (printed to stderr).
	bool RunCheckedScripts(const FCheckOptions& Options, FKestCheckLog& Log, std::string& OutFailure)
	{
		FKestDMXSession Session;
		if (!Options.ProjectDir.empty())
		{
			// Read only: a check never saves, so it neither locks the project nor tidies it.
			FKestDMXProject Project;
			const bool bLoaded = LoadKestDMXProject(Options.ProjectDir, Session.GetEditor(), Project, OutFailure, EKestDMXProjectAccess::Read);
			FlushEngineWarnings();
			PrintProjectWarnings(Project);
			if (!bLoaded)
			{
				return false;
			}
		}
		InstallKestDMXCheck(Session, Log);
		bool bRan = true;
		{
			const FScriptOutputToStderr Redirect;
			for (const std::string& Script : Options.Scripts)
			{
				std::string Error;
				bRan = Session.GetLua().RunFile(Script, Error);
				FlushEngineWarnings();
				if (!bRan)
				{
					std::cerr << Error << "\n";
					break;
				}
			}
		}
		// What the scripts left is checked even after an error: it is what they built so far.
		CheckKestDMXFinalState(Log, Options.ProjectDir);
		Log.bActive = false;
		return bRan;
	}

	int CheckScripts(const FCheckOptions& Options)
	{
		for (const std::string& Script : Options.Scripts)
		{
			if (!std::filesystem::is_regular_file(Script))
			{
				return ReportFailure("no such script: " + Script);
			}
		}
		// Unlike run, check saves nothing, so it makes no folder either: a misspelt DIR is an error.
		if (!Options.ProjectDir.empty() && !std::filesystem::is_directory(Options.ProjectDir))
		{
			return ReportFailure("no such project folder: " + Options.ProjectDir);
		}

		FKestCheckLog Log;
		std::string Failure;
		const bool bRan = RunCheckedScripts(Options, Log, Failure);
		if (!Failure.empty())
		{
			return ReportFailure(Failure);
		}
		std::cout << (Options.bJson ? FormatKestCheckFindingsAsJson(Log.Findings) : FormatKestCheckFindings(Log.Findings));
		std::cout.flush();
		const size_t Count = Log.Findings.size();
		std::cerr << "kestdmx check: " << Count << (Count == 1 ? " finding" : " findings") << " in " << Options.Scripts.size()
			<< (Options.Scripts.size() == 1 ? " script" : " scripts") << (bRan ? "" : " (stopped by a Lua error)") << "\n";
		if (!bRan || (Options.bStrict && Count > 0))
		{
			return KestDMXExitFailure;
		}
		return KestDMXExitSuccess;
	}
}

void AddCheckCommand(CLI::App& App, int& OutExitCode)
{
	auto Options = std::make_shared<FCheckOptions>();
	CLI::App* Command = App.add_subcommand("check", "Run scripts like run (saving nothing) and report what the module did with their arguments.");
	Command->add_option("--project", Options->ProjectDir, "Load the project in DIR first (an existing folder; nothing is saved)")->type_name("DIR");
	Command->add_flag("--json", Options->bJson, "Print the findings as a JSON array");
	Command->add_flag("--strict", Options->bStrict, "Exit 1 when there is any finding");
	Command->add_option("scripts", Options->Scripts, "Lua scripts")->type_name("SCRIPT.lua")->required();
	Command->footer("Findings go to stdout as FILE:LINE: warning[CODE]: MESSAGE; what the scripts print goes to stderr.\n"
		"Exit status: 0 the scripts ran, 1 a Lua error (or, with --strict, any finding), 2 bad command line.");
	Command->callback([Options, &OutExitCode]() { OutExitCode = CheckScripts(*Options); });
}
