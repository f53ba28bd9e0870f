// A scratch project folder for the project store's tests, removed before and after each test, and
// the helpers they share: the files of a folder as a map, writing a file, running kestdmx on it.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <unistd.h>
#include "KestDMXRunner.h"

namespace ProjectTestFolder
{
	// Every regular file below Folder (links not followed) but the project's lock file, which names
	// the process holding it, by its relative path.
	inline std::map<std::string, std::string> ReadAllFiles(const std::filesystem::path& Folder)
	{
		std::map<std::string, std::string> Files;
		for (const auto& Entry : std::filesystem::recursive_directory_iterator(Folder))
		{
			if (Entry.is_regular_file() && !Entry.is_symlink() && Entry.path() != Folder / ".kestdmx.lock")
			{
				std::ifstream Stream(Entry.path(), std::ios::binary);
				Files[Entry.path().lexically_relative(Folder).generic_string()].assign(std::istreambuf_iterator<char>(Stream), std::istreambuf_iterator<char>());
			}
		}
		return Files;
	}

	inline void WriteFile(const std::filesystem::path& Path, const std::string& Text)
	{
		std::filesystem::create_directories(Path.parent_path());
		std::ofstream(Path, std::ios::binary | std::ios::trunc) << Text;
	}

	inline std::string ReadFile(const std::filesystem::path& Path)
	{
		std::ifstream Stream(Path, std::ios::binary);
		return std::string(std::istreambuf_iterator<char>(Stream), std::istreambuf_iterator<char>());
	}

	// The exit code of a kestdmx command line, with what it printed to stderr.
	inline int RunKestDMX(const std::vector<std::string>& Args, std::string* OutStderr = nullptr)
	{
		testing::internal::CaptureStderr();
		const int ExitCode = RunKestDMXCommandLine(Args);
		const std::string Stderr = testing::internal::GetCapturedStderr();
		if (OutStderr != nullptr)
		{
			*OutStderr = Stderr;
		}
		return ExitCode;
	}
}

class FProjectFolderTest : public ::testing::Test
{
protected:
	void SetUp() override { std::filesystem::remove_all(ProjectDir); }
	void TearDown() override
	{
		std::error_code Ignored;
		std::filesystem::permissions(ProjectDir, std::filesystem::perms::owner_all, std::filesystem::perm_options::add, Ignored);
		std::filesystem::remove_all(ProjectDir, Ignored);
	}

	// Runs Lua code as a script of `kestdmx run --project` on the folder; answers the exit code.
	int RunOnProject(const std::string& Code, std::string* OutStderr = nullptr)
	{
		std::filesystem::create_directories(ProjectDir);
		const std::filesystem::path Script = ProjectDir.parent_path() / (ProjectDir.filename().string() + ".lua");
		ProjectTestFolder::WriteFile(Script, Code);
		const int ExitCode = ProjectTestFolder::RunKestDMX({"run", "--project", ProjectDir.string(), Script.string()}, OutStderr);
		std::filesystem::remove(Script);
		return ExitCode;
	}

	const std::filesystem::path ProjectDir = std::filesystem::temp_directory_path()
		/ ("kest_project_" + std::to_string(getpid()) + "_" + ::testing::UnitTest::GetInstance()->current_test_info()->name());
};
