// Files the runner writes for people (the channel map page): written whole or not at all.
#pragma once

#include <string>

// Whether Path can take an output file: its folder exists, and it is not a link, not a folder or
// other special file, and not an existing file that cannot be read (it may be someone's work that
// we cannot even look at). OutError names the path and the problem.
bool CheckOutputFile(const std::string& Path, std::string& OutError);

// Writes Contents to Path after CheckOutputFile: first into a new file of its own beside Path, flushed
// to disk, then renamed over Path, so Path holds either its old contents or all of the new ones. A
// replaced file keeps its permissions; a new one gets the usual ones (0666 less the umask).
bool WriteOutputFile(const std::string& Path, const std::string& Contents, std::string& OutError);
