// The closest known word to a misspelled key, kind or text, for "did you mean" in check findings.
#include "KestDMXCheckCall.h"

#include <algorithm>

namespace
{
	// Lower case without '_', '-', '.' and blanks: "Starting-Channel" and "startingchannel" meet.
	std::string Fold(const std::string& Text)
	{
		std::string Folded;
		for (char Character : ToLowerASCII(Text))
		{
			if (Character != '_' && Character != '-' && Character != ' ' && Character != '.')
			{
				Folded += Character;
			}
		}
		return Folded;
	}

	// Optimal string alignment distance: insertions, deletions, substitutions and swaps of neighbours.
	size_t GetEditDistance(const std::string& A, const std::string& B)
	{
		std::vector<std::vector<size_t>> Cost(A.size() + 1, std::vector<size_t>(B.size() + 1, 0));
		for (size_t I = 0; I <= A.size(); ++I)
		{
			Cost[I][0] = I;
		}
		for (size_t J = 0; J <= B.size(); ++J)
		{
			Cost[0][J] = J;
		}
		for (size_t I = 1; I <= A.size(); ++I)
		{
			for (size_t J = 1; J <= B.size(); ++J)
			{
				const size_t Substitution = A[I - 1] == B[J - 1] ? 0 : 1;
				Cost[I][J] = std::min({Cost[I - 1][J] + 1, Cost[I][J - 1] + 1, Cost[I - 1][J - 1] + Substitution});
				if (I > 1 && J > 1 && A[I - 1] == B[J - 2] && A[I - 2] == B[J - 1])
				{
					Cost[I][J] = std::min(Cost[I][J], Cost[I - 2][J - 2] + 1);
				}
			}
		}
		return Cost[A.size()][B.size()];
	}
}

std::string SuggestClosest(const std::string& Text, const std::vector<std::string>& Candidates)
{
	// Long texts are no names; comparing them would only cost time.
	if (Text.empty() || Text.size() > 64)
	{
		return std::string();
	}
	const std::string Folded = Fold(Text);
	for (const std::string& Candidate : Candidates)
	{
		if (Fold(Candidate) == Folded)
		{
			return Candidate;
		}
	}
	std::string Best;
	size_t BestDistance = std::max<size_t>(1, Folded.size() / 3) + 1;
	for (const std::string& Candidate : Candidates)
	{
		const size_t Distance = GetEditDistance(Folded, Fold(Candidate));
		if (Distance < BestDistance)
		{
			BestDistance = Distance;
			Best = Candidate;
		}
	}
	return Best;
}
