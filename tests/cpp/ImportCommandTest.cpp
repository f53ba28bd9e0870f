// kestdmx import as users meet it: bad files named while the others import, the script on stdout
// or written whole to a file (never through a link), and a project imported into and saved.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include "KestDMXProject.h"
#include "KestDMXRunner.h"
#include "LibraryReport.h"
#include "Library/DMXLibrary.h"

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
		std::ifstream Stream(File, std::ios::binary);
		std::ostringstream Text;
		Text << Stream.rdbuf();
		return Text.str();
	}

	const char* const SpotDefinition = R"(<?xml version="1.0" encoding="UTF-8"?>
<FixtureDefinition>
 <Manufacturer>Acme</Manufacturer>
 <Model>Spot 1</Model>
 <Type>Moving Head</Type>
 <Channel Name="Dimmer" Preset="IntensityDimmer"/>
 <Mode Name="Basic"><Channel Number="0">Dimmer</Channel></Mode>
</FixtureDefinition>
)";
}

class FImportCommandTest : public ::testing::Test
{
protected:
	void SetUp() override
	{
		std::filesystem::remove_all(WorkDir);
		std::filesystem::create_directories(WorkDir);
		std::ofstream(Spot) << SpotDefinition;
	}
	void TearDown() override { std::filesystem::remove_all(WorkDir); }

	const std::filesystem::path WorkDir = std::filesystem::temp_directory_path() / "kestdmx-import-command-test";
	const std::string Spot = (WorkDir / "spot.qxf").string();
};

TEST_F(FImportCommandTest, BadFilesAreNamedAndTheOthersStillImport)
{
	const std::string NotXML = (WorkDir / "notes.qxf").string();
	const std::string NotDefinition = (WorkDir / "map.xml").string();
	const std::string Missing = (WorkDir / "missing.qxf").string();
	std::ofstream(NotXML) << "pan and tilt";
	std::ofstream(NotDefinition) << "<FixturesMap/>";

	const FCommandResult Result = RunCommandLine({"import", NotXML, Spot, NotDefinition, Missing});
	EXPECT_EQ(Result.ExitCode, 1);
	EXPECT_NE(Result.Err.find(NotXML + ": not XML"), std::string::npos) << Result.Err;
	EXPECT_NE(Result.Err.find(NotDefinition + ": not a fixture definition"), std::string::npos) << Result.Err;
	EXPECT_NE(Result.Err.find(Missing + ": no such file"), std::string::npos) << Result.Err;
	EXPECT_NE(Result.Err.find("1 fixture type in 1 DMX Library: 1 mode, 1 function"), std::string::npos) << Result.Err;
	EXPECT_NE(Result.Err.find("3 files not imported"), std::string::npos) << Result.Err;
	EXPECT_NE(Result.Out.find("add_fixture_type(\"/Game/DMX/Acme\", {\n\tname = \"Acme Spot 1\""), std::string::npos) << Result.Out;

	const FCommandResult Nothing = RunCommandLine({"import", NotXML});
	EXPECT_EQ(Nothing.ExitCode, 1);
	EXPECT_TRUE(Nothing.Out.empty());
}

TEST_F(FImportCommandTest, WrongCommandLinesExitTwo)
{
	for (const std::vector<std::string>& Args : std::vector<std::vector<std::string>>{
		{"import"},
		{"import", "--library", "/Game/My Rig", Spot},
		{"import", "--library", "/Engine/Rig", Spot},
		{"import", "--out", "x.lua", "--project", WorkDir.string(), Spot}})
	{
		const FCommandResult Result = RunCommandLine(Args);
		EXPECT_EQ(Result.ExitCode, 2) << Args.back() << Result.Err;
		EXPECT_TRUE(Result.Out.empty());
	}
}

TEST_F(FImportCommandTest, TheScriptFileIsWrittenWholeAndNeverThroughALink)
{
	const std::filesystem::path Script = WorkDir / "spot.lua";
	std::ofstream(Script) << "-- an older import";
	EXPECT_EQ(RunCommandLine({"import", "--library", "/Game/Rigs/Main", "--out", Script.string(), Spot}).ExitCode, 0);
	const std::string Written = ReadFile(Script);
	EXPECT_EQ(Written.rfind("-- Fixture types from fixture definitions (.qxf)", 0), 0u);
	EXPECT_NE(Written.find("open_library(\"/Game/Rigs/Main\""), std::string::npos);
	EXPECT_EQ(std::distance(std::filesystem::directory_iterator(WorkDir), std::filesystem::directory_iterator()), 2) << "a temporary file was left";

	const std::filesystem::path Kept = WorkDir / "kept.lua";
	const std::filesystem::path Link = WorkDir / "link.lua";
	std::ofstream(Kept) << "keep me";
	std::filesystem::create_symlink(Kept, Link);
	const FCommandResult ThroughLink = RunCommandLine({"import", "--out", Link.string(), Spot});
	EXPECT_EQ(ThroughLink.ExitCode, 1);
	EXPECT_NE(ThroughLink.Err.find("is a link; the script is not written through it"), std::string::npos) << ThroughLink.Err;
	EXPECT_EQ(ReadFile(Kept), "keep me");
	EXPECT_TRUE(std::filesystem::is_symlink(Link));

	const FCommandResult OnFolder = RunCommandLine({"import", "--out", WorkDir.string(), Spot});
	EXPECT_EQ(OnFolder.ExitCode, 1);
	EXPECT_NE(OnFolder.Err.find("is not a plain file"), std::string::npos) << OnFolder.Err;
}

TEST_F(FImportCommandTest, AProjectGetsItsLibrariesAndASecondImportIsRenamed)
{
	const std::string Project = (WorkDir / "project").string();
	const FCommandResult First = RunCommandLine({"import", "--project", Project, Spot});
	EXPECT_EQ(First.ExitCode, 0) << First.Err;
	EXPECT_TRUE(std::filesystem::is_regular_file(WorkDir / "project" / "Content" / "DMX" / "Acme.dmxlib.json"));

	const FCommandResult Second = RunCommandLine({"import", "--project", Project, WorkDir.string()});
	EXPECT_EQ(Second.ExitCode, 0) << Second.Err;
	EXPECT_NE(Second.Err.find("spot.qxf: named 'Acme Spot 1 2': /Game/DMX/Acme already has a fixture type 'Acme Spot 1'"), std::string::npos) << Second.Err;

	FKestDMXSession Session;
	FKestDMXProject Loaded;
	std::string Error;
	ASSERT_TRUE(LoadKestDMXProject(Project, Session.GetEditor(), Loaded, Error, EKestDMXProjectAccess::Read)) << Error;
	UDMXLibrary* Library = LoadLibraryForReport("/Game/DMX/Acme");
	ASSERT_NE(Library, nullptr);
	EXPECT_EQ(Library->GetEntities().Num(), 2);
}

// What the import writes uses only keys the module reads, with values it takes as they are: kestdmx
// check --strict finds nothing in it.
TEST_F(FImportCommandTest, TheScriptPassesTheStrictCheck)
{
	std::vector<std::string> Definitions = {Spot};
	const std::filesystem::path Corpus = "/usr/share/qlcplus/fixtures";
	for (const char* Manufacturer : {"Robe", "American_DJ", "Chauvet"})
	{
		if (std::filesystem::is_directory(Corpus / Manufacturer))
		{
			Definitions.push_back((Corpus / Manufacturer).string());
		}
	}
	const std::filesystem::path Script = WorkDir / "imported.lua";
	std::vector<std::string> Args = {"import", "--library", "/Game/DMX/Imported", "--out", Script.string()};
	Args.insert(Args.end(), Definitions.begin(), Definitions.end());
	ASSERT_EQ(RunCommandLine(Args).ExitCode, 0);

	const std::filesystem::path Setup = WorkDir / "setup.lua";
	std::ofstream(Setup) << "assert(editor.create_library('/Game/DMX/Imported'))\n";
	const FCommandResult Check = RunCommandLine({"check", "--strict", Setup.string(), Script.string()});
	EXPECT_EQ(Check.ExitCode, 0) << Check.Out << Check.Err;
	EXPECT_EQ(Check.Out, "");
}
