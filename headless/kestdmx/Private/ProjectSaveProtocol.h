// Writing a project's files all or nothing (ProjectSaveProtocol.cpp).
#pragma once

#include <string>
#include <vector>
#include "KestDMXProject.h"

struct FProjectFileWrite
{
	// Below the project folder: "Content/DMX/Stage.dmxlib.json".
	std::string RelativePath;
	std::string Text;
	// The file as the load read it. Without one, no file may be there now.
	bool bWasRead = false;
	FKestDMXProjectFileStamp ReadStamp;
	// Set by a successful save: the file as written.
	FKestDMXProjectFileStamp WrittenStamp;
};

// Replaces every file with its text, or none. The caller holds the project's lock. On failure
// OutError says what failed and that the project is as it was.
bool WriteProjectFiles(const std::string& ProjectDir, std::vector<FProjectFileWrite>& Files, std::string& OutError);
