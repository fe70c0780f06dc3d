#pragma once

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"
#include "UObject/WeakObjectPtrTemplates.h"

class SWidget;
class UObject;

/** One page of settings: the configuration properties of an object under a name. */
class ISettingsSection
{
public:
	virtual ~ISettingsSection() = default;
	virtual const FName& GetName() const = 0;
	virtual const FText& GetDisplayName() const = 0;
	virtual const FText& GetDescription() const = 0;
	/** Null once the object is gone, and where a widget stands in its place. */
	virtual TWeakObjectPtr<UObject> GetSettingsObject() const = 0;
	/** Null where there is none, and once it is gone. */
	virtual TWeakPtr<SWidget> GetCustomWidget() const = 0;
	/** Writes the object's configuration. False when the object is gone. */
	virtual bool Save() = 0;
};
