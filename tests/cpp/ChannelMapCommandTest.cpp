// kestdmx run --html and inspect --html: the page is written when the work succeeded, whole, and never
// through a link, into a folder, or over a file that cannot be read; a bad page path is refused
// before any script runs.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>
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

	std::string ReadFile(const std::filesystem::path& Path)
	{
		std::ifstream In(Path, std::ios::binary);
		std::stringstream Text;
		Text << In.rdbuf();
		return Text.str();
	}

	class FChannelMapCommandTest : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			std::filesystem::remove_all(WorkDir);
			std::filesystem::create_directories(WorkDir);
			std::ofstream(Script) << "assert(editor.create_library('/Game/DMX/Stage'))\n"
				"local lib = dmx_library('/Game/DMX/Stage')\n"
				"assert(lib:add('fixture_type', { name = 'Par', modes = { { name = '1ch', functions = { { attribute = 'Dimmer' } } } } }))\n"
				"assert(lib:add('fixture_patch', { name = 'Par 1', fixture_type = 'Par', universe = 3, starting_channel = 9 }))\n"
				"assert(editor.create_library('/Game/DMX/Floor'))\n";
			std::ofstream(Failing) << "error('stop here')\n";
		}
		void TearDown() override { std::filesystem::remove_all(WorkDir); }

		// Files of the folder other than the ones the test made.
		std::vector<std::string> ListFolder(const std::filesystem::path& Folder) const
		{
			std::vector<std::string> Names;
			for (const auto& Entry : std::filesystem::directory_iterator(Folder))
			{
				Names.push_back(Entry.path().filename().string());
			}
			std::sort(Names.begin(), Names.end());
			return Names;
		}

		const std::filesystem::path WorkDir = std::filesystem::temp_directory_path() / ("kestdmx-channel-map-" + std::to_string(::getpid()));
		const std::filesystem::path Script = WorkDir / "rig.lua";
		const std::filesystem::path Failing = WorkDir / "failing.lua";
	};
}

TEST_F(FChannelMapCommandTest, RunAndInspectWriteThePageOfEveryLibrary)
{
	const std::filesystem::path Project = WorkDir / "project";
	const std::filesystem::path Page = WorkDir / "run.html";
	const FCommandResult Run = RunCommandLine({"run", "--project", Project.string(), "--html", Page.string(), Script.string()});
	ASSERT_EQ(Run.ExitCode, 0) << Run.Err;
	const std::string RunPage = ReadFile(Page);
	EXPECT_EQ(RunPage.rfind("<!DOCTYPE html>", 0), 0u);
	const size_t Floor = RunPage.find("DMX Library /Game/DMX/Floor.Floor");
	const size_t Stage = RunPage.find("DMX Library /Game/DMX/Stage.Stage");
	EXPECT_TRUE(Floor != std::string::npos && Stage != std::string::npos && Floor < Stage) << "every library, by path";
	EXPECT_NE(RunPage.find("aria-label=\"Universe 3\""), std::string::npos);

	// Inspect writes the same libraries' page instead of printing the report, replacing the file
	// in place with its permissions kept and nothing left beside it.
	ASSERT_EQ(::chmod(Page.c_str(), 0640), 0);
	const FCommandResult Inspect = RunCommandLine({"inspect", "--project", Project.string(), "--html", Page.string()});
	ASSERT_EQ(Inspect.ExitCode, 0) << Inspect.Err;
	EXPECT_TRUE(Inspect.Out.empty()) << Inspect.Out;
	EXPECT_EQ(ReadFile(Page), RunPage);
	struct stat Status;
	ASSERT_EQ(::stat(Page.c_str(), &Status), 0);
	EXPECT_EQ(Status.st_mode & 0777, 0640u);
	EXPECT_EQ(ListFolder(WorkDir), (std::vector<std::string>{"failing.lua", "project", "rig.lua", "run.html"}));

	const FCommandResult One = RunCommandLine({"inspect", "--project", Project.string(), "/Game/DMX/Floor", "--html", Page.string()});
	ASSERT_EQ(One.ExitCode, 0) << One.Err;
	EXPECT_EQ(ReadFile(Page).find("/Game/DMX/Stage"), std::string::npos);

	// A failed script writes no page.
	std::filesystem::remove(Page);
	EXPECT_EQ(RunCommandLine({"run", "--html", Page.string(), Script.string(), Failing.string()}).ExitCode, 1);
	EXPECT_FALSE(std::filesystem::exists(Page));
}

TEST_F(FChannelMapCommandTest, BadPagePathsFailBeforeAnythingRuns)
{
	const std::filesystem::path Target = WorkDir / "target.html";
	std::ofstream(Target) << "someone's page";
	const std::filesystem::path Link = WorkDir / "link.html";
	std::filesystem::create_symlink(Target, Link);
	std::filesystem::create_directories(WorkDir / "folder.html");

	const std::vector<std::pair<std::filesystem::path, std::string>> Cases = {
		{Link, "is a link"},
		{WorkDir / "folder.html", "is a folder"},
		{WorkDir / "missing" / "page.html", "there is no folder"},
	};
	for (const auto& [Page, Problem] : Cases)
	{
		const std::filesystem::path Project = WorkDir / "project";
		const FCommandResult Run = RunCommandLine({"run", "--project", Project.string(), "--html", Page.string(), Script.string()});
		EXPECT_EQ(Run.ExitCode, 1) << Page;
		EXPECT_NE(Run.Err.find("cannot write " + Page.string() + ": "), std::string::npos) << Run.Err;
		EXPECT_NE(Run.Err.find(Problem), std::string::npos) << Run.Err;
		EXPECT_FALSE(std::filesystem::exists(Project)) << "nothing ran, nothing was saved";

		std::filesystem::create_directories(Project);
		const FCommandResult Inspect = RunCommandLine({"inspect", "--project", Project.string(), "--html", Page.string()});
		EXPECT_EQ(Inspect.ExitCode, 1) << Page;
		EXPECT_NE(Inspect.Err.find(Problem), std::string::npos) << Inspect.Err;
		std::filesystem::remove_all(Project);
	}
	EXPECT_EQ(ReadFile(Target), "someone's page");
	EXPECT_TRUE(std::filesystem::is_symlink(Link));

	// A file that cannot be read is somebody's work we cannot even look at (root reads everything).
	if (::geteuid() != 0)
	{
		ASSERT_EQ(::chmod(Target.c_str(), 0200), 0);
		const FCommandResult Unreadable = RunCommandLine({"run", "--html", Target.string(), Script.string()});
		EXPECT_EQ(Unreadable.ExitCode, 1);
		EXPECT_NE(Unreadable.Err.find("cannot be read"), std::string::npos) << Unreadable.Err;
		ASSERT_EQ(::chmod(Target.c_str(), 0600), 0);
		EXPECT_EQ(ReadFile(Target), "someone's page");
	}
	EXPECT_EQ(RunCommandLine({"run", "--html"}).ExitCode, 2);
}
