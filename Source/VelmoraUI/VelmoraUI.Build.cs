using UnrealBuildTool;

public class VelmoraUI : ModuleRules
{
	public VelmoraUI(ReadOnlyTargetRules Target) : base(Target)
	{
		PCHUsage = PCHUsageMode.UseExplicitOrSharedPCHs;
		IncludeOrderVersion = EngineIncludeOrderVersion.Unreal5_7;

		// Named by the public headers.
		PublicDependencyModuleNames.AddRange(new string[]
		{
			"Core",
			"CoreUObject",
			"InputCore",
			"Slate",
			"SlateCore",
			"VelmoraAutoDownloadFramework",
			"VelmoraCore",
		});

		// Called by the sources alone.
		PrivateDependencyModuleNames.AddRange(new string[]
		{
			"ApplicationCore",
			"DesktopPlatform",
			"Engine",
			"Json",
			"LevelEditor",
			"Projects",
			"Settings",
			"UnrealEd",
			"VelmoraToolkit",
			"WorkspaceMenuStructure",
		});
	}
}
