// The file operations the project store shares: reading a file whole, telling whether a file is still
// the one that was read, and the test hook every operation passes (ProjectFileFaults.h).
#pragma once

#include <string>
#include <sys/stat.h>
#include "KestDMXProject.h"

// Calls the test hook; false, with errno set to EIO, when it refuses the operation.
bool AllowProjectFileOperation(const char* Operation, const std::string& Path);

// The system's text for an errno value ("Permission denied").
std::string DescribeSystemError(int Error);

// What identifies a file's content on disk without reading it again.
FKestDMXProjectFileStamp MakeProjectFileStamp(const struct stat& Status);

// Reads a regular file whole (through links, like any reader). On failure OutError says why, without
// the path.
bool ReadWholeProjectFile(const std::string& Path, std::string& OutText, FKestDMXProjectFileStamp& OutStamp, std::string& OutError);
