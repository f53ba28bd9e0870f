// Finding a project's files: whatever under Content/ cannot be read stops the load with its name (so a
// library is never hidden, and then saved over), links are read through but never in circles, and
// the files an interrupted save left are cleared away by the next load for editing.
#include "ProjectTestFolder.h"

#include <sys/stat.h>
#include "KestDMXProject.h"
#include "KestDMXText.h"
#include "ProjectFileFaults.h"

namespace
{
	using namespace ProjectTestFolder;

	class FProjectDiscoveryTest : public FProjectFolderTest
	{
	protected:
		void SetUp() override
		{
			FProjectFolderTest::SetUp();
			ASSERT_EQ(RunOnProject(R"(assert(editor.create_library("/Game/DMX/Stage") and editor.create_library("/Game/Tour/Rig"))
				assert(dmx_library("/Game/Tour/Rig"):add("fixture_type", {name = "Par"})))"), 0);
		}
		void TearDown() override
		{
			SetProjectFileHook(nullptr);
			FProjectFolderTest::TearDown();
		}

		std::string Load(EKestDMXProjectAccess Access = EKestDMXProjectAccess::Read, std::vector<std::string>* OutWarnings = nullptr)
		{
			FKestDMXSession Session;
			FKestDMXProject Project;
			std::string Error;
			LoadKestDMXProject(ProjectDir.string(), Session.GetEditor(), Project, Error, Access);
			if (OutWarnings != nullptr)
			{
				*OutWarnings = Project.Warnings;
			}
			return Error;
		}
	};
}

// The review's case: inspect listed 0 of 2 libraries, and a script that created one at the same path
// saved over the real one. Here the folder fails to open as an unreadable one does for a user
// without the right; tests/project/RunUnreadableFolder.cmake has the real thing.
TEST_F(FProjectDiscoveryTest, AFolderThatCannotBeReadStopsTheLoadAndTheSave)
{
	const std::string Folder = (ProjectDir / "Content/Tour").string();
	SetProjectFileHook([&Folder](const char* Operation, const std::string& Path) { return !(std::string(Operation) == "open-folder" && Path == Folder); });
	const std::map<std::string, std::string> Files = ReadAllFiles(ProjectDir);
	std::string Stderr;
	EXPECT_EQ(RunKestDMX({"inspect", "--project", ProjectDir.string()}, &Stderr), 1);
	EXPECT_NE(Stderr.find(Folder + ": cannot be read: Input/output error"), std::string::npos) << Stderr;
	EXPECT_EQ(RunOnProject(R"(assert(editor.create_library("/Game/Tour/Rig")))", &Stderr), 1);
	EXPECT_NE(Stderr.find(Folder + ": cannot be read"), std::string::npos) << Stderr;
	EXPECT_EQ(ReadAllFiles(ProjectDir), Files);

	// A library file that cannot be read is named the same way.
	const std::string File = (ProjectDir / "Content/DMX/Stage.dmxlib.json").string();
	SetProjectFileHook([&File](const char* Operation, const std::string& Path) { return !(std::string(Operation) == "read" && Path == File); });
	EXPECT_EQ(Load(), File + ": cannot be read: Input/output error");
}

TEST_F(FProjectDiscoveryTest, UnreadablePermissionsStopTheLoad)
{
	if (geteuid() == 0)
	{
		GTEST_SKIP() << "root reads every folder; tests/project/RunUnreadableFolder.cmake runs this as nobody";
	}
	std::filesystem::permissions(ProjectDir / "Content/Tour", std::filesystem::perms::none);
	EXPECT_EQ(Load(), (ProjectDir / "Content/Tour").string() + ": cannot be read: Permission denied");
	std::filesystem::permissions(ProjectDir / "Content/Tour", std::filesystem::perms::owner_all);
}

// A link loop used to end in std::terminate; each folder is now read once, through links or not.
TEST_F(FProjectDiscoveryTest, LinkLoopsAndSecondLinksToAFolderAreNamed)
{
	std::filesystem::create_directory_symlink("..", ProjectDir / "Content/DMX/Up");
	EXPECT_NE(Load().find((ProjectDir / "Content/DMX/Up").string() + ": leads to " + (ProjectDir / "Content").string()
		+ " again (a symbolic link loop"), std::string::npos);
	std::filesystem::remove(ProjectDir / "Content/DMX/Up");

	std::filesystem::create_directory_symlink("DMX", ProjectDir / "Content/Alias");
	EXPECT_NE(Load().find(" again (a symbolic link loop, or a second link to one folder)"), std::string::npos);
	std::filesystem::remove(ProjectDir / "Content/Alias");

	std::filesystem::create_symlink("Self", ProjectDir / "Content/Self");
	EXPECT_EQ(Load(), (ProjectDir / "Content/Self").string() + ": cannot be read: Too many levels of symbolic links");
}

// A folder linked in from elsewhere loads; a link to nothing may be such a folder, not there now.
TEST_F(FProjectDiscoveryTest, LinksAreReadThroughAndLinksToNothingAreNamed)
{
	const std::filesystem::path Shared = ProjectDir.string() + "-shared";
	std::filesystem::create_directories(Shared);
	std::filesystem::copy_file(ProjectDir / "Content/Tour/Rig.dmxlib.json", Shared / "Bar.dmxlib.json");
	std::filesystem::create_directory_symlink(Shared, ProjectDir / "Content/Shared");
	{
		FKestDMXSession Session;
		FKestDMXProject Project;
		std::string Error;
		ASSERT_TRUE(LoadKestDMXProject(ProjectDir.string(), Session.GetEditor(), Project, Error, EKestDMXProjectAccess::Read)) << Error;
		ASSERT_EQ(Project.LibraryPackages.size(), 3u);
		EXPECT_EQ(ToUTF8(Project.LibraryPackages[1]), "/Game/Shared/Bar");
	}
	std::filesystem::remove_all(Shared);
	EXPECT_EQ(Load(), (ProjectDir / "Content/Shared").string() + ": is a symbolic link to nothing");
}

TEST_F(FProjectDiscoveryTest, NamesThatAreNoPackageOrNoFileAreNamed)
{
	WriteFile(ProjectDir / "Content/DMX/\xff.dmxlib.json", "{}");
	EXPECT_EQ(Load(), (ProjectDir / "Content/DMX/\xff.dmxlib.json").string() + ": the file's name is not UTF-8 text");
	std::filesystem::remove(ProjectDir / "Content/DMX/\xff.dmxlib.json");

	ASSERT_EQ(mkfifo((ProjectDir / "Content/Pipe.dmxlib.json").c_str(), 0600), 0);
	EXPECT_EQ(Load(), (ProjectDir / "Content/Pipe.dmxlib.json").string() + ": is not a regular file");
	std::filesystem::remove(ProjectDir / "Content/Pipe.dmxlib.json");

	// Other files are none of the project's business.
	WriteFile(ProjectDir / "Content/readme.txt", "notes");
	WriteFile(ProjectDir / "Content/DMX/Stage.dmxlib.json.tmp", "half a file");
	EXPECT_EQ(Load(), "");
}

TEST_F(FProjectDiscoveryTest, ALoadForEditingRemovesWhatAnInterruptedSaveLeft)
{
	WriteFile(ProjectDir / "Content/DMX/.kestdmx-save-0123456789abcdef.new", "new, never renamed");
	WriteFile(ProjectDir / "Content/Tour/.kestdmx-save-fedcba9876543210.old", "old, kept");
	std::vector<std::string> Warnings;
	EXPECT_EQ(Load(EKestDMXProjectAccess::Read, &Warnings), "");
	EXPECT_TRUE(Warnings.empty());
	EXPECT_EQ(ReadAllFiles(ProjectDir).size(), 4u);

	EXPECT_EQ(Load(EKestDMXProjectAccess::Edit, &Warnings), "");
	ASSERT_EQ(Warnings.size(), 2u);
	EXPECT_EQ(Warnings[0], (ProjectDir / "Content/DMX/.kestdmx-save-0123456789abcdef.new").string() + ": removed, left by a save that was interrupted");
	EXPECT_EQ(ReadAllFiles(ProjectDir).size(), 2u);
}
