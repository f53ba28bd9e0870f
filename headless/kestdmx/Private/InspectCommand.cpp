// kestdmx inspect --project DIR [PATH]: the text report of every library of a project, or of one.
// CLI11 first: the engine's check() macro would rewrite its Option::check.
#include <CLI/CLI.hpp>

#include "KestDMXCommands.h"
#include "KestDMXProject.h"
#include "KestDMXRunner.h"
#include "KestDMXText.h"
#include "LibraryReport.h"

#include <iostream>
#include <memory>

namespace
{
	struct FInspectOptions
	{
		std::string ProjectDir;
		std::string LibraryPath;
	};

	int InspectProject(const FInspectOptions& Options)
	{
		FKestDMXSession Session;
		FKestDMXProject Project;
		std::string Error;
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
			std::cout << FormatLibraryReport(Library);
			return KestDMXExitSuccess;
		}
		bool bFirst = true;
		for (const FString& PackageName : Project.LibraryPackages)
		{
			UDMXLibrary* Library = LoadLibraryForReport(ToUTF8(PackageName));
			std::cout << (bFirst ? "" : "\n") << FormatLibraryReport(Library);
			bFirst = false;
		}
		FlushEngineWarnings(false);
		return KestDMXExitSuccess;
	}
}

void AddInspectCommand(CLI::App& App, int& OutExitCode)
{
	auto Options = std::make_shared<FInspectOptions>();
	CLI::App* Command = App.add_subcommand("inspect", "Print a report of each DMX Library of a project, or of the one at PATH.");
	Command->add_option("--project", Options->ProjectDir, "The project folder")->type_name("DIR")->required();
	Command->add_option("path", Options->LibraryPath, "A library's package or object path (/Game/DMX/Stage)")->type_name("PATH");
	Command->callback([Options, &OutExitCode]() { OutExitCode = InspectProject(*Options); });
}
