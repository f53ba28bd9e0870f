#include "OutputFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
	std::string DescribeErrno(int Error)
	{
		return std::strerror(Error);
	}

	std::string GetFolder(const std::string& Path)
	{
		const std::filesystem::path Folder = std::filesystem::path(Path).parent_path();
		return Folder.empty() ? std::string(".") : Folder.string();
	}

	bool WriteAll(int File, const std::string& Contents)
	{
		size_t Written = 0;
		while (Written < Contents.size())
		{
			const ssize_t Count = ::write(File, Contents.data() + Written, Contents.size() - Written);
			if (Count < 0)
			{
				if (errno == EINTR)
				{
					continue;
				}
				return false;
			}
			Written += static_cast<size_t>(Count);
		}
		return true;
	}
}

bool CheckOutputFile(const std::string& Path, std::string& OutError)
{
	if (Path.empty())
	{
		OutError = "no file name given for the output";
		return false;
	}
	struct stat Status;
	if (::lstat(Path.c_str(), &Status) == 0)
	{
		if (S_ISLNK(Status.st_mode))
		{
			OutError = "cannot write " + Path + ": it is a link, and the page is never written through one";
			return false;
		}
		if (!S_ISREG(Status.st_mode))
		{
			OutError = "cannot write " + Path + ": it is " + (S_ISDIR(Status.st_mode) ? "a folder" : "not a regular file");
			return false;
		}
		if (::access(Path.c_str(), R_OK) != 0)
		{
			OutError = "cannot write " + Path + ": the file there cannot be read, so it is left alone";
			return false;
		}
		return true;
	}
	if (errno != ENOENT)
	{
		OutError = "cannot write " + Path + ": " + DescribeErrno(errno);
		return false;
	}
	const std::string Folder = GetFolder(Path);
	struct stat FolderStatus;
	if (::stat(Folder.c_str(), &FolderStatus) != 0 || !S_ISDIR(FolderStatus.st_mode))
	{
		OutError = "cannot write " + Path + ": there is no folder " + Folder;
		return false;
	}
	return true;
}

bool WriteOutputFile(const std::string& Path, const std::string& Contents, std::string& OutError)
{
	if (!CheckOutputFile(Path, OutError))
	{
		return false;
	}
	struct stat Existing;
	const bool bReplacing = ::stat(Path.c_str(), &Existing) == 0;

	const std::filesystem::path Target(Path);
	// A hidden name beside the target. Appended rather than "." + name: gcc 12 at -O3 warns falsely
	// (-Wrestrict) about a literal plus a temporary string.
	std::string TemporaryName = ".";
	TemporaryName += Target.filename().string();
	TemporaryName += ".XXXXXX";
	std::string Temporary = (Target.parent_path() / TemporaryName).string();
	const int File = ::mkstemp(Temporary.data());
	if (File < 0)
	{
		OutError = "cannot write " + Path + ": cannot make a file in " + GetFolder(Path) + ": " + DescribeErrno(errno);
		return false;
	}

	mode_t Mode = 0;
	if (bReplacing)
	{
		Mode = Existing.st_mode & 07777;
	}
	else
	{
		const mode_t Mask = ::umask(0);
		::umask(Mask);
		Mode = 0666 & ~Mask;
	}

	const bool bWritten = WriteAll(File, Contents) && ::fchmod(File, Mode) == 0 && ::fsync(File) == 0;
	const int WriteError = errno;
	const bool bClosed = ::close(File) == 0;
	if (!bWritten || !bClosed)
	{
		::unlink(Temporary.c_str());
		OutError = "cannot write " + Path + ": " + DescribeErrno(bWritten ? errno : WriteError);
		return false;
	}
	if (::rename(Temporary.c_str(), Path.c_str()) != 0)
	{
		const int RenameError = errno;
		::unlink(Temporary.c_str());
		OutError = "cannot write " + Path + ": " + DescribeErrno(RenameError);
		return false;
	}
	// The rename itself reaches the disk with the folder.
	const int Folder = ::open(GetFolder(Path).c_str(), O_RDONLY | O_DIRECTORY);
	if (Folder >= 0)
	{
		::fsync(Folder);
		::close(Folder);
	}
	return true;
}
