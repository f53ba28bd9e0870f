#include "ProjectDiscovery.h"
#include "KestDMXText.h"
#include "ProjectFiles.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <map>
#include <utility>

#include "Misc/PackageName.h"

const char* const ProjectLibraryExtension = ".dmxlib.json";
const char* const ProjectLevelExtension = ".level.json";
const TCHAR* const ProjectLevelPackageName = TEXT("/Game/Maps/Untitled");
const char* const ProjectSaveFilePrefix = ".kestdmx-save-";

namespace
{
	const TCHAR* const GamePrefix = TEXT("/Game/");
	const char* const ContentFolder = "Content";

	bool EndsWith(const std::string& Text, const std::string& End)
	{
		return Text.size() > End.size() && Text.compare(Text.size() - End.size(), End.size(), End) == 0;
	}

	bool IsUTF8(const std::string& Text)
	{
		return ToUTF8(ToEngine(Text)) == Text;
	}

	struct FFolder
	{
		// Below Content/, "" for Content/ itself, else "DMX/Sub".
		std::string Relative;
		std::string Path;
	};

	// One folder's entries, read whole and closed before anything else is opened.
	bool ReadFolder(const FFolder& Folder, std::vector<std::pair<std::string, struct stat>>& OutEntries, std::vector<std::string>& OutLeftovers,
		std::string& OutError)
	{
		const auto Fail = [&OutError](const std::string& Path, const std::string& Problem)
		{
			OutError = Path + ": " + Problem;
			return false;
		};
		if (!AllowProjectFileOperation("open-folder", Folder.Path))
		{
			return Fail(Folder.Path, "cannot be read: " + DescribeSystemError(errno));
		}
		DIR* Stream = opendir(Folder.Path.c_str());
		if (Stream == nullptr)
		{
			return Fail(Folder.Path, "cannot be read: " + DescribeSystemError(errno));
		}
		bool bRead = true;
		for (;;)
		{
			errno = 0;
			const dirent* Entry = readdir(Stream);
			if (Entry == nullptr)
			{
				if (errno != 0)
				{
					bRead = Fail(Folder.Path, "cannot be read: " + DescribeSystemError(errno));
				}
				break;
			}
			const std::string Name = Entry->d_name;
			if (Name == "." || Name == "..")
			{
				continue;
			}
			const std::string Path = Folder.Path + "/" + Name;
			if (Name.rfind(ProjectSaveFilePrefix, 0) == 0)
			{
				OutLeftovers.push_back(std::string(ContentFolder) + "/" + (Folder.Relative.empty() ? "" : Folder.Relative + "/") + Name);
				continue;
			}
			struct stat Status;
			if (fstatat(dirfd(Stream), Entry->d_name, &Status, 0) != 0)
			{
				const int Error = errno;
				struct stat LinkStatus;
				// A link to nothing may stand for a folder of libraries that is not there now.
				const bool bDanglingLink = Error == ENOENT && fstatat(dirfd(Stream), Entry->d_name, &LinkStatus, AT_SYMLINK_NOFOLLOW) == 0
					&& S_ISLNK(LinkStatus.st_mode);
				bRead = Fail(Path, bDanglingLink ? "is a symbolic link to nothing" : "cannot be read: " + DescribeSystemError(Error));
				break;
			}
			OutEntries.emplace_back(Name, Status);
		}
		closedir(Stream);
		return bRead;
	}
}

std::string GetProjectRelativeFileForPackage(const FString& PackageName)
{
	const FString Prefix(GamePrefix);
	if (!PackageName.StartsWith(Prefix, ESearchCase::CaseSensitive) || PackageName.Len() <= Prefix.Len())
	{
		return std::string();
	}
	const bool bLevel = PackageName.Equals(FString(ProjectLevelPackageName), ESearchCase::CaseSensitive);
	return std::string(ContentFolder) + "/" + ToUTF8(PackageName.Mid(Prefix.Len())) + (bLevel ? ProjectLevelExtension : ProjectLibraryExtension);
}

bool FindProjectContents(const std::string& ProjectDir, FProjectContents& OutContents, std::string& OutError)
{
	OutContents = FProjectContents();
	const std::string ContentPath = ProjectDir + "/" + ContentFolder;
	struct stat Status;
	if (stat(ContentPath.c_str(), &Status) != 0)
	{
		if (errno == ENOENT)
		{
			return true;
		}
		OutError = ContentPath + ": cannot be read: " + DescribeSystemError(errno);
		return false;
	}
	if (!S_ISDIR(Status.st_mode))
	{
		OutError = ContentPath + ": is not a folder";
		return false;
	}

	// Each folder is read once: reaching one again (through a link) would read its libraries under a
	// second package name, or never end.
	std::map<std::pair<dev_t, ino_t>, std::string> Seen;
	Seen.emplace(std::make_pair(Status.st_dev, Status.st_ino), ContentPath);
	std::vector<FFolder> Pending = {FFolder{std::string(), ContentPath}};
	std::vector<std::pair<std::string, struct stat>> Entries;
	while (!Pending.empty())
	{
		const FFolder Folder = std::move(Pending.back());
		Pending.pop_back();
		Entries.clear();
		if (!ReadFolder(Folder, Entries, OutContents.Leftovers, OutError))
		{
			return false;
		}
		for (const auto& [Name, EntryStatus] : Entries)
		{
			const std::string Path = Folder.Path + "/" + Name;
			const std::string Relative = Folder.Relative.empty() ? Name : Folder.Relative + "/" + Name;
			if (S_ISDIR(EntryStatus.st_mode))
			{
				const auto [It, bNew] = Seen.emplace(std::make_pair(EntryStatus.st_dev, EntryStatus.st_ino), Path);
				if (!bNew)
				{
					OutError = Path + ": leads to " + It->second + " again (a symbolic link loop, or a second link to one folder)";
					return false;
				}
				if (!IsUTF8(Name))
				{
					OutError = Path + ": the folder's name is not UTF-8 text";
					return false;
				}
				Pending.push_back(FFolder{Relative, Path});
			}
			else if (S_ISREG(EntryStatus.st_mode) && EndsWith(Name, ProjectLibraryExtension))
			{
				if (!IsUTF8(Name))
				{
					OutError = Path + ": the file's name is not UTF-8 text";
					return false;
				}
				const FString PackageName = FString(GamePrefix) + ToEngine(Relative.substr(0, Relative.size() - std::strlen(ProjectLibraryExtension)));
				FText Reason;
				if (!FPackageName::IsValidLongPackageName(PackageName, false, &Reason))
				{
					OutError = Path + ": " + ToUTF8(PackageName) + " is not a package name the editor can use: " + ToUTF8(Reason.ToString());
					return false;
				}
				OutContents.Libraries.push_back(FProjectLibraryFile{PackageName, std::string(ContentFolder) + "/" + Relative});
			}
			else if (EndsWith(Name, ProjectLibraryExtension))
			{
				OutError = Path + ": is not a regular file";
				return false;
			}
		}
	}
	std::sort(OutContents.Libraries.begin(), OutContents.Libraries.end(), [](const FProjectLibraryFile& A, const FProjectLibraryFile& B)
	{
		return A.PackageName.Compare(B.PackageName, ESearchCase::CaseSensitive) < 0;
	});
	std::sort(OutContents.Leftovers.begin(), OutContents.Leftovers.end());
	return true;
}
