// What dmx_component and its methods did with a script's arguments: actors, components, libraries and
// patches that were not found, and a patch that was cleared because of it.
#include "KestDMXCheckCall.h"
#include "KestDMXCheckLookup.h"

#include "Editor.h"
#include "Editor/EditorEngine.h"
#include "Engine/World.h"
#include "Game/DMXComponent.h"
#include "GameFramework/Actor.h"
#include "host/VorlithLua.h"

namespace
{
	UWorld* GetCheckedEditorWorld()
	{
		return GEditor != nullptr ? GEditor->GetEditorWorldContext(false).World() : nullptr;
	}

	// As the host finds actors (object name first, then label, ignoring case), but without making a
	// default label for actors that have none.
	AActor* FindActorQuietly(const FString& NameOrLabel)
	{
		UWorld* World = GetCheckedEditorWorld();
		if (World == nullptr || NameOrLabel.IsEmpty())
		{
			return nullptr;
		}
		for (AActor* Actor : World->GetActors())
		{
			if (IsValid(Actor) && Actor->GetName() == NameOrLabel)
			{
				return Actor;
			}
		}
		for (AActor* Actor : World->GetActors())
		{
			if (IsValid(Actor) && Actor->GetActorLabel(false) == NameOrLabel)
			{
				return Actor;
			}
		}
		return nullptr;
	}

	std::vector<std::string> GetActorNamesAndLabels()
	{
		std::vector<std::string> Names;
		if (UWorld* World = GetCheckedEditorWorld())
		{
			for (AActor* Actor : World->GetActors())
			{
				if (IsValid(Actor))
				{
					Names.push_back(ToUTF8(Actor->GetName()));
					if (!Actor->GetActorLabel(false).IsEmpty())
					{
						Names.push_back(ToUTF8(Actor->GetActorLabel(false)));
					}
				}
			}
		}
		return Names;
	}

	std::vector<std::string> GetComponentNames(AActor* Actor)
	{
		std::vector<std::string> Names;
		TArray<UDMXComponent*> Components;
		Actor->GetComponents(Components);
		for (UDMXComponent* Component : Components)
		{
			if (Component != nullptr)
			{
				Names.push_back(ToUTF8(Component->GetName()));
			}
		}
		return Names;
	}

	std::string DidYouMean(const std::string& Text, const std::vector<std::string>& Candidates)
	{
		const std::string Suggestion = SuggestClosest(Text, Candidates);
		return Suggestion.empty() ? std::string() : "; did you mean " + QuoteText(Suggestion) + "?";
	}

	// A "library" given as a string sets the component's patch; say why it ended up cleared.
	void CheckPatchAssignment(FKestCheckCall& Call, const FKestAsked& Params)
	{
		const FKestAsked& LibraryPath = Params["library"];
		const std::optional<std::string> Path = LibraryPath.GetString();
		if (!Path)
		{
			return;
		}
		UDMXLibrary* Library = FindLoadedLibrary(*Path);
		if (Library == nullptr)
		{
			Call.Report("not-found", LibraryPath.Path, "library: no DMX Library at " + QuoteText(*Path) + ", so the component's fixture patch was cleared"
				+ DidYouMean(*Path, GetLoadedLibraryPaths()), LibraryPath.Given, nullptr);
			return;
		}
		const FKestAsked& PatchName = Params["fixture_patch"];
		if (PatchName.bUncertain)
		{
			return;
		}
		const std::string Name = PatchName.GetString().value_or(std::string());
		if (FindEntityNamed<UDMXEntityFixturePatch>(Library, ToEngine(Name)) == nullptr)
		{
			const std::string Given = PatchName.bCounts ? "no fixture patch named " + QuoteText(Name) : std::string("no fixture patch with an empty name (fixture_patch is not given)");
			Call.Report("not-found", PatchName.Path.empty() ? std::string("fixture_patch") : PatchName.Path, "fixture_patch: " + ToUTF8(Library->GetPathName()) + " has " + Given
				+ ", so the component's fixture patch was cleared" + DidYouMean(Name, GetEntityNames<UDMXEntityFixturePatch>(Library)), PatchName.Given, nullptr);
		}
	}
}

void CheckComponentOpened(FKestCheckCall& Call, const FKestAsked& Actor, FKestCheckHandle& Handle)
{
	if (Handle.bValid)
	{
		Handle.Actor = FindActorQuietly(ToEngine(Handle.Argument));
		return;
	}
	if (Actor.LuaType != LUA_TSTRING)
	{
		return;
	}
	const std::string Message = Handle.Argument.empty() ? std::string("an empty name finds no actor")
		: "no actor of the editor world is named or labelled " + QuoteText(Handle.Argument);
	Call.Report("not-found", "actor", Message + ", so the handle is not valid: add and configure answer nil" + DidYouMean(Handle.Argument, GetActorNamesAndLabels()),
		Actor.Given, nullptr);
}

void CheckComponentMethod(FKestCheckCall& Call, const FKestCheckHandle& Handle, const std::string& Method, const std::vector<FKestAsked>& Arguments,
	const FKestCallResults& Results)
{
	if (!Handle.bValid)
	{
		Call.Report("invalid-handle", "", "dmx_component(" + QuoteText(Handle.Argument) + ") found no actor, so " + Method + " answered "
			+ (Method == "info" ? "a table with valid false" : "nil"));
		return;
	}
	AActor* Actor = Handle.Actor.Get();
	if (Actor == nullptr || Method == "info")
	{
		return;
	}
	const bool bAnswered = Results.Count >= 1 && lua_type(Results.L, Results.First) == LUA_TTABLE;
	const FKestAsked NoParams;
	if (Method == "add")
	{
		const FKestAsked& Params = Arguments.empty() ? NoParams : Arguments[0];
		if (!bAnswered)
		{
			Call.Report("not-created", "", "the engine made no DMX component, so add answered nil");
			return;
		}
		CheckPatchAssignment(Call, Params);
		return;
	}
	const FKestAsked& Params = Arguments.size() > 1 ? Arguments[1] : NoParams;
	if (!bAnswered)
	{
		const std::string Name = Arguments.empty() ? std::string() : Arguments[0].GetString().value_or(std::string());
		Call.Report("not-found", "component", "component: " + ToUTF8(Actor->GetName()) + " has no DMX component named " + QuoteText(Name)
			+ ", so configure answered nil and changed nothing" + DidYouMean(Name, GetComponentNames(Actor)), Arguments.empty() ? nullptr : Arguments[0].Given, nullptr);
		return;
	}
	CheckPatchAssignment(Call, Params);
}
