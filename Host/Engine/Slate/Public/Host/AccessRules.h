#pragma once

#include "Containers/ArrayView.h"
#include "Host/HostAccess.h"
#include "Widgets/SWidget.h"

/** What the program knows of widgets that cannot say it themselves, such as those of a plug-in. */
struct FAccessRule
{
	/** Class or tag, whichever is meant: tags go before classes. */
	const TCHAR* What = nullptr;
	/** None leaves what the widget says. */
	EHostRole Role = EHostRole::None;
	/** Null leaves what is found. */
	const TCHAR* Name = nullptr;
	/** The first text inside is the name. */
	bool bNamedByFirstText = false;
	/** Texts side by side inside are pieces of one. */
	bool bJoinsTexts = false;
	/** What boxes to read from are called that stand inside without a label; null leaves them to what is beside them. */
	const TCHAR* BoxName = nullptr;
};

/** The rules in force. Game thread. */
class SLATE_API FAccessRules
{
public:
	/** @param Rules  Outlives its use; an empty view takes all rules back. */
	static void Set(TArrayView<const FAccessRule> Rules);
	/** What the window is called. */
	static void SetTitleSource(TFunction<FString()> Source);
	static FString GetTitle();
	/** Null when nothing is known. */
	static const FAccessRule* Find(const SWidget& Widget);
};
