// kestdmx test PATH...: each Lua test file (or every *.lua under a folder) in its own fresh editor.
// CLI11 first: the engine's check() macro would rewrite its Option::check.
#include <CLI/CLI.hpp>

#include "KestDMXCommands.h"
#include "KestDMXRunner.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>

namespace
{
	// A test file whose first line is this runs in an editor without the DMX subsystem.
	const char* const NoDMXSubsystemMarker = "-- kestdmx: no-dmx-subsystem";

	FHeadlessEditorOptions GetTestEditorOptions(const std::string& File)
	{
		FHeadlessEditorOptions Options;
		std::ifstream Stream(File);
		std::string FirstLine;
		std::getline(Stream, FirstLine);
		if (!FirstLine.empty() && FirstLine.back() == '\r')
		{
			FirstLine.pop_back();
		}
		Options.bWithDMXSubsystem = FirstLine != NoDMXSubsystemMarker;
		return Options;
	}

	// The test files named, folders expanded to their *.lua files in name order; false (with the
	// path) when a path is neither.
	bool CollectTestFiles(const std::vector<std::string>& Paths, std::vector<std::string>& OutFiles, std::string& OutMissing)
	{
		for (const std::string& Path : Paths)
		{
			if (std::filesystem::is_directory(Path))
			{
				std::vector<std::string> Found;
				for (const auto& Entry : std::filesystem::recursive_directory_iterator(Path))
				{
					if (Entry.is_regular_file() && Entry.path().extension() == ".lua")
					{
						Found.push_back(Entry.path().string());
					}
				}
				std::sort(Found.begin(), Found.end());
				OutFiles.insert(OutFiles.end(), Found.begin(), Found.end());
			}
			else if (std::filesystem::is_regular_file(Path))
			{
				OutFiles.push_back(Path);
			}
			else
			{
				OutMissing = Path;
				return false;
			}
		}
		return true;
	}

	int RunTests(const std::vector<std::string>& Paths)
	{
		std::vector<std::string> Files;
		std::string Missing;
		if (!CollectTestFiles(Paths, Files, Missing))
		{
			return ReportFailure("no such test file or folder: " + Missing);
		}
		int Passed = 0;
		int Failed = 0;
		for (const std::string& File : Files)
		{
			std::string Error;
			bool bPassed = false;
			{
				FKestDMXSession Session(GetTestEditorOptions(File));
				bPassed = Session.GetLua().RunFile(File, Error);
				FlushEngineWarnings(false);
			}
			if (bPassed)
			{
				++Passed;
				std::cout << "ok    " << File << "\n";
			}
			else
			{
				++Failed;
				std::cout << "FAIL  " << File << "\n" << Error << "\n";
			}
		}
		std::cout << Passed << " passed, " << Failed << " failed\n";
		return Failed == 0 ? KestDMXExitSuccess : KestDMXExitFailure;
	}
}

void AddTestCommand(CLI::App& App, int& OutExitCode)
{
	auto Paths = std::make_shared<std::vector<std::string>>();
	CLI::App* Command = App.add_subcommand("test", "Run each Lua test file (or every *.lua under a folder) in its own fresh editor.");
	Command->add_option("paths", *Paths, "Test files or folders")->type_name("PATH")->required();
	Command->footer("A file whose first line is '-- kestdmx: no-dmx-subsystem' runs in an editor without the DMX subsystem.");
	Command->callback([Paths, &OutExitCode]() { OutExitCode = RunTests(*Paths); });
}
