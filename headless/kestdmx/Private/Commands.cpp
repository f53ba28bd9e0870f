#include "KestDMXRunner.h"
#include "KestDMXProject.h"
#include "LibraryReport.h"
#include "KestDMXText.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <algorithm>

#include "Library/DMXLibrary.h"
#include "UObject/HeadlessObjectRegistry.h"
#include "UObject/UObjectGlobals.h"
#include "VorlithHostRecorder.h"

namespace
{
	const char* const Usage =
		"usage: kestdmx run [--project DIR] SCRIPT.lua...\n"
		"       kestdmx test PATH...\n"
		"       kestdmx inspect --project DIR [LIBRARY_PATH]\n"
		"       kestdmx docs\n";

	int PrintUsage(const std::string& Problem)
	{
		if (!Problem.empty())
		{
			std::cerr << "kestdmx: " << Problem << "\n";
		}
		std::cerr << Usage;
		return 2;
	}

	void FlushEngineWarnings()
	{
		TArray<FString>& Warnings = FHeadlessObjectRegistry::Get().Warnings;
		for (const FString& Warning : Warnings)
		{
			std::cerr << ToUTF8(Warning) << "\n";
		}
		Warnings.Reset();
	}

	// Splits "--project DIR" from the positional arguments; answers a usage problem, or "" when fine.
	std::string ParseProjectArgs(const std::vector<std::string>& Args, std::string& OutProjectDir, std::vector<std::string>& OutPositional)
	{
		for (size_t Index = 0; Index < Args.size(); ++Index)
		{
			if (Args[Index] == "--project")
			{
				if (Index + 1 >= Args.size())
				{
					return "--project needs a folder";
				}
				OutProjectDir = Args[++Index];
			}
			else if (Args[Index].rfind("--", 0) == 0)
			{
				return "unknown option " + Args[Index];
			}
			else
			{
				OutPositional.push_back(Args[Index]);
			}
		}
		return std::string();
	}

	int RunScripts(const std::vector<std::string>& Args)
	{
		std::vector<std::string> Scripts;
		std::string ProjectDir;
		const std::string Problem = ParseProjectArgs(Args, ProjectDir, Scripts);
		if (!Problem.empty())
		{
			return PrintUsage(Problem);
		}
		if (Scripts.empty())
		{
			return PrintUsage("run needs at least one script");
		}
		for (const std::string& Script : Scripts)
		{
			if (!std::filesystem::is_regular_file(Script))
			{
				std::cerr << "kestdmx: no such script: " << Script << "\n";
				return 1;
			}
		}
		FKestDMXSession Session;
		if (!ProjectDir.empty())
		{
			std::string Error;
			const bool bLoaded = LoadKestDMXProject(ProjectDir, Session.GetEditor(), Error);
			FlushEngineWarnings();
			if (!bLoaded)
			{
				std::cerr << "kestdmx: " << Error << "\n";
				return 1;
			}
		}
		for (const std::string& Script : Scripts)
		{
			std::string Error;
			const bool bRan = Session.GetLua().RunFile(Script, Error);
			FlushEngineWarnings();
			if (!bRan)
			{
				std::cerr << Error << "\n";
				return 1;
			}
		}
		// Like the editor's "save all", once every script has run.
		if (!ProjectDir.empty())
		{
			std::string Error;
			if (!SaveKestDMXProject(ProjectDir, Session.GetEditor(), Error))
			{
				std::cerr << "kestdmx: " << Error << "\n";
				return 1;
			}
		}
		return 0;
	}

	int InspectProject(const std::vector<std::string>& Args)
	{
		std::string ProjectDir;
		std::vector<std::string> Paths;
		const std::string Problem = ParseProjectArgs(Args, ProjectDir, Paths);
		if (!Problem.empty())
		{
			return PrintUsage(Problem);
		}
		if (ProjectDir.empty())
		{
			return PrintUsage("inspect needs --project DIR");
		}
		if (Paths.size() > 1)
		{
			return PrintUsage("inspect takes at most one library path");
		}

		FKestDMXSession Session;
		std::string Error;
		const bool bLoaded = LoadKestDMXProject(ProjectDir, Session.GetEditor(), Error);
		FHeadlessObjectRegistry::Get().Warnings.Reset();
		if (!bLoaded)
		{
			std::cerr << "kestdmx: " << Error << "\n";
			return 1;
		}
		if (!Paths.empty())
		{
			UDMXLibrary* Library = LoadLibraryForReport(Paths[0]);
			FHeadlessObjectRegistry::Get().Warnings.Reset();
			if (Library == nullptr)
			{
				std::cerr << "kestdmx: no DMX Library at " << Paths[0] << "\n";
				return 1;
			}
			std::cout << FormatLibraryReport(Library);
			return 0;
		}
		bool bFirst = true;
		for (const FString& PackageName : FindProjectLibraryPackages(ProjectDir))
		{
			const std::string Path = ToUTF8(PackageName);
			UDMXLibrary* Library = LoadLibraryForReport(Path);
			std::cout << (bFirst ? "" : "\n") << FormatLibraryReport(Library);
			bFirst = false;
		}
		FHeadlessObjectRegistry::Get().Warnings.Reset();
		return 0;
	}

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

	int RunTests(const std::vector<std::string>& Args)
	{
		if (Args.empty())
		{
			return PrintUsage("test needs a file or folder");
		}
		std::vector<std::string> Files;
		for (const std::string& Arg : Args)
		{
			if (std::filesystem::is_directory(Arg))
			{
				std::vector<std::string> Found;
				for (const auto& Entry : std::filesystem::recursive_directory_iterator(Arg))
				{
					if (Entry.is_regular_file() && Entry.path().extension() == ".lua")
					{
						Found.push_back(Entry.path().string());
					}
				}
				std::sort(Found.begin(), Found.end());
				Files.insert(Files.end(), Found.begin(), Found.end());
			}
			else if (std::filesystem::is_regular_file(Arg))
			{
				Files.push_back(Arg);
			}
			else
			{
				std::cerr << "kestdmx: no such test file or folder: " << Arg << "\n";
				return 1;
			}
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
				FHeadlessObjectRegistry::Get().Warnings.Reset();
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
		return Failed == 0 ? 0 : 1;
	}

	int PrintDocs()
	{
		FKestDMXSession Session;
		const FVorlithHostRecorder& Host = FVorlithHostRecorder::Get();
		for (const FVorlithExtensionDescriptor& Descriptor : Host.Extensions)
		{
			std::cout << "# " << ToUTF8(Descriptor.DisplayName) << "\n\n";
			std::cout << ToUTF8(Descriptor.Description) << "\n\n";
			std::cout << "| Field | Value |\n|---|---|\n";
			std::cout << "| Id | " << ToUTF8(Descriptor.Id) << " |\n";
			std::cout << "| Module | " << ToUTF8(Descriptor.ModuleName) << " |\n";
			std::cout << "| Author | " << ToUTF8(Descriptor.Author) << " |\n";
			std::cout << "| Version | " << ToUTF8(Descriptor.Version) << " |\n";
			std::cout << "| Keyword | " << ToUTF8(Descriptor.Keyword) << " |\n";
			std::cout << "| Experimental | " << (Descriptor.bExperimental ? "yes" : "no") << " |\n";
			std::cout << "| Requires editor restart | " << (Descriptor.bRequiresEditorRestart ? "yes" : "no") << " |\n";
			std::cout << "| Provides Lua bindings | " << (Descriptor.bProvidesLuaBindings ? "yes" : "no") << " |\n";
			std::string Tags;
			for (const FString& Tag : Descriptor.Tags)
			{
				Tags += (Tags.empty() ? "" : ", ") + ToUTF8(Tag);
			}
			std::cout << "| Tags | " << Tags << " |\n\n";
		}
		for (const FVorlithRegisteredBinding& Binding : Host.Bindings)
		{
			std::cout << "## Lua functions (category " << ToUTF8(Binding.Category) << ", owner " << ToUTF8(Binding.OwnerId) << ")\n\n";
			// One entry per function rather than a table: signatures hold '|', which would split a
			// Markdown table cell, and the records are printed exactly as registered.
			for (const FLuaFunctionDoc& Doc : Binding.Docs)
			{
				std::cout << "- `" << ToUTF8(Doc.Signature) << "`: " << ToUTF8(Doc.Description) << ". Returns " << ToUTF8(Doc.Returns) << ".\n";
			}
			std::cout << "\n";
		}
		return 0;
	}
}

FKestDMXSession::FKestDMXSession(const FHeadlessEditorOptions& Options, lua_Alloc Allocator, void* AllocatorData)
{
	Editor = std::make_unique<FHeadlessEditor>(Options);
	Editor->LoadModule(TEXT("Kest_DMXEngine_Integration"));
	Lua = std::make_unique<FVorlithLuaSession>(Allocator, AllocatorData);
	InstallEditorLuaGlobal(Lua->GetState(), *Editor);
}

FKestDMXSession::~FKestDMXSession()
{
	// The Lua state goes first: its closures point at engine objects the editor is about to free.
	Lua.reset();
	Editor.reset();
}

int RunKestDMXCommandLine(const std::vector<std::string>& Args)
{
	if (Args.empty())
	{
		return PrintUsage("");
	}
	const std::string& Command = Args[0];
	const std::vector<std::string> Rest(Args.begin() + 1, Args.end());
	if (Command == "run")
	{
		return RunScripts(Rest);
	}
	if (Command == "test")
	{
		return RunTests(Rest);
	}
	if (Command == "inspect")
	{
		return InspectProject(Rest);
	}
	if (Command == "docs")
	{
		return Rest.empty() ? PrintDocs() : PrintUsage("docs takes no arguments");
	}
	if (Command == "-h" || Command == "--help" || Command == "help")
	{
		std::cout << Usage;
		return 0;
	}
	return PrintUsage("unknown command " + Command);
}
