#pragma once

#include "Host/AgentPermissions.h"
#include "Widgets/SCompoundWidget.h"

class SVerticalBox;

/** The page "Permissions": the rules of the project that is open, each with a way to take it back. */
class SPermissionsPage : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SPermissionsPage) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;

private:
	/** Reads the rules and shows them when they differ from those shown. */
	void Refresh();
	void Rebuild();
	TSharedRef<SWidget> MakeRuleRow(const Velmora::FAgentPermission& Rule, bool bOdd);
	void Remove(const Velmora::FAgentPermission& Rule);

	TArray<Velmora::FAgentPermission> Rules;
	TSharedPtr<SVerticalBox> Rows;
	/** Why the last removal failed. */
	FText Problem;
	double LastLook = -1.0;
};
