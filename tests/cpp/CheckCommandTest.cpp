// kestdmx check and kestdmx stubs as editors and CI call them: findings alone on stdout in the line
// or JSON form, exit codes with and without --strict, projects read but never saved, and stub files
// written whole and only over their own kind.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <nlohmann/json.hpp>
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

	std::string ReadFile(const std::filesystem::path& File)
	{
		std::ifstream Stream(File);
		std::stringstream Text;
		Text << Stream.rdbuf();
		return Text.str();
	}

	class FCheckCommandTest : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			std::filesystem::remove_all(WorkDir);
			std::filesystem::create_directories(WorkDir);
		}
		void TearDown() override { std::filesystem::remove_all(WorkDir); }

		std::string Write(const std::string& Name, const std::string& Text)
		{
			const std::filesystem::path File = WorkDir / Name;
			std::ofstream(File) << Text;
			return File.string();
		}

		const std::filesystem::path WorkDir = std::filesystem::temp_directory_path() / "kestdmx-check-command-test";
	};

	const char* const MistakenScript = R"(print("built")
editor.create_library("/Game/DMX/Show")
local L = dmx_library("/Game/DMX/Show")
L:add("fixture_type", {name = "Par", modes = {{functions = {{attribute = "Red", data_type = "16-bit"}}}}})
L:add("fixture_patch", {name = "Par 1", fixture_type = "Par", universe = "2", startingchannel = 10})
)";
}

TEST_F(FCheckCommandTest, FindingsGoToStdoutAndStrictFailsOnThem)
{
	const std::string Script = Write("show.lua", MistakenScript);
	const FCommandResult Plain = RunCommandLine({"check", Script});
	EXPECT_EQ(Plain.ExitCode, 0) << Plain.Err;
	std::istringstream Lines(Plain.Out);
	std::string Line;
	int Count = 0;
	while (std::getline(Lines, Line))
	{
		EXPECT_TRUE(std::regex_match(Line, std::regex(std::regex_replace(Script, std::regex("[.]"), "\\.") + ":[45]: warning\\[[a-z-]+\\]: .+"))) << Line;
		++Count;
	}
	EXPECT_EQ(Count, 4) << Plain.Out;
	EXPECT_NE(Plain.Err.find("built\n"), std::string::npos) << "what the script prints goes to stderr";
	EXPECT_NE(Plain.Err.find("kestdmx check: 4 findings in 1 script"), std::string::npos) << Plain.Err;

	const FCommandResult Strict = RunCommandLine({"check", "--strict", Script});
	EXPECT_EQ(Strict.ExitCode, 1);
	EXPECT_EQ(Strict.Out, Plain.Out);

	const FCommandResult Json = RunCommandLine({"check", "--json", Script});
	EXPECT_EQ(Json.ExitCode, 0);
	const nlohmann::json Findings = nlohmann::json::parse(Json.Out);
	ASSERT_TRUE(Findings.is_array());
	ASSERT_EQ(Findings.size(), 4u);
	EXPECT_EQ(Findings[1]["file"], Script);
	EXPECT_EQ(Findings[1]["line"], 5);
	EXPECT_EQ(Findings[1]["code"], "wrong-type");
	EXPECT_EQ(Findings[1]["key"], "universe");
	EXPECT_EQ(Findings[1]["given"], "2");
	EXPECT_EQ(Findings[1]["used"], 1);
	EXPECT_EQ(Findings[1]["call"], "dmx_library(\"/Game/DMX/Show\"):add(\"fixture_patch\", {...})");
	EXPECT_EQ(Findings[3]["key"], nullptr);

	const std::string Clean = Write("clean.lua", "assert(editor.create_library('/Game/DMX/Clean'))\nassert(dmx_library('/Game/DMX/Clean'):add('fixture_type', {name = 'A'}))\n");
	const FCommandResult CleanStrict = RunCommandLine({"check", "--strict", "--json", Clean});
	EXPECT_EQ(CleanStrict.ExitCode, 0) << CleanStrict.Out;
	EXPECT_EQ(CleanStrict.Out, "[]\n");
}

// A Lua error stops the run with exit 1; what was found until then is still reported.
TEST_F(FCheckCommandTest, LuaErrorsExitOneWithTheFindingsSoFar)
{
	const std::string First = Write("first.lua", MistakenScript);
	const std::string Second = Write("second.lua", "error('stop here')\n");
	const std::string Third = Write("third.lua", "dmx_library('/Game/DMX/Nope')\n");
	const FCommandResult Result = RunCommandLine({"check", First, Second, Third});
	EXPECT_EQ(Result.ExitCode, 1);
	EXPECT_NE(Result.Err.find("second.lua:1: stop here"), std::string::npos) << Result.Err;
	EXPECT_NE(Result.Out.find("first.lua:5: warning[wrong-type]"), std::string::npos) << Result.Out;
	EXPECT_EQ(Result.Out.find("third.lua"), std::string::npos) << "the third script never ran";
	EXPECT_NE(Result.Err.find("stopped by a Lua error"), std::string::npos) << Result.Err;
}

// check reads a project but saves nothing, and needs an existing folder (it makes none).
TEST_F(FCheckCommandTest, ProjectsAreReadAndNeverSaved)
{
	const std::string Make = Write("make.lua", "assert(editor.create_library('/Game/DMX/Stage'))\n"
		"local L = dmx_library('/Game/DMX/Stage')\nassert(L:add('fixture_type', {name = 'Spot', modes = {{functions = {{attribute = 'Dimmer', data_type = '16bit'}}}}}))\n"
		"assert(L:add('fixture_patch', {name = 'Spot1', fixture_type = 'Spot', starting_channel = 512}))\n");
	const std::filesystem::path Project = WorkDir / "project";
	ASSERT_EQ(RunCommandLine({"run", "--project", Project.string(), Make}).ExitCode, 0);
	const std::filesystem::path LibraryFile = Project / "Content" / "DMX" / "Stage.dmxlib.json";
	const std::string Saved = ReadFile(LibraryFile);
	ASSERT_FALSE(Saved.empty());

	const std::string Change = Write("change.lua", "assert(dmx_library('/Game/DMX/Stage'):add('fixture_patch', {name = 'Spot2', fixture_type = 'Spot'}))\n");
	const FCommandResult Checked = RunCommandLine({"check", "--project", Project.string(), Change});
	EXPECT_EQ(Checked.ExitCode, 0) << Checked.Err;
	EXPECT_EQ(ReadFile(LibraryFile), Saved);
	// Spot1 came from the project, untouched by the script: its finding points at the library's file.
	EXPECT_NE(Checked.Out.find(LibraryFile.string() + ":1: warning[invalid-patch]: fixture patch \"Spot1\""), std::string::npos) << Checked.Out;

	const FCommandResult Missing = RunCommandLine({"check", "--project", (WorkDir / "nowhere").string(), Change});
	EXPECT_EQ(Missing.ExitCode, 1);
	EXPECT_NE(Missing.Err.find("no such project folder"), std::string::npos) << Missing.Err;
	EXPECT_FALSE(std::filesystem::exists(WorkDir / "nowhere"));

	const FCommandResult Usage = RunCommandLine({"check"});
	EXPECT_EQ(Usage.ExitCode, 2);
}

TEST_F(FCheckCommandTest, StubsGoToStdoutOrReplaceOnlyTheirOwnFile)
{
	const FCommandResult Printed = RunCommandLine({"stubs"});
	EXPECT_EQ(Printed.ExitCode, 0);
	EXPECT_EQ(Printed.Out.rfind("---@meta kestdmx\n", 0), 0u);

	const std::filesystem::path Config = WorkDir / "luacheckrc";
	ASSERT_EQ(RunCommandLine({"stubs", "--luacheck", "-o", Config.string()}).ExitCode, 0);
	const std::string Written = ReadFile(Config);
	EXPECT_NE(Written.find("read_globals"), std::string::npos);
	EXPECT_EQ(RunCommandLine({"stubs", "--luacheck", "-o", Config.string()}).ExitCode, 0) << "its own file is replaced";
	EXPECT_EQ(ReadFile(Config), Written);
	EXPECT_EQ(RunCommandLine({"stubs", "-o", Config.string()}).ExitCode, 0) << "a stubs file of the other kind is replaced";
	EXPECT_EQ(ReadFile(Config).rfind("---@meta kestdmx", 0), 0u);
	EXPECT_FALSE(std::filesystem::exists(Config.string() + ".kestdmx-tmp"));

	const std::string Script = Write("script.lua", "print('mine')\n");
	const FCommandResult OverScript = RunCommandLine({"stubs", "-o", Script});
	EXPECT_EQ(OverScript.ExitCode, 1);
	EXPECT_NE(OverScript.Err.find("was not written by kestdmx stubs"), std::string::npos) << OverScript.Err;
	EXPECT_EQ(ReadFile(Script), "print('mine')\n");

	const std::filesystem::path Link = WorkDir / "link.lua";
	std::filesystem::create_symlink(Config, Link);
	const FCommandResult OverLink = RunCommandLine({"stubs", "-o", Link.string()});
	EXPECT_EQ(OverLink.ExitCode, 1);
	EXPECT_NE(OverLink.Err.find("symbolic link"), std::string::npos) << OverLink.Err;

	const FCommandResult NoFolder = RunCommandLine({"stubs", "-o", (WorkDir / "none" / "kestdmx.lua").string()});
	EXPECT_EQ(NoFolder.ExitCode, 1);
	EXPECT_NE(NoFolder.Err.find("cannot create"), std::string::npos) << NoFolder.Err;
}
