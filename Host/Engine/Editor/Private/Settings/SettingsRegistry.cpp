#include "Settings/SettingsRegistry.h"

#include "UObject/Object.h"

bool FSettingsSection::Save()
{
	UObject* const Present = Object.Get();
	if (!Present)
	{
		return false;
	}
	Present->SaveConfig();
	return true;
}

TSharedPtr<FSettingsSection> FSettingsRegistry::Find(const FName& Container, const FName& Category, const FName& Name) const
{
	const TSharedRef<FSettingsSection>* Found =
		Sections.FindByPredicate([&](const TSharedRef<FSettingsSection>& Section) { return Section->IsNamed(Container, Category, Name); });
	return Found ? TSharedPtr<FSettingsSection>(*Found) : nullptr;
}

void FSettingsRegistry::Add(const TSharedRef<FSettingsSection>& Section)
{
	const auto IsSame = [&Section](const TSharedRef<FSettingsSection>& Other)
	{ return Other->IsNamed(Section->GetContainer(), Section->GetCategory(), Section->GetName()); };
	const int32 Present = Sections.IndexOfByPredicate(IsSame);
	if (Present != INDEX_NONE)
	{
		Sections[Present] = Section;
	}
	else
	{
		int32 Place = Sections.Num();
		for (int32 Index = 0; Index < Sections.Num(); ++Index)
		{
			if (Sections[Index]->GetContainer() == Section->GetContainer() && Sections[Index]->GetCategory() == Section->GetCategory())
			{
				Place = Index + 1;
			}
		}
		Sections.Insert(Section, Place);
	}
	OnSectionsChanged.Broadcast();
}

void FSettingsRegistry::Remove(const FName& Container, const FName& Category, const FName& Name)
{
	const int32 Count =
		Sections.RemoveAll([&](const TSharedRef<FSettingsSection>& Section) { return Section->IsNamed(Container, Category, Name); });
	if (Count > 0)
	{
		OnSectionsChanged.Broadcast();
	}
}
