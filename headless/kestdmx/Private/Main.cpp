#include "KestDMXRunner.h"

int main(int ArgC, char** ArgV)
{
	std::vector<std::string> Args;
	for (int Index = 1; Index < ArgC; ++Index)
	{
		Args.emplace_back(ArgV[Index]);
	}
	return RunKestDMXCommandLine(Args);
}
