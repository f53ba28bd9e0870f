// The save protocol of a project folder.
//
// The lock: an exclusive flock on DIR/.kestdmx.lock, taken by a load for editing and held until the
// project is dropped, so a second run fails at once instead of saving over the first one's work. The
// system drops it with the process, however the process ends.
//
// A save, all or nothing:
// 1. Each file's folder is opened below DIR one name at a time, never through a symbolic link, and
//    made when missing. A file there now must be the very one the load read.
// 2. Each text goes to a new file beside its target, created exclusively under a random name
//    (".kestdmx-save-<random>.new": nothing planted there is ever opened), and is synced to disk.
// 3. Only then is each target replaced: the old file is first kept under a second random name (a hard
//    link, or a copy where the file system has none), then the new file is renamed over the target.
//    A rename is atomic, so at every moment each target is whole, old or new.
// 4. The folders are synced, then the kept files removed.
// A failure before the end puts back every file replaced from what was kept, removes the new files
// and the folders made, and so leaves the project as it was. A process killed between two steps
// leaves each file whole, old or new, plus ".kestdmx-save-" files that the next load for editing
// removes.
#include "ProjectSaveProtocol.h"
#include "ProjectDiscovery.h"
#include "ProjectFiles.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <map>
#include <random>
#include <sys/file.h>
#include <unistd.h>

namespace
{
	const char* const LockFileName = ".kestdmx.lock";
	const int MaxNameAttempts = 16;

	std::string MakeSaveFileName(const char* Suffix)
	{
		static std::random_device Device;
		const unsigned long long Random = (static_cast<unsigned long long>(Device()) << 32) ^ Device();
		char Hex[17];
		std::snprintf(Hex, sizeof(Hex), "%016llx", Random);
		return std::string(ProjectSaveFilePrefix) + Hex + Suffix;
	}

	bool WriteAll(int File, const std::string& Text)
	{
		for (size_t Written = 0; Written < Text.size();)
		{
			const ssize_t Count = write(File, Text.data() + Written, Text.size() - Written);
			if (Count < 0 && errno != EINTR)
			{
				return false;
			}
			Written += Count > 0 ? static_cast<size_t>(Count) : 0;
		}
		return true;
	}

	// One file of the save, and how far it got.
	struct FFileStep
	{
		FProjectFileWrite* File = nullptr;
		int Folder = -1;
		std::string FolderPath;
		std::string Name;
		mode_t Mode = 0666;
		bool bHasOld = false;
		std::string Temporary;
		std::string Kept;
		bool bReplaced = false;

		std::string PathOf(const std::string& InName) const { return FolderPath + "/" + InName; }
	};

	struct FSaveState
	{
		std::string ProjectDir;
		// Open folders by their path below the project folder ("" is the project folder).
		std::map<std::string, int> Folders;
		// Folders this save made, in the order made.
		std::vector<std::string> MadeFolders;
		std::vector<FFileStep> Steps;

		~FSaveState()
		{
			for (const auto& [Relative, Folder] : Folders)
			{
				close(Folder);
			}
		}
	};

	std::string SplitLast(const std::string& Relative, std::string& OutName)
	{
		const size_t Slash = Relative.rfind('/');
		OutName = Slash == std::string::npos ? Relative : Relative.substr(Slash + 1);
		return Slash == std::string::npos ? std::string() : Relative.substr(0, Slash);
	}

	// The folder at Relative below the project folder, opened without following links, made when
	// missing (and its parents).
	int OpenFolder(FSaveState& State, const std::string& Relative, std::string& OutError)
	{
		if (const auto Found = State.Folders.find(Relative); Found != State.Folders.end())
		{
			return Found->second;
		}
		std::string Name;
		const int Parent = OpenFolder(State, SplitLast(Relative, Name), OutError);
		if (Parent < 0)
		{
			return -1;
		}
		const std::string Path = State.ProjectDir + "/" + Relative;
		const auto Open = [Parent, &Name, &Path]()
		{
			return AllowProjectFileOperation("open-folder", Path) ? openat(Parent, Name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC) : -1;
		};
		int Folder = Open();
		if (Folder < 0 && errno == ENOENT)
		{
			if (!AllowProjectFileOperation("make-folder", Path) || mkdirat(Parent, Name.c_str(), 0777) != 0)
			{
				OutError = Path + ": cannot be made: " + DescribeSystemError(errno);
				return -1;
			}
			State.MadeFolders.push_back(Relative);
			Folder = Open();
		}
		if (Folder < 0)
		{
			const int Error = errno;
			struct stat Status;
			const bool bLink = fstatat(Parent, Name.c_str(), &Status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(Status.st_mode);
			OutError = Path + (bLink ? ": is a symbolic link, and project files are never written through links" : ": cannot be opened: " + DescribeSystemError(Error));
			return -1;
		}
		State.Folders.emplace(Relative, Folder);
		return Folder;
	}

	// The target must be the file the load read (or absent when the load read none).
	bool CheckTarget(FFileStep& Step, std::string& OutError)
	{
		const std::string Path = Step.PathOf(Step.Name);
		struct stat Status;
		if (fstatat(Step.Folder, Step.Name.c_str(), &Status, AT_SYMLINK_NOFOLLOW) != 0)
		{
			if (errno != ENOENT)
			{
				OutError = Path + ": cannot be read: " + DescribeSystemError(errno);
				return false;
			}
			if (Step.File->bWasRead)
			{
				OutError = Path + ": was removed from disk after the project was loaded";
				return false;
			}
			return true;
		}
		if (S_ISLNK(Status.st_mode))
		{
			OutError = Path + ": is a symbolic link, and project files are never written through links";
			return false;
		}
		if (!S_ISREG(Status.st_mode))
		{
			OutError = Path + ": is not a regular file";
			return false;
		}
		if (!Step.File->bWasRead)
		{
			OutError = Path + ": appeared on disk after the project was loaded, so it was never read";
			return false;
		}
		if (!(MakeProjectFileStamp(Status) == Step.File->ReadStamp))
		{
			OutError = Path + ": changed on disk after the project was loaded; saving would lose that change";
			return false;
		}
		Step.bHasOld = true;
		Step.Mode = Status.st_mode & 07777;
		return true;
	}

	bool WriteTemporary(FFileStep& Step, std::string& OutError)
	{
		int File = -1;
		for (int Attempt = 0; Attempt < MaxNameAttempts && File < 0; ++Attempt)
		{
			const std::string Name = MakeSaveFileName(".new");
			if (!AllowProjectFileOperation("create", Step.PathOf(Name)))
			{
				break;
			}
			File = openat(Step.Folder, Name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, Step.Mode);
			if (File >= 0)
			{
				Step.Temporary = Name;
			}
			else if (errno != EEXIST)
			{
				break;
			}
		}
		if (File < 0)
		{
			OutError = Step.PathOf(Step.Name) + ": no new file can be made beside it: " + DescribeSystemError(errno);
			return false;
		}
		const std::string Path = Step.PathOf(Step.Temporary);
		struct stat Status;
		const bool bWritten = AllowProjectFileOperation("write", Path) && WriteAll(File, Step.File->Text)
			&& (!Step.bHasOld || fchmod(File, Step.Mode) == 0)
			&& AllowProjectFileOperation("sync", Path) && fsync(File) == 0
			&& fstat(File, &Status) == 0;
		const int Error = errno;
		if (close(File) != 0 || !bWritten)
		{
			OutError = Path + ": cannot be written: " + DescribeSystemError(bWritten ? errno : Error);
			return false;
		}
		Step.File->WrittenStamp = MakeProjectFileStamp(Status);
		return true;
	}

	// A copy of the old file, for file systems without hard links.
	bool CopyOld(FFileStep& Step, const std::string& KeptName)
	{
		const int From = openat(Step.Folder, Step.Name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
		if (From < 0)
		{
			return false;
		}
		std::string Text;
		char Buffer[65536];
		ssize_t Count = 0;
		while ((Count = read(From, Buffer, sizeof(Buffer))) > 0 || (Count < 0 && errno == EINTR))
		{
			Text.append(Buffer, Count > 0 ? static_cast<size_t>(Count) : 0);
		}
		close(From);
		const int To = Count == 0 ? openat(Step.Folder, KeptName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, Step.Mode) : -1;
		if (To < 0)
		{
			return false;
		}
		const bool bCopied = WriteAll(To, Text) && fsync(To) == 0;
		return close(To) == 0 && bCopied;
	}

	bool KeepOld(FFileStep& Step, std::string& OutError)
	{
		for (int Attempt = 0; Attempt < MaxNameAttempts; ++Attempt)
		{
			const std::string Name = MakeSaveFileName(".old");
			if (!AllowProjectFileOperation("link", Step.PathOf(Name)))
			{
				break;
			}
			if (linkat(Step.Folder, Step.Name.c_str(), Step.Folder, Name.c_str(), 0) == 0)
			{
				Step.Kept = Name;
				return true;
			}
			if (errno == EEXIST)
			{
				continue;
			}
			if (errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS || errno == EMLINK)
			{
				if (CopyOld(Step, Name))
				{
					Step.Kept = Name;
					return true;
				}
				if (errno == EEXIST)
				{
					continue;
				}
			}
			break;
		}
		OutError = Step.PathOf(Step.Name) + ": cannot be kept while it is replaced: " + DescribeSystemError(errno);
		return false;
	}

	bool Replace(FFileStep& Step, std::string& OutError)
	{
		const std::string Path = Step.PathOf(Step.Name);
		if (!AllowProjectFileOperation("rename", Path) || renameat(Step.Folder, Step.Temporary.c_str(), Step.Folder, Step.Name.c_str()) != 0)
		{
			OutError = Path + ": cannot be replaced: " + DescribeSystemError(errno);
			return false;
		}
		Step.Temporary.clear();
		Step.bReplaced = true;
		return true;
	}

	bool RemoveName(const FFileStep& Step, const std::string& Name, int Flags = 0)
	{
		return AllowProjectFileOperation("remove", Step.PathOf(Name)) && unlinkat(Step.Folder, Name.c_str(), Flags) == 0;
	}

	bool SyncFolders(FSaveState& State)
	{
		bool bSynced = true;
		for (const auto& [Relative, Folder] : State.Folders)
		{
			bSynced = AllowProjectFileOperation("sync-folder", State.ProjectDir + "/" + Relative) && fsync(Folder) == 0 && bSynced;
		}
		return bSynced;
	}

	// Puts the project back as it was; answers what could not be put back (empty when everything was).
	std::string Restore(FSaveState& State)
	{
		std::string Problems;
		for (auto It = State.Steps.rbegin(); It != State.Steps.rend(); ++It)
		{
			FFileStep& Step = *It;
			const std::string Path = Step.PathOf(Step.Name);
			if (Step.bReplaced && Step.bHasOld)
			{
				if (AllowProjectFileOperation("rename", Path) && renameat(Step.Folder, Step.Kept.c_str(), Step.Folder, Step.Name.c_str()) == 0)
				{
					Step.Kept.clear();
				}
				else
				{
					Problems += "; " + Path + " could not be put back (" + DescribeSystemError(errno) + "): its old content is in " + Step.PathOf(Step.Kept);
				}
			}
			else if (Step.bReplaced && !RemoveName(Step, Step.Name))
			{
				Problems += "; the new " + Path + " could not be removed (" + DescribeSystemError(errno) + ")";
			}
			if (!Step.Temporary.empty())
			{
				RemoveName(Step, Step.Temporary);
			}
			if (!Step.Kept.empty() && !Step.bReplaced)
			{
				RemoveName(Step, Step.Kept);
			}
		}
		for (auto It = State.MadeFolders.rbegin(); It != State.MadeFolders.rend(); ++It)
		{
			std::string Name;
			const std::string Parent = SplitLast(*It, Name);
			const auto Found = State.Folders.find(*It);
			if (Found != State.Folders.end())
			{
				close(Found->second);
				State.Folders.erase(Found);
			}
			if (AllowProjectFileOperation("remove", State.ProjectDir + "/" + *It))
			{
				unlinkat(State.Folders.at(Parent), Name.c_str(), AT_REMOVEDIR);
			}
		}
		SyncFolders(State);
		return Problems;
	}
}

FKestDMXProjectLock::~FKestDMXProjectLock()
{
	if (File >= 0)
	{
		// Emptied, so the file says nothing about a process that has gone; closing drops the lock.
		if (ftruncate(File, 0) != 0)
		{
			// Nothing to do: the next holder writes its own process over it.
		}
		close(File);
	}
}

FKestDMXProjectLock::FKestDMXProjectLock(FKestDMXProjectLock&& Other) noexcept
	: File(Other.File)
{
	Other.File = -1;
}

FKestDMXProjectLock& FKestDMXProjectLock::operator=(FKestDMXProjectLock&& Other) noexcept
{
	if (this != &Other)
	{
		FKestDMXProjectLock Released(std::move(*this));
		File = Other.File;
		Other.File = -1;
	}
	return *this;
}

bool LockKestDMXProject(const std::string& ProjectDir, FKestDMXProjectLock& OutLock, std::string& OutError)
{
	const std::string Path = ProjectDir + "/" + LockFileName;
	const int File = AllowProjectFileOperation("lock", Path) ? open(Path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY, 0666) : -1;
	if (File < 0)
	{
		OutError = "cannot lock the project: " + Path + (errno == ELOOP ? ": is a symbolic link" : ": " + DescribeSystemError(errno));
		return false;
	}
	FKestDMXProjectLock Lock;
	Lock.File = File;
	if (flock(File, LOCK_EX | LOCK_NB) != 0)
	{
		const int Error = errno;
		if (Error != EWOULDBLOCK)
		{
			OutError = "cannot lock the project: " + Path + ": " + DescribeSystemError(Error);
			Lock.File = -1;
			close(File);
			return false;
		}
		char Holder[32] = {};
		const ssize_t Count = pread(File, Holder, sizeof(Holder) - 1, 0);
		std::string Process(Holder, Count > 0 ? static_cast<size_t>(Count) : 0);
		while (!Process.empty() && (Process.back() == '\n' || Process.back() == ' '))
		{
			Process.pop_back();
		}
		OutError = "the project " + ProjectDir + " is open in another kestdmx run" + (Process.empty() ? "" : " (process " + Process + ")")
			+ "; one run at a time may change a project, so this one stops before loading it";
		Lock.File = -1;
		close(File);
		return false;
	}
	const std::string Process = std::to_string(getpid()) + "\n";
	if (ftruncate(File, 0) != 0 || pwrite(File, Process.data(), Process.size(), 0) != static_cast<ssize_t>(Process.size()))
	{
		// The lock holds without it; only the message of a second run names no process.
	}
	OutLock = std::move(Lock);
	return true;
}

bool WriteProjectFiles(const std::string& ProjectDir, std::vector<FProjectFileWrite>& Files, std::string& OutError)
{
	FSaveState State;
	State.ProjectDir = ProjectDir;
	const int ProjectFolder = open(ProjectDir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
	if (ProjectFolder < 0)
	{
		OutError = ProjectDir + ": cannot be opened: " + DescribeSystemError(errno);
		return false;
	}
	State.Folders.emplace(std::string(), ProjectFolder);

	const auto Fail = [&State, &OutError]()
	{
		const std::string Problems = Restore(State);
		OutError += Problems.empty() ? "; nothing was saved, the project is as it was"
			: Problems + "; every file is whole, some old and some new";
		return false;
	};

	for (FProjectFileWrite& File : Files)
	{
		FFileStep Step;
		Step.File = &File;
		const std::string FolderRelative = SplitLast(File.RelativePath, Step.Name);
		Step.FolderPath = ProjectDir + "/" + FolderRelative;
		Step.Folder = OpenFolder(State, FolderRelative, OutError);
		const bool bChecked = Step.Folder >= 0 && CheckTarget(Step, OutError);
		State.Steps.push_back(std::move(Step));
		if (!bChecked)
		{
			return Fail();
		}
	}
	for (FFileStep& Step : State.Steps)
	{
		if (!WriteTemporary(Step, OutError))
		{
			return Fail();
		}
	}
	for (FFileStep& Step : State.Steps)
	{
		if ((Step.bHasOld && !KeepOld(Step, OutError)) || !Replace(Step, OutError))
		{
			return Fail();
		}
	}
	if (!SyncFolders(State))
	{
		OutError = ProjectDir + ": the saved files cannot be synced to disk: " + DescribeSystemError(errno);
		return Fail();
	}
	for (FFileStep& Step : State.Steps)
	{
		// What cannot be removed now is removed by the next load for editing.
		if (!Step.Kept.empty())
		{
			RemoveName(Step, Step.Kept);
		}
	}
	return true;
}
