using UnrealBuildTool;

public class Kest_DMXEngine_Integration : ModuleRules
{
	public Kest_DMXEngine_Integration(ReadOnlyTargetRules Target) : base(Target)
	{
		PCHUsage = PCHUsageMode.UseExplicitOrSharedPCHs;

		// The module's sources include each other by folder ("module/...", "library/...").
		PrivateIncludePaths.Add(ModuleDirectory);

		PrivateDependencyModuleNames.AddRange(new string[]
		{
			"Core",
			"CoreUObject",
			"Engine",
			"UnrealEd",
			"DMXRuntime",
			"DMXProtocol",
			"VorlithAI",
		});

		// Every argument of every Lua global and method is type-checked by sol2.
		PrivateDefinitions.Add("SOL_ALL_SAFETIES_ON=1");
	}
}
