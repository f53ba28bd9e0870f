// The closest known word to a misspelled key, kind, name or text, for "did you mean" in check findings.
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

	std::string JoinPath(const std::string& Path, const std::string& Key)
	{
		return Path.empty() ? Key : Path + "." + Key;
	}

	// The keys of the tables below a class, with their paths: "matrix.x_cells" for x_cells of a
	// mode, "modes[n].functions" for functions of a fixture type.
	void CollectKeysBelow(const FKestClass& Class, const std::string& Path, int Depth, std::vector<std::string>& OutNames, std::vector<std::string>& OutPaths)
	{
		if (Depth > 3)
		{
			return;
		}
		const FKestSchema& Schema = GetKestDMXSchema();
		for (const FKestField& Field : Class.Fields)
		{
			const FKestClass* Nested = Field.Class.empty() ? nullptr : Schema.FindClass(Field.Class);
			if (Nested == nullptr)
			{
				continue;
			}
			const std::string NestedPath = JoinPath(Path, Field.Name) + (Field.Type == EKestLuaType::List ? "[n]" : "");
			for (const FKestField& NestedField : Nested->Fields)
			{
				OutNames.push_back(NestedField.Name);
				OutPaths.push_back(JoinPath(NestedPath, NestedField.Name));
				for (const std::string& Synonym : NestedField.Synonyms)
				{
					OutNames.push_back(Synonym);
					OutPaths.push_back(JoinPath(NestedPath, NestedField.Name));
				}
			}
			CollectKeysBelow(*Nested, NestedPath, Depth + 1, OutNames, OutPaths);
		}
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

std::string SuggestParamsKey(const FKestClass& Class, const std::string& Key)
{
	std::vector<std::string> Names;
	for (const FKestField& Field : Class.Fields)
	{
		Names.push_back(Field.Name);
	}
	std::string Suggestion = SuggestClosest(Key, Names);
	if (!Suggestion.empty())
	{
		return Suggestion;
	}
	const std::string Lower = ToLowerASCII(Key);
	for (const FKestField& Field : Class.Fields)
	{
		for (const std::string& Synonym : Field.Synonyms)
		{
			if (ToLowerASCII(Synonym) == Lower)
			{
				return Field.Name;
			}
		}
	}
	std::vector<std::string> NamesBelow;
	std::vector<std::string> PathsBelow;
	CollectKeysBelow(Class, std::string(), 0, NamesBelow, PathsBelow);
	Suggestion = SuggestClosest(Key, NamesBelow);
	for (size_t Index = 0; Index < NamesBelow.size() && !Suggestion.empty(); ++Index)
	{
		if (NamesBelow[Index] == Suggestion)
		{
			return PathsBelow[Index];
		}
	}
	return std::string();
}
