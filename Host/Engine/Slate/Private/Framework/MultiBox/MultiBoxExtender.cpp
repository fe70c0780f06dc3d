#include "Framework/MultiBox/MultiBoxExtender.h"

#include "Framework/Commands/UICommandList.h"
#include "Framework/MultiBox/MultiBoxBuilder.h"

FExtensionBase::FExtensionBase(FName InHook, EExtensionHook::Position InPosition, const TSharedPtr<FUICommandList>& InCommandList,
	const FMenuExtensionDelegate& InBuild)
	: Hook(InHook)
	, Position(InPosition)
	, CommandList(InCommandList)
	, Build(InBuild)
{
}

FExtensionBase::~FExtensionBase() = default;

TSharedRef<const FExtensionBase> FExtender::AddMenuExtension(FName ExtensionHook, EExtensionHook::Position HookPosition,
	const TSharedPtr<FUICommandList>& CommandList, const FMenuExtensionDelegate& MenuExtensionDelegate)
{
	const TSharedRef<const FExtensionBase> Extension =
		MakeShared<FExtensionBase>(ExtensionHook, HookPosition, CommandList, MenuExtensionDelegate);
	Extensions.Add(Extension);
	return Extension;
}

void FExtender::Apply(FName ExtensionHook, EExtensionHook::Position HookPosition, FMenuBuilder& MenuBuilder) const
{
	// A copy: a delegate may add and remove extensions.
	const TArray<TSharedRef<const FExtensionBase>> Present = Extensions;
	for (const TSharedRef<const FExtensionBase>& Extension : Present)
	{
		if (Extension->Hook != ExtensionHook || Extension->Position != HookPosition)
		{
			continue;
		}
		if (Extension->CommandList)
		{
			MenuBuilder.PushCommandList(Extension->CommandList.ToSharedRef());
		}
		Extension->Build.ExecuteIfBound(MenuBuilder);
		if (Extension->CommandList)
		{
			MenuBuilder.PopCommandList();
		}
	}
}

TSharedPtr<FExtender> FExtender::Combine(const TArray<TSharedPtr<FExtender>>& Extenders)
{
	const TSharedRef<FExtender> All = MakeShared<FExtender>();
	for (const TSharedPtr<FExtender>& Extender : Extenders)
	{
		if (Extender)
		{
			All->Extensions.Append(Extender->Extensions);
		}
	}
	return All;
}

FExtensibilityManager::~FExtensibilityManager() = default;

void FExtensibilityManager::AddExtender(TSharedPtr<FExtender> Extender)
{
	Extenders.AddUnique(Extender);
}

void FExtensibilityManager::RemoveExtender(TSharedPtr<FExtender> Extender)
{
	Extenders.Remove(Extender);
}

TSharedPtr<FExtender> FExtensibilityManager::GetAllExtenders() const
{
	return FExtender::Combine(Extenders);
}
