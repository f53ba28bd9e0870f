// A test seam of the project store. Every file operation it makes first calls the hook, when one is
// set, with the operation's name and the file or folder: "open-folder", "read", "lock", "make-folder",
// "create", "write", "sync", "link", "rename", "remove", "sync-folder". A hook that answers false makes
// that operation fail as if the system had answered EIO; a hook may also end the process, to stop a
// save between two steps.
#pragma once

#include <functional>
#include <string>

using FProjectFileHook = std::function<bool(const char* Operation, const std::string& Path)>;

// Replaces the hook; an empty one removes it.
void SetProjectFileHook(FProjectFileHook Hook);
