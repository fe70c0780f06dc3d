#pragma once

/** What the editor's services mean in this program: sources open in the user's editor, assets in the desktop's program for them. */
struct FEditorServices
{
	/** Behind FHostPlatform::InstallLauncher. Game thread. */
	static void Install();
	static void Uninstall();
};
