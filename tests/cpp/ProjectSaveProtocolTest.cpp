// Saving a project: never through a link, never over a file the load did not read, one run at a time,
// and all or nothing: a failure at any step leaves the project as it was, and a process killed at any
// step leaves each file whole, old or new, in a project that loads.
#include "ProjectTestFolder.h"

#include <csignal>
#include <sys/wait.h>
#include "KestDMXProject.h"
#include "ProjectFileFaults.h"

namespace
{
	using namespace ProjectTestFolder;
	using FFiles = std::map<std::string, std::string>;

	// Changes two libraries and the level and makes a library in a new folder: two files replaced,
	// one made, the level replaced last.
	const char* const ChangeScript = R"(
		assert(dmx_library("/Game/DMX/Stage"):add("fixture_patch", {name = "Spot 2", fixture_type = "Spot", starting_channel = 20}))
		assert(dmx_library("/Game/Tour/Rig"):configure("fixture_type", "Par", {category = "Strobe"}))
		assert(editor.create_library("/Game/Fresh/New"))
		assert(editor.spawn_actor("Pole") and dmx_component("Pole"):add({library = "/Game/DMX/Stage", fixture_patch = "Spot 2"})))";

	class FProjectSaveProtocolTest : public FProjectFolderTest
	{
	protected:
		void SetUp() override
		{
			FProjectFolderTest::SetUp();
			ASSERT_EQ(RunOnProject(R"(assert(editor.create_library("/Game/DMX/Stage") and editor.create_library("/Game/Tour/Rig"))
				local Stage = dmx_library("/Game/DMX/Stage")
				assert(Stage:add("fixture_type", {name = "Spot", modes = {{name = "Basic", functions = {{attribute = "Dimmer"}}}}}))
				assert(Stage:add("fixture_patch", {name = "Spot 1", fixture_type = "Spot"}))
				assert(dmx_library("/Game/Tour/Rig"):add("fixture_type", {name = "Par"}))
				assert(editor.spawn_actor("Truss") and dmx_component("Truss"):add({library = "/Game/DMX/Stage", fixture_patch = "Spot 1"})))"), 0);
			OldFiles = ReadAllFiles(ProjectDir);
			ASSERT_EQ(OldFiles.size(), 3u);
		}
		void TearDown() override
		{
			SetProjectFileHook(nullptr);
			FProjectFolderTest::TearDown();
		}

		// Puts the project back to what SetUp saved, and nothing else.
		void RestoreOldFiles()
		{
			std::filesystem::remove_all(ProjectDir / "Content");
			for (const auto& [Path, Text] : OldFiles)
			{
				WriteFile(ProjectDir / Path, Text);
			}
		}

		// Loads for editing, runs ChangeScript and saves with Hook in place; answers whether it saved.
		bool ChangeAndSave(const FProjectFileHook& Hook, std::string& OutError, bool* OutStillDirty = nullptr)
		{
			FKestDMXSession Session;
			FKestDMXProject Project;
			EXPECT_TRUE(LoadKestDMXProject(ProjectDir.string(), Session.GetEditor(), Project, OutError)) << OutError;
			EXPECT_TRUE(Session.RunScript(ChangeScript, "change", OutError)) << OutError;
			SetProjectFileHook(Hook);
			const bool bSaved = SaveKestDMXProject(Project, Session.GetEditor(), OutError);
			SetProjectFileHook(nullptr);
			if (OutStillDirty != nullptr)
			{
				*OutStillDirty = Session.GetEditor().GetDirtyPackageNames().Num() == 4;
			}
			return bSaved;
		}

		FFiles OldFiles;
	};
}

// The review's case: the temporary file had a fixed name and was opened with truncation, so a link
// planted there had its target overwritten and the library replaced by a link.
TEST_F(FProjectSaveProtocolTest, APlantedLinkIsNeverWrittenThrough)
{
	const std::filesystem::path Victim = ProjectDir.string() + "-victim.txt";
	WriteFile(Victim, "precious");
	std::filesystem::create_symlink(Victim, ProjectDir / "Content/DMX/Stage.dmxlib.json.tmp");
	ASSERT_EQ(RunOnProject(ChangeScript), 0);
	EXPECT_EQ(ReadFile(Victim), "precious");
	EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(ProjectDir / "Content/DMX/Stage.dmxlib.json")));
	EXPECT_NE(ReadFile(ProjectDir / "Content/DMX/Stage.dmxlib.json"), OldFiles["Content/DMX/Stage.dmxlib.json"]);
	EXPECT_TRUE(std::filesystem::is_symlink(ProjectDir / "Content/DMX/Stage.dmxlib.json.tmp"));

	// A link planted at the very name a new file is about to get is not opened: another name is taken.
	RestoreOldFiles();
	int Planted = 0;
	std::string Error;
	EXPECT_TRUE(ChangeAndSave([&](const char* Operation, const std::string& Path)
	{
		if (std::string(Operation) == "create" && Planted++ < 3)
		{
			std::filesystem::create_symlink(Victim, Path);
		}
		return true;
	}, Error)) << Error;
	EXPECT_EQ(Planted, 7);
	EXPECT_EQ(ReadFile(Victim), "precious");
	std::filesystem::remove(Victim);
}

TEST_F(FProjectSaveProtocolTest, ALinkInTheWayOfASaveFailsIt)
{
	const std::filesystem::path Elsewhere = ProjectDir.string() + "-elsewhere";
	std::filesystem::create_directories(Elsewhere);
	std::filesystem::rename(ProjectDir / "Content/DMX/Stage.dmxlib.json", Elsewhere / "Stage.dmxlib.json");
	std::filesystem::create_symlink(Elsewhere / "Stage.dmxlib.json", ProjectDir / "Content/DMX/Stage.dmxlib.json");
	std::string Stderr;
	EXPECT_EQ(RunOnProject(ChangeScript, &Stderr), 1);
	EXPECT_NE(Stderr.find((ProjectDir / "Content/DMX/Stage.dmxlib.json").string() + ": is a symbolic link, and project files are never written "
		"through links; nothing was saved, the project is as it was"), std::string::npos) << Stderr;
	EXPECT_EQ(ReadFile(Elsewhere / "Stage.dmxlib.json"), OldFiles["Content/DMX/Stage.dmxlib.json"]);

	// A linked folder the same.
	std::filesystem::remove(ProjectDir / "Content/DMX/Stage.dmxlib.json");
	std::filesystem::remove(ProjectDir / "Content/DMX");
	std::filesystem::create_directory_symlink(Elsewhere, ProjectDir / "Content/DMX");
	EXPECT_EQ(RunOnProject(ChangeScript, &Stderr), 1);
	EXPECT_NE(Stderr.find((ProjectDir / "Content/DMX").string() + ": is a symbolic link"), std::string::npos) << Stderr;
	EXPECT_EQ(ReadFile(Elsewhere / "Stage.dmxlib.json"), OldFiles["Content/DMX/Stage.dmxlib.json"]);
	std::filesystem::remove_all(Elsewhere);
}

// A file changed, made or removed on disk behind the run's back is never overwritten with what the
// run loaded before.
TEST_F(FProjectSaveProtocolTest, AFileChangedOnDiskSinceTheLoadIsNotReplaced)
{
	const std::filesystem::path Rig = ProjectDir / "Content/Tour/Rig.dmxlib.json";
	const std::filesystem::path New = ProjectDir / "Content/Fresh/New.dmxlib.json";
	const std::pair<std::function<void()>, std::string> Cases[] = {
		{[&] { WriteFile(Rig, OldFiles["Content/Tour/Rig.dmxlib.json"] + " "); }, Rig.string() + ": changed on disk after the project was loaded"},
		{[&] { WriteFile(New, "{}"); }, New.string() + ": appeared on disk after the project was loaded"},
		{[&] { std::filesystem::remove(Rig); }, Rig.string() + ": was removed from disk after the project was loaded"},
	};
	for (const auto& Case : Cases)
	{
		const std::function<void()>& Change = Case.first;
		RestoreOldFiles();
		bool bChanged = false;
		std::string Error;
		EXPECT_FALSE(ChangeAndSave([&](const char*, const std::string&)
		{
			if (!bChanged)
			{
				bChanged = true;
				Change();
			}
			return true;
		}, Error));
		EXPECT_EQ(Error.rfind(Case.second, 0), 0u) << Error;
	}
}

// The review's case: two runs saving one project lost one's changes and exited 0.
TEST_F(FProjectSaveProtocolTest, ASecondRunFailsAtOnce)
{
	FKestDMXProjectLock Lock;
	std::string Error;
	ASSERT_TRUE(LockKestDMXProject(ProjectDir.string(), Lock, Error)) << Error;
	const std::filesystem::path Marker = ProjectDir.string() + "-ran";
	std::string Stderr;
	EXPECT_EQ(RunOnProject("io.open('" + Marker.string() + "', 'w'):close()\n" + ChangeScript, &Stderr), 1);
	EXPECT_NE(Stderr.find("kestdmx: the project " + ProjectDir.string() + " is open in another kestdmx run (process " + std::to_string(getpid())
		+ "); one run at a time may change a project"), std::string::npos) << Stderr;
	EXPECT_FALSE(std::filesystem::exists(Marker)) << "no script runs";
	EXPECT_EQ(ReadAllFiles(ProjectDir), OldFiles);
	// Reading needs no lock.
	EXPECT_EQ(RunKestDMX({"inspect", "--project", ProjectDir.string()}), 0);

	Lock = FKestDMXProjectLock();
	EXPECT_EQ(RunOnProject(ChangeScript), 0);
	EXPECT_EQ(ReadFile(ProjectDir / ".kestdmx.lock"), "") << "a lock file names no process once released";
}

// The review's case: a failure at the second rename left old and new files mixed. Every operation of
// the save is failed in turn; each time the project stays exactly as it was and the packages stay
// dirty, but where only the removal of a kept old file failed, which the next load clears.
TEST_F(FProjectSaveProtocolTest, AFailureAtAnyStepLeavesTheProjectAsItWas)
{
	int Operations = 0;
	for (int FailAt = 1;; ++FailAt)
	{
		RestoreOldFiles();
		int Count = 0;
		std::string FailedOperation;
		std::string Error;
		bool bStillDirty = false;
		const bool bSaved = ChangeAndSave([&](const char* Operation, const std::string&)
		{
			if (++Count == FailAt)
			{
				FailedOperation = Operation;
				return false;
			}
			return true;
		}, Error, &bStillDirty);
		if (FailAt > Count)
		{
			ASSERT_TRUE(bSaved) << Error;
			Operations = Count;
			break;
		}
		if (bSaved)
		{
			EXPECT_EQ(FailedOperation, "remove") << "only removing a kept file may fail without failing the save";
			continue;
		}
		EXPECT_NE(Error.find("nothing was saved, the project is as it was"), std::string::npos) << FailedOperation << ": " << Error;
		EXPECT_EQ(ReadAllFiles(ProjectDir), OldFiles) << "failed at " << FailAt << " (" << FailedOperation << ")";
		EXPECT_FALSE(std::filesystem::exists(ProjectDir / "Content/Fresh")) << FailAt;
		EXPECT_TRUE(bStillDirty) << FailAt;
	}
	EXPECT_GT(Operations, 20);
	RecordProperty("operations", Operations);
}

// The kill test: a child process saves and is killed (SIGKILL) before its Nth file operation, for
// every N. Each time every file is whole, old or new, and the project loads (with warnings where the
// level refers to a patch of a library still old), and the next load for editing leaves no trace of
// the save.
TEST_F(FProjectSaveProtocolTest, AKillAtAnyStepLeavesEachFileOldOrNew)
{
	std::string Error;
	ASSERT_TRUE(ChangeAndSave(nullptr, Error)) << Error;
	const FFiles NewFiles = ReadAllFiles(ProjectDir);
	ASSERT_EQ(NewFiles.size(), 4u);

	int Kills = 0;
	for (int KillAt = 1;; ++KillAt)
	{
		RestoreOldFiles();
		const pid_t Child = fork();
		ASSERT_GE(Child, 0);
		if (Child == 0)
		{
			int Count = 0;
			std::string ChildError;
			const bool bSaved = ChangeAndSave([&](const char*, const std::string&)
			{
				if (++Count == KillAt)
				{
					raise(SIGKILL);
				}
				return true;
			}, ChildError);
			_exit(bSaved ? 0 : 1);
		}
		int Status = 0;
		ASSERT_EQ(waitpid(Child, &Status, 0), Child);
		const FFiles Files = ReadAllFiles(ProjectDir);
		if (WIFEXITED(Status))
		{
			EXPECT_EQ(WEXITSTATUS(Status), 0);
			EXPECT_EQ(Files, NewFiles);
			break;
		}
		ASSERT_TRUE(WIFSIGNALED(Status) && WTERMSIG(Status) == SIGKILL);
		++Kills;
		for (const auto& [Path, Text] : NewFiles)
		{
			const auto Found = Files.find(Path);
			const bool bOld = Found != Files.end() ? OldFiles.count(Path) != 0 && Found->second == OldFiles[Path] : OldFiles.count(Path) == 0;
			EXPECT_TRUE(bOld || (Found != Files.end() && Found->second == Text)) << Path << " killed at " << KillAt;
		}
		FKestDMXSession Session;
		FKestDMXProject Project;
		EXPECT_TRUE(LoadKestDMXProject(ProjectDir.string(), Session.GetEditor(), Project, Error)) << "killed at " << KillAt << ": " << Error;
		for (const auto& [Path, Text] : ReadAllFiles(ProjectDir))
		{
			EXPECT_TRUE(NewFiles.count(Path) != 0) << Path << " left after the load, killed at " << KillAt;
		}
	}
	EXPECT_GT(Kills, 20);
	RecordProperty("kills", Kills);
}
