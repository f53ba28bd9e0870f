// kestdmx import [--library PATH] [--out FILE.lua | --project DIR] FILE.qxf...: fixture definitions
// as a Lua script of dmx_library(path):add("fixture_type", ...) calls, printed, written to a file,
// or run on a project that is then saved. What could not be mapped and a summary go to stderr.
// CLI11 first: the engine's check() macro would rewrite its Option::check.
#include <CLI/CLI.hpp>

#include "FixtureImport.h"
#include "KestDMXCommands.h"
#include "KestDMXProject.h"
#include "KestDMXRunner.h"
#include "KestDMXText.h"
#include "LibraryReport.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <set>
#include <system_error>

#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"

namespace
{
	struct FImportOptions
	{
		std::string LibraryPath;
		std::string OutFile;
		std::string ProjectDir;
		std::vector<std::string> Files;
	};

	std::string CountOf(size_t Count, const char* One, const char* Many)
	{
		return std::to_string(Count) + " " + (Count == 1 ? One : Many);
	}

	void PrintSummary(const FImportResult& Result)
	{
		for (const FImportNote& Note : Result.Notes)
		{
			std::cerr << Note.File << ": " << Note.Text << "\n";
		}
		std::set<std::string> Libraries;
		size_t Modes = 0;
		size_t Functions = 0;
		size_t WideFunctions = 0;
		size_t Matrices = 0;
		size_t CellAttributes = 0;
		for (const FImportFixtureType& FixtureType : Result.FixtureTypes)
		{
			Libraries.insert(FixtureType.LibraryPath);
			for (const FImportMode& Mode : FixtureType.Modes)
			{
				++Modes;
				Functions += Mode.Functions.size();
				for (const FImportFunction& Function : Mode.Functions)
				{
					WideFunctions += Function.NumChannels > 1 ? 1 : 0;
				}
				Matrices += Mode.Matrix ? 1 : 0;
				CellAttributes += Mode.Matrix ? Mode.Matrix->CellAttributes.size() : 0;
			}
		}
		std::cerr << "kestdmx import: " << CountOf(Result.FixtureTypes.size(), "fixture type", "fixture types")
			<< " in " << CountOf(Libraries.size(), "DMX Library", "DMX Libraries") << ": "
			<< CountOf(Modes, "mode", "modes") << ", " << CountOf(Functions, "function", "functions")
			<< " (" << WideFunctions << " of 16 bit), " << CountOf(Matrices, "matrix", "matrices")
			<< " (" << CountOf(CellAttributes, "cell attribute", "cell attributes") << ")\n";
		if (!Result.Notes.empty())
		{
			std::cerr << "kestdmx import: " << CountOf(Result.Notes.size(), "thing", "things") << " not mapped as the definitions have them (see above)\n";
		}
		if (!Result.Failures.empty())
		{
			std::cerr << "kestdmx import: " << CountOf(Result.Failures.size(), "file", "files") << " not imported (see above)\n";
		}
	}

	std::vector<std::string> GetLibraryTypeNames(const std::string& LibraryPath)
	{
		std::vector<std::string> Names;
		if (UDMXLibrary* Library = LoadLibraryForReport(LibraryPath))
		{
			for (UDMXEntity* Entity : Library->GetEntities())
			{
				if (const UDMXEntityFixtureType* FixtureType = Cast<UDMXEntityFixtureType>(Entity))
				{
					Names.push_back(ToUTF8(FixtureType->Name));
				}
			}
		}
		return Names;
	}

	// Loads the project, makes the libraries it lacks, settles the names against what the libraries
	// hold and runs the script; the project is saved only when all of it succeeded.
	int ApplyToProject(const FImportOptions& Options, FImportResult& Result, std::vector<std::string>& OutSavedFiles)
	{
		std::string Error;
		if (!PrepareKestDMXProjectFolder(Options.ProjectDir, Error))
		{
			return ReportFailure(Error);
		}
		FKestDMXSession Session;
		// Locked from the load to the save.
		FKestDMXProject Project;
		const bool bLoaded = LoadKestDMXProject(Options.ProjectDir, Session.GetEditor(), Project, Error);
		FlushEngineWarnings();
		PrintProjectWarnings(Project);
		if (!bLoaded)
		{
			return ReportFailure(Error);
		}
		SettleFixtureTypeNames(Result.FixtureTypes, GetLibraryTypeNames, Result.Notes);

		std::set<std::string> Libraries;
		for (const FImportFixtureType& FixtureType : Result.FixtureTypes)
		{
			if (Libraries.insert(FixtureType.LibraryPath).second && LoadLibraryForReport(FixtureType.LibraryPath) == nullptr)
			{
				sol::state& Lua = Session.GetLua().GetState();
				const bool bCreated = Lua["editor"]["create_library"](FixtureType.LibraryPath);
				if (!bCreated)
				{
					return ReportFailure("cannot create the DMX Library " + FixtureType.LibraryPath + ": the package holds something else");
				}
			}
		}
		const bool bRan = Session.RunScript(WriteFixtureImportScript(Result.FixtureTypes), "import", Error);
		FlushEngineWarnings();
		if (!bRan)
		{
			return ReportFailure("the import script failed, so the project is not saved: " + Error);
		}
		if (!SaveKestDMXProject(Project, Session.GetEditor(), Error, &OutSavedFiles))
		{
			return ReportFailure(Error);
		}
		return KestDMXExitSuccess;
	}

	int RunImport(const FImportOptions& Options)
	{
		std::string Problem;
		if (!Options.LibraryPath.empty() && !IsValidImportLibraryPath(Options.LibraryPath, Problem))
		{
			std::cerr << "kestdmx: --library " << Options.LibraryPath << ": " << Problem << "\n";
			return KestDMXExitUsage;
		}
		FImportResult Result = ImportFixtureDefinitions(Options.Files, Options.LibraryPath);
		for (const std::string& Failure : Result.Failures)
		{
			std::cerr << "kestdmx: " << Failure << "\n";
		}
		int ExitCode = Result.Failures.empty() ? KestDMXExitSuccess : KestDMXExitFailure;
		if (Result.FixtureTypes.empty())
		{
			PrintSummary(Result);
			return KestDMXExitFailure;
		}

		std::vector<std::string> SavedFiles;
		if (!Options.ProjectDir.empty())
		{
			const int ProjectExitCode = ApplyToProject(Options, Result, SavedFiles);
			ExitCode = ProjectExitCode != KestDMXExitSuccess ? ProjectExitCode : ExitCode;
		}
		else
		{
			SettleFixtureTypeNames(Result.FixtureTypes, nullptr, Result.Notes);
			const std::string Script = WriteFixtureImportScript(Result.FixtureTypes);
			std::string Error;
			if (Options.OutFile.empty())
			{
				if (!(std::cout << Script << std::flush))
				{
					ExitCode = ReportFailure("cannot write the script to stdout");
				}
			}
			else if (!WriteImportScriptFile(Options.OutFile, Script, Error))
			{
				ExitCode = ReportFailure(Error);
			}
		}
		PrintSummary(Result);
		if (!SavedFiles.empty())
		{
			std::cerr << "kestdmx import: saved " << CountOf(SavedFiles.size(), "file", "files") << " of " << Options.ProjectDir << "\n";
		}
		return ExitCode;
	}
}

void AddImportCommand(CLI::App& App, int& OutExitCode)
{
	auto Options = std::make_shared<FImportOptions>();
	CLI::App* Command = App.add_subcommand("import", "Turn fixture definitions (.qxf) into a script that adds them as fixture types.");
	Command->add_option("--library", Options->LibraryPath,
		"Put every fixture type in the DMX Library at PATH (default: /Game/DMX/<manufacturer>)")->type_name("PATH");
	CLI::Option* Out = Command->add_option("--out", Options->OutFile, "Write the script to FILE instead of stdout")->type_name("FILE.lua");
	Command->add_option("--project", Options->ProjectDir,
		"Run the script on the project in DIR (made when missing), creating the libraries it needs, and save it")
		->type_name("DIR")->excludes(Out);
	Command->add_option("files", Options->Files, "Fixture definitions, or folders of them")->type_name("FILE.qxf")->required();
	Command->callback([Options, &OutExitCode]() { OutExitCode = RunImport(*Options); });
}
