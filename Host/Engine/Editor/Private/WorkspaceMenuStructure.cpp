#include "WorkspaceMenuStructure.h"

#include "WorkspaceMenuStructureModule.h"

#define LOCTEXT_NAMESPACE "WorkspaceMenuStructure"

namespace
{
	/** The fixed groups; made once, below one root. */
	class FHostWorkspaceMenuStructure final : public IWorkspaceMenuStructure
	{
	public:
		FHostWorkspaceMenuStructure()
			: Root(FWorkspaceItem::NewGroup(LOCTEXT("Root", "Menu Root")))
			, LevelEditor(Root->AddGroup(LOCTEXT("LevelEditorCategory", "Level Editor")))
			, ToolsRoot(FWorkspaceItem::NewGroup(LOCTEXT("ToolsRoot", "Tools Menu Root")))
			, Tools(Root->AddGroup(LOCTEXT("ToolsCategory", "Tools")))
			, DeveloperLog(Root->AddGroup(LOCTEXT("DeveloperToolsLogCategory", "Log")))
			, DeveloperMisc(Root->AddGroup(LOCTEXT("DeveloperToolsMiscCategory", "Miscellaneous")))
		{
		}
		TSharedRef<FWorkspaceItem> GetStructureRoot() const override { return Root; }
		TSharedRef<FWorkspaceItem> GetToolsCategory() const override { return Tools; }
		TSharedRef<FWorkspaceItem> GetDeveloperToolsLogCategory() const override { return DeveloperLog; }

	private:
		const TSharedRef<FWorkspaceItem> Root;
		const TSharedRef<FWorkspaceItem> LevelEditor;
		const TSharedRef<FWorkspaceItem> ToolsRoot;
		const TSharedRef<FWorkspaceItem> Tools;
		const TSharedRef<FWorkspaceItem> DeveloperLog;
		const TSharedRef<FWorkspaceItem> DeveloperMisc;
	};
}

IWorkspaceMenuStructure& WorkspaceMenu::GetMenuStructure()
{
	static FHostWorkspaceMenuStructure Structure;
	return Structure;
}

#undef LOCTEXT_NAMESPACE
