// The kestdmx command line as users and scripts meet it: help and version on stdout with exit 0,
// usage errors as exit 2 naming the problem, failures as exit 1, and the project folder of `run`.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include "KestDMXRunner.h"

namespace
{
	struct FCommandResult
	{
		int ExitCode = -1;
		std::string Out;
		std::string Err;
	};

	FCommandResult RunCommandLine(const std::vector<std::string>& Args)
	{
		FCommandResult Result;
		testing::internal::CaptureStdout();
		testing::internal::CaptureStderr();
		Result.ExitCode = RunKestDMXCommandLine(Args);
		Result.Out = testing::internal::GetCapturedStdout();
		Result.Err = testing::internal::GetCapturedStderr();
		return Result;
	}

	const std::filesystem::path WorkDir = std::filesystem::temp_directory_path() / "kestdmx-command-line-test";
}

TEST(FCommandLineTest, HelpAndVersionGoToStdoutAndSucceed)
{
	const FCommandResult Help = RunCommandLine({"--help"});
	EXPECT_EQ(Help.ExitCode, 0);
	for (const char* Command : {"run", "test", "inspect", "docs", "check", "stubs", "import"})
	{
		EXPECT_NE(Help.Out.find(Command), std::string::npos) << Command;
		const FCommandResult CommandHelp = RunCommandLine({Command, "--help"});
		EXPECT_EQ(CommandHelp.ExitCode, 0) << Command;
		EXPECT_NE(CommandHelp.Out.find(std::string("kestdmx ") + Command), std::string::npos) << CommandHelp.Out;
	}
	const FCommandResult Version = RunCommandLine({"--version"});
	EXPECT_EQ(Version.ExitCode, 0);
	EXPECT_EQ(Version.Out.rfind("kestdmx ", 0), 0u) << Version.Out;
}

TEST(FCommandLineTest, UsageErrorsExitTwoNamingTheProblem)
{
	const std::vector<std::pair<std::vector<std::string>, std::string>> Cases = {
		{{}, "subcommand is required"},
		{{"bogus"}, "unknown command 'bogus'"},
		{{"run"}, "scripts is required"},
		{{"run", "--project"}, "--project"},
		{{"run", "--frobnicate", "x.lua"}, "--frobnicate"},
		{{"inspect"}, "--project is required"},
		{{"docs", "extra"}, "extra"},
	};
	for (const auto& [Args, Problem] : Cases)
	{
		const FCommandResult Result = RunCommandLine(Args);
		EXPECT_EQ(Result.ExitCode, 2) << Problem;
		EXPECT_NE(Result.Err.find(Problem), std::string::npos) << Result.Err;
		EXPECT_TRUE(Result.Out.empty()) << Result.Out;
	}
}

TEST(FCommandLineTest, RunMakesAMissingProjectFolderAndRefusesAFile)
{
	std::filesystem::remove_all(WorkDir);
	std::filesystem::create_directories(WorkDir);
	const std::string Script = (WorkDir / "make.lua").string();
	std::ofstream(Script) << "assert(editor.create_library('/Game/DMX/Stage'))\n";

	const std::filesystem::path Project = WorkDir / "new" / "project";
	EXPECT_EQ(RunCommandLine({"run", "--project", Project.string(), Script}).ExitCode, 0);
	EXPECT_TRUE(std::filesystem::is_regular_file(Project / "Content" / "DMX" / "Stage.dmxlib.json"));

	const FCommandResult OnFile = RunCommandLine({"run", "--project", Script, Script});
	EXPECT_EQ(OnFile.ExitCode, 1);
	EXPECT_NE(OnFile.Err.find("is not a folder"), std::string::npos) << OnFile.Err;

	const FCommandResult Missing = RunCommandLine({"run", (WorkDir / "missing.lua").string()});
	EXPECT_EQ(Missing.ExitCode, 1);
	EXPECT_NE(Missing.Err.find("no such script"), std::string::npos) << Missing.Err;
	std::filesystem::remove_all(WorkDir);
}
