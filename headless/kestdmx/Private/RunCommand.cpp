// kestdmx run [--project DIR] [--html FILE] SCRIPT.lua...: the scripts in order in one session of a
// fresh headless editor; with a project, it is loaded first and saved like the editor's "save all"
// once every script has run; with --html, the channel map page of every library is written last.
// CLI11 first: the engine's check() macro would rewrite its Option::check.
#include <CLI/CLI.hpp>

#include "ChannelMapPage.h"
#include "KestDMXCommands.h"
#include "KestDMXProject.h"
#include "KestDMXRunner.h"
#include "LibraryReport.h"
#include "OutputFile.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <system_error>

namespace
{
	struct FRunOptions
	{
		std::string ProjectDir;
		std::vector<std::string> Scripts;
		std::string PagePath;
	};

	int RunScripts(const FRunOptions& Options)
	{
		for (const std::string& Script : Options.Scripts)
		{
			if (!std::filesystem::is_regular_file(Script))
			{
				return ReportFailure("no such script: " + Script);
			}
		}
		if (std::string Error; !Options.PagePath.empty() && !CheckOutputFile(Options.PagePath, Error))
		{
			return ReportFailure(Error);
		}
		if (!Options.ProjectDir.empty())
		{
			std::string Error;
			if (!PrepareKestDMXProjectFolder(Options.ProjectDir, Error))
			{
				return ReportFailure(Error);
			}
		}
		FKestDMXSession Session;
		// Locked from the load to the save.
		FKestDMXProject Project;
		if (!Options.ProjectDir.empty())
		{
			std::string Error;
			const bool bLoaded = LoadKestDMXProject(Options.ProjectDir, Session.GetEditor(), Project, Error);
			FlushEngineWarnings();
			PrintProjectWarnings(Project);
			if (!bLoaded)
			{
				return ReportFailure(Error);
			}
		}
		for (const std::string& Script : Options.Scripts)
		{
			std::string Error;
			const bool bRan = Session.GetLua().RunFile(Script, Error);
			FlushEngineWarnings();
			if (!bRan)
			{
				std::cerr << Error << "\n";
				return KestDMXExitFailure;
			}
		}
		if (!Options.ProjectDir.empty())
		{
			std::string Error;
			if (!SaveKestDMXProject(Project, Session.GetEditor(), Error))
			{
				return ReportFailure(Error);
			}
		}
		if (std::string Error; !Options.PagePath.empty() && !WriteChannelMapPage(Options.PagePath, FindLibrariesInMemory(), Error))
		{
			return ReportFailure(Error);
		}
		return KestDMXExitSuccess;
	}
}

void AddRunCommand(CLI::App& App, int& OutExitCode)
{
	auto Options = std::make_shared<FRunOptions>();
	CLI::App* Command = App.add_subcommand("run", "Run scripts in order in one session of a fresh headless editor.");
	Command->add_option("--project", Options->ProjectDir,
		"Load the project in DIR first (made when missing) and save its dirty packages when every script ran")
		->type_name("DIR");
	Command->add_option("--html", Options->PagePath, "When every script ran, write the channel map page (HTML) of every library to FILE")
		->type_name("FILE");
	Command->add_option("scripts", Options->Scripts, "Lua scripts")->type_name("SCRIPT.lua")->required();
	Command->callback([Options, &OutExitCode]() { OutExitCode = RunScripts(*Options); });
}
