#include "ProjectFiles.h"
#include "ProjectFileFaults.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace
{
	FProjectFileHook& GetProjectFileHook()
	{
		static FProjectFileHook Hook;
		return Hook;
	}
}

void SetProjectFileHook(FProjectFileHook Hook)
{
	GetProjectFileHook() = std::move(Hook);
}

bool AllowProjectFileOperation(const char* Operation, const std::string& Path)
{
	const FProjectFileHook& Hook = GetProjectFileHook();
	if (Hook && !Hook(Operation, Path))
	{
		errno = EIO;
		return false;
	}
	return true;
}

std::string DescribeSystemError(int Error)
{
	return std::strerror(Error);
}

FKestDMXProjectFileStamp MakeProjectFileStamp(const struct stat& Status)
{
	FKestDMXProjectFileStamp Stamp;
	Stamp.Device = static_cast<uint64>(Status.st_dev);
	Stamp.Inode = static_cast<uint64>(Status.st_ino);
	Stamp.Size = static_cast<int64>(Status.st_size);
	Stamp.ModifiedNs = static_cast<int64>(Status.st_mtim.tv_sec) * 1000000000 + Status.st_mtim.tv_nsec;
	return Stamp;
}

bool ReadWholeProjectFile(const std::string& Path, std::string& OutText, FKestDMXProjectFileStamp& OutStamp, std::string& OutError)
{
	if (!AllowProjectFileOperation("read", Path))
	{
		OutError = "cannot be read: " + DescribeSystemError(errno);
		return false;
	}
	const int File = open(Path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
	if (File < 0)
	{
		OutError = "cannot be read: " + DescribeSystemError(errno);
		return false;
	}
	struct stat Status;
	if (fstat(File, &Status) != 0)
	{
		OutError = "cannot be read: " + DescribeSystemError(errno);
		close(File);
		return false;
	}
	if (!S_ISREG(Status.st_mode))
	{
		OutError = S_ISDIR(Status.st_mode) ? "is a folder, not a file" : "is not a regular file";
		close(File);
		return false;
	}
	OutText.clear();
	OutText.reserve(static_cast<size_t>(Status.st_size));
	char Buffer[65536];
	for (;;)
	{
		const ssize_t Read = read(File, Buffer, sizeof(Buffer));
		if (Read == 0)
		{
			break;
		}
		if (Read < 0)
		{
			if (errno == EINTR)
			{
				continue;
			}
			OutError = "cannot be read: " + DescribeSystemError(errno);
			close(File);
			return false;
		}
		OutText.append(Buffer, static_cast<size_t>(Read));
	}
	close(File);
	OutStamp = MakeProjectFileStamp(Status);
	return true;
}
