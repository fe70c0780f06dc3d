#include "Host/AccessRules.h"

#include "Containers/Map.h"

namespace
{
	struct FRuleState
	{
		TMap<FName, const FAccessRule*> ByName;
		TFunction<FString()> TitleSource;
	};

	FRuleState& GetState()
	{
		static FRuleState State;
		return State;
	}
}

void FAccessRules::Set(TArrayView<const FAccessRule> Rules)
{
	GetState().ByName.Reset();
	for (const FAccessRule& Rule : Rules)
	{
		GetState().ByName.Add(FName(Rule.What), &Rule);
	}
}

void FAccessRules::SetTitleSource(TFunction<FString()> Source)
{
	GetState().TitleSource = MoveTemp(Source);
}

FString FAccessRules::GetTitle()
{
	return GetState().TitleSource ? GetState().TitleSource() : FString();
}

const FAccessRule* FAccessRules::Find(const SWidget& Widget)
{
	const TMap<FName, const FAccessRule*>& Rules = GetState().ByName;
	if (!Widget.GetTag().IsNone())
	{
		if (const FAccessRule* const ByTag = Rules.FindRef(Widget.GetTag()))
		{
			return ByTag;
		}
	}
	return Rules.FindRef(Widget.GetType());
}
