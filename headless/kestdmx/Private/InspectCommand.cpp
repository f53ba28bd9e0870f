// kestdmx inspect --project DIR [PATH] [--html FILE]: the text report of every library of a project,
// or of one; with --html, the channel map page of the same libraries instead.
// CLI11 first: the engine's check() macro would rewrite its Option::check.
#include <CLI/CLI.hpp>

#include "ChannelMapPage.h"
#include "KestDMXCommands.h"
#include "KestDMXProject.h"
#include "KestDMXRunner.h"
#include "KestDMXText.h"
#include "LibraryReport.h"
#include "OutputFile.h"

#include <iostream>
#include <memory>

namespace
{
	struct FInspectOptions
	{
		std::string ProjectDir;
		std::string LibraryPath;
		std::string PagePath;
	};

	// The libraries go to the text report on stdout, or to the page when one was asked for.
	int ShowLibraries(const FInspectOptions& Options, const std::vector<UDMXLibrary*>& Libraries)
	{
		if (!Options.PagePath.empty())
		{
			std::string Error;
			return WriteChannelMapPage(Options.PagePath, Libraries, Error) ? KestDMXExitSuccess : ReportFailure(Error);
		}
		for (size_t Index = 0; Index < Libraries.size(); ++Index)
		{
			std::cout << (Index == 0 ? "" : "\n") << FormatLibraryReport(Libraries[Index]);
		}
		return KestDMXExitSuccess;
	}

	int InspectProject(const FInspectOptions& Options)
	{
		std::string Error;
		if (!Options.PagePath.empty() && !CheckOutputFile(Options.PagePath, Error))
		{
			return ReportFailure(Error);
		}
		FKestDMXSession Session;
		FKestDMXProject Project;
		const bool bLoaded = LoadKestDMXProject(Options.ProjectDir, Session.GetEditor(), Project, Error, EKestDMXProjectAccess::Read);
		FlushEngineWarnings(false);
		PrintProjectWarnings(Project);
		if (!bLoaded)
		{
			return ReportFailure(Error);
		}
		if (!Options.LibraryPath.empty())
		{
			UDMXLibrary* Library = LoadLibraryForReport(Options.LibraryPath);
			FlushEngineWarnings(false);
			if (Library == nullptr)
			{
				return ReportFailure("no DMX Library at " + Options.LibraryPath);
			}
			return ShowLibraries(Options, {Library});
		}
		std::vector<UDMXLibrary*> Libraries;
		for (const FString& PackageName : Project.LibraryPackages)
		{
			Libraries.push_back(LoadLibraryForReport(ToUTF8(PackageName)));
		}
		FlushEngineWarnings(false);
		return ShowLibraries(Options, Libraries);
	}
}

void AddInspectCommand(CLI::App& App, int& OutExitCode)
{
	auto Options = std::make_shared<FInspectOptions>();
	CLI::App* Command = App.add_subcommand("inspect", "Print a report of each DMX Library of a project, or of the one at PATH.");
	Command->add_option("--project", Options->ProjectDir, "The project folder")->type_name("DIR")->required();
	Command->add_option("path", Options->LibraryPath, "A library's package or object path (/Game/DMX/Stage)")->type_name("PATH");
	Command->add_option("--html", Options->PagePath, "Write the channel map page (HTML) to FILE instead of printing the report")->type_name("FILE");
	Command->callback([Options, &OutExitCode]() { OutExitCode = InspectProject(*Options); });
}
