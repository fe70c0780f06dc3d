#pragma once

#include "CoreMinimal.h"
#include "Modules/ModuleInterface.h"
#include "Templates/SharedPointer.h"
#include "UObject/WeakObjectPtrTemplates.h"

class ISettingsSection;
class SWidget;
class UObject;

/**
 * The module "Settings": objects whose configuration the user edits on a page, found by container ("Project"), category
 * ("Plugins") and section. Game thread.
 */
class ISettingsModule : public IModuleInterface
{
public:
	/** A section of the same three names is replaced. Null without an object. */
	virtual TSharedPtr<ISettingsSection> RegisterSettings(const FName& ContainerName, const FName& CategoryName, const FName& SectionName,
		const FText& DisplayName, const FText& Description, const TWeakObjectPtr<UObject>& SettingsObject) = 0;
	/** A page of its own in place of an object's properties. Whoever registers it keeps the widget alive. */
	virtual TSharedPtr<ISettingsSection> RegisterSettings(const FName& ContainerName, const FName& CategoryName, const FName& SectionName,
		const FText& DisplayName, const FText& Description, const TSharedRef<SWidget>& CustomWidget) = 0;
	virtual void UnregisterSettings(const FName& ContainerName, const FName& CategoryName, const FName& SectionName) = 0;
	/** Opens the page, or brings it to the front, at a section; at the first one when there is none of these names. */
	virtual void ShowViewer(const FName& ContainerName, const FName& CategoryName, const FName& SectionName) = 0;
};
