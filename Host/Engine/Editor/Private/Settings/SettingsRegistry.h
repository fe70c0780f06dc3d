#pragma once

#include "CoreMinimal.h"
#include "Delegates/Delegate.h"
#include "ISettingsSection.h"
#include "Widgets/SWidget.h"

/** One section and where it stands. */
class FSettingsSection final : public ISettingsSection
{
public:
	FSettingsSection(const FName& InContainer, const FName& InCategory, const FName& InName, const FText& InDisplayName,
		const FText& InDescription, const TWeakObjectPtr<UObject>& InObject, const TSharedPtr<SWidget>& InWidget = nullptr)
		: Container(InContainer)
		, Category(InCategory)
		, Name(InName)
		, DisplayName(InDisplayName)
		, Description(InDescription)
		, Object(InObject)
		, Widget(InWidget)
	{
	}

	bool IsNamed(const FName& InContainer, const FName& InCategory, const FName& InName) const
	{
		return Container == InContainer && Category == InCategory && Name == InName;
	}
	const FName& GetContainer() const { return Container; }
	const FName& GetCategory() const { return Category; }
	virtual const FName& GetName() const override { return Name; }
	virtual const FText& GetDisplayName() const override { return DisplayName; }
	virtual const FText& GetDescription() const override { return Description; }
	virtual TWeakObjectPtr<UObject> GetSettingsObject() const override { return Object; }
	virtual TWeakPtr<SWidget> GetCustomWidget() const override { return Widget; }
	virtual bool Save() override;

private:
	const FName Container;
	const FName Category;
	const FName Name;
	const FText DisplayName;
	const FText Description;
	const TWeakObjectPtr<UObject> Object;
	const TWeakPtr<SWidget> Widget;
};

/** All sections, those of a category side by side. */
struct FSettingsRegistry
{
	DECLARE_MULTICAST_DELEGATE(FOnSectionsChanged);

	void Add(const TSharedRef<FSettingsSection>& Section);
	void Remove(const FName& Container, const FName& Category, const FName& Name);
	/** Null when there is none. */
	TSharedPtr<FSettingsSection> Find(const FName& Container, const FName& Category, const FName& Name) const;

	TArray<TSharedRef<FSettingsSection>> Sections;
	FOnSectionsChanged OnSectionsChanged;
};
