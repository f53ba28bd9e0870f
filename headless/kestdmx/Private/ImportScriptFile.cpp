// Writing an import script to disk, whole or not at all. The text goes into a new file made beside
// the target (created exclusively, so no link is followed) and is renamed over the target once it
// is complete on disk. The target is never written through a link, and a file that cannot be read
// is not replaced: whatever it holds is not the import's to lose.
#include "FixtureImport.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
	std::string DescribeErrno()
	{
		return std::strerror(errno);
	}

	bool WriteAll(int Descriptor, const std::string& Text)
	{
		size_t Written = 0;
		while (Written < Text.size())
		{
			const ssize_t Count = write(Descriptor, Text.data() + Written, Text.size() - Written);
			if (Count < 0 && errno == EINTR)
			{
				continue;
			}
			if (Count <= 0)
			{
				return false;
			}
			Written += static_cast<size_t>(Count);
		}
		return true;
	}

	// Whether the existing target may be replaced; a missing one may be made.
	bool CheckTarget(const std::string& File, mode_t& OutMode, std::string& OutError)
	{
		struct stat Status;
		if (lstat(File.c_str(), &Status) != 0)
		{
			if (errno == ENOENT)
			{
				return true;
			}
			OutError = File + ": " + DescribeErrno();
			return false;
		}
		if (S_ISLNK(Status.st_mode))
		{
			OutError = File + " is a link; the script is not written through it";
			return false;
		}
		if (!S_ISREG(Status.st_mode))
		{
			OutError = File + " is not a plain file";
			return false;
		}
		const int Descriptor = open(File.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
		if (Descriptor < 0)
		{
			OutError = File + " cannot be read (" + DescribeErrno() + "), so it is not replaced";
			return false;
		}
		close(Descriptor);
		OutMode = Status.st_mode & 07777;
		return true;
	}
}

bool WriteImportScriptFile(const std::string& File, const std::string& Script, std::string& OutError)
{
	mode_t Mode = 0644;
	if (!CheckTarget(File, Mode, OutError))
	{
		return false;
	}
	std::string Temporary = File + ".tmp-XXXXXX";
	const int Descriptor = mkstemp(Temporary.data());
	if (Descriptor < 0)
	{
		OutError = "cannot write next to " + File + ": " + DescribeErrno();
		return false;
	}
	const bool bWritten = fchmod(Descriptor, Mode) == 0 && WriteAll(Descriptor, Script) && fsync(Descriptor) == 0;
	const std::string WriteError = DescribeErrno();
	const bool bClosed = close(Descriptor) == 0;
	if (!bWritten || !bClosed)
	{
		unlink(Temporary.c_str());
		OutError = "cannot write " + Temporary + ": " + WriteError;
		return false;
	}
	if (rename(Temporary.c_str(), File.c_str()) != 0)
	{
		OutError = "cannot replace " + File + ": " + DescribeErrno();
		unlink(Temporary.c_str());
		return false;
	}
	return true;
}
