#pragma once

#include "CoreMinimal.h"

struct SDL_Window;

/** The desktop's clipboard. Game thread. */
class FSdlClipboard
{
public:
	/** Serves FHostServices' clipboard. */
	static void Install();
	/** The window whose connection is asked; null when it closes, and the clipboard goes back to the process's own. */
	static void SetWindow(SDL_Window* Window);
	/** The primary selection. */
	static void Select(const FString& Text);

private:
	static void Copy(const FString& Text);
	static void Paste(FString& OutText);
};
