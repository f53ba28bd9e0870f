// kestdmx stubs [--luacheck] [-o FILE]: the editor definitions of the Lua API (or, with --luacheck, a
// luacheck configuration) on stdout or in FILE.
// CLI11 first: the engine's check() macro would rewrite its Option::check.
#include <CLI/CLI.hpp>

#include "KestDMXCommands.h"
#include "KestDMXStubs.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
	struct FStubsOptions
	{
		bool bLuacheck = false;
		std::string OutputFile;
	};

	// The first line of every file this command writes, so that it only ever replaces its own.
	bool IsWrittenByStubs(const std::string& FirstLine)
	{
		return FirstLine.rfind("---@meta kestdmx", 0) == 0 || FirstLine.rfind("-- luacheck configuration for scripts of the DMX Engine", 0) == 0;
	}

	// Refuses links and anything but a file this command wrote before.
	bool CanReplace(const std::string& File, std::string& OutError)
	{
		struct stat Status;
		if (lstat(File.c_str(), &Status) != 0)
		{
			if (errno == ENOENT)
			{
				return true;
			}
			OutError = "cannot look at " + File + ": " + std::strerror(errno);
			return false;
		}
		if (S_ISLNK(Status.st_mode))
		{
			OutError = File + " is a symbolic link; write to the file itself";
			return false;
		}
		if (!S_ISREG(Status.st_mode))
		{
			OutError = File + " is not a regular file";
			return false;
		}
		std::ifstream Existing(File);
		std::string FirstLine;
		if (!Existing || !std::getline(Existing, FirstLine))
		{
			if (Status.st_size == 0 && Existing)
			{
				return true;
			}
			OutError = "cannot read " + File + ", so it is not replaced";
			return false;
		}
		if (!IsWrittenByStubs(FirstLine))
		{
			OutError = File + " was not written by kestdmx stubs; it is not replaced";
			return false;
		}
		return true;
	}

	// All or nothing: the text goes to a new file next to the target, which then replaces it.
	bool WriteWhole(const std::string& File, const std::string& Text, std::string& OutError)
	{
		if (!CanReplace(File, OutError))
		{
			return false;
		}
		const std::string Temporary = File + ".kestdmx-tmp";
		const int Descriptor = open(Temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
		if (Descriptor < 0)
		{
			OutError = "cannot create " + Temporary + ": " + std::strerror(errno);
			return false;
		}
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
				OutError = "cannot write " + Temporary + ": " + std::strerror(errno);
				close(Descriptor);
				unlink(Temporary.c_str());
				return false;
			}
			Written += static_cast<size_t>(Count);
		}
		if (fsync(Descriptor) != 0 || close(Descriptor) != 0)
		{
			OutError = "cannot write " + Temporary + ": " + std::strerror(errno);
			unlink(Temporary.c_str());
			return false;
		}
		if (std::rename(Temporary.c_str(), File.c_str()) != 0)
		{
			OutError = "cannot replace " + File + ": " + std::strerror(errno);
			unlink(Temporary.c_str());
			return false;
		}
		return true;
	}

	int WriteStubs(const FStubsOptions& Options)
	{
		const std::string Text = Options.bLuacheck ? FormatLuacheckConfig() : FormatLuaLSDefinitions();
		if (Options.OutputFile.empty())
		{
			std::cout << Text;
			return KestDMXExitSuccess;
		}
		std::string Error;
		if (!WriteWhole(Options.OutputFile, Text, Error))
		{
			return ReportFailure(Error);
		}
		return KestDMXExitSuccess;
	}
}

void AddStubsCommand(CLI::App& App, int& OutExitCode)
{
	auto Options = std::make_shared<FStubsOptions>();
	CLI::App* Command = App.add_subcommand("stubs", "Write the Lua API's definitions for editors (LuaLS), or a luacheck configuration.");
	Command->add_flag("--luacheck", Options->bLuacheck, "Write a luacheck configuration declaring the globals instead");
	Command->add_option("-o,--output", Options->OutputFile, "Write to FILE (replacing only a file kestdmx stubs wrote) instead of stdout")->type_name("FILE");
	Command->callback([Options, &OutExitCode]() { OutExitCode = WriteStubs(*Options); });
}
