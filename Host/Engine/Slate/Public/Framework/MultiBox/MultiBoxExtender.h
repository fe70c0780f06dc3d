#pragma once

#include "CoreMinimal.h"
#include "Delegates/Delegate.h"
#include "Templates/SharedPointer.h"

class FMenuBuilder;
class FUICommandList;

/** Where an extension stands, seen from the hook: outside of it, or behind the heading of its section. */
namespace EExtensionHook
{
	enum Position
	{
		Before,
		After,
		First,
	};
}

DECLARE_DELEGATE_OneParam(FMenuExtensionDelegate, FMenuBuilder&)

	/** What one AddMenuExtension added; serves to take it away again. */
	class SLATE_API FExtensionBase
{
public:
	FExtensionBase(FName InHook, EExtensionHook::Position InPosition, const TSharedPtr<FUICommandList>& InCommandList,
		const FMenuExtensionDelegate& InBuild);
	virtual ~FExtensionBase();

private:
	friend class FExtender;

	FName Hook;
	EExtensionHook::Position Position;
	TSharedPtr<FUICommandList> CommandList;
	FMenuExtensionDelegate Build;
};

/** Adds entries to menus of others, at places that have a name. Menus ask when they are opened. Game thread. */
class SLATE_API FExtender
{
public:
	/** @param CommandList  For commands that the delegate adds; may be null. */
	TSharedRef<const FExtensionBase> AddMenuExtension(FName ExtensionHook, EExtensionHook::Position HookPosition,
		const TSharedPtr<FUICommandList>& CommandList, const FMenuExtensionDelegate& MenuExtensionDelegate);
	/** Calls the delegates of a place in the order in which they were added. */
	void Apply(FName ExtensionHook, EExtensionHook::Position HookPosition, FMenuBuilder& MenuBuilder) const;
	/** One that offers what all offer; null ones are left out. */
	static TSharedPtr<FExtender> Combine(const TArray<TSharedPtr<FExtender>>& Extenders);

private:
	TArray<TSharedRef<const FExtensionBase>> Extensions;
};

/** The extenders that a menu's owner was given. Game thread. */
class SLATE_API FExtensibilityManager
{
public:
	virtual ~FExtensibilityManager();

	virtual void AddExtender(TSharedPtr<FExtender> Extender);
	virtual void RemoveExtender(TSharedPtr<FExtender> Extender);
	/** Never null. */
	virtual TSharedPtr<FExtender> GetAllExtenders() const;

private:
	TArray<TSharedPtr<FExtender>> Extenders;
};
