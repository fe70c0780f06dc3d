#pragma once

#include "Framework/Commands/UICommandInfo.h"

#include <typeinfo>

/** Keeps the one set of commands of each class for all libraries of the process. Game thread. */
class SLATE_API FHostCommandSets
{
public:
	/** Null when the class is not registered. */
	static TSharedPtr<void> Find(const char* ClassName);
	static void Set(const char* ClassName, TSharedPtr<void> Commands);
};

/**
 * Base of a set of commands, which derives with itself as the argument, makes its commands in RegisterCommands and lives
 * between Register and Unregister. Game thread.
 */
template <typename CommandContextType>
class TCommands
{
public:
	TCommands(FName ContextName, const FText& ContextDescription, FName ContextParent, FName StyleSetName)
		: Context(MakeShared<FBindingContext>(ContextName, ContextDescription, ContextParent, StyleSetName))
	{
	}
	virtual ~TCommands() = default;

	static void Register()
	{
		if (!IsRegistered())
		{
			const TSharedRef<CommandContextType> Commands = MakeShared<CommandContextType>();
			FHostCommandSets::Set(typeid(CommandContextType).name(), TSharedPtr<void>(Commands.ToSharedPtr()));
			Commands->RegisterCommands();
		}
	}
	static void Unregister() { FHostCommandSets::Set(typeid(CommandContextType).name(), nullptr); }
	static bool IsRegistered() { return FHostCommandSets::Find(typeid(CommandContextType).name()).IsValid(); }
	/** Must be registered. */
	static const CommandContextType& Get()
	{
		const TSharedPtr<void> Found = FHostCommandSets::Find(typeid(CommandContextType).name());
		check(Found.IsValid());
		return *static_cast<CommandContextType*>(Found.Get());
	}

	FName GetContextName() const { return Context->GetContextName(); }
	FBindingContext* GetContext() { return &Context.Get(); }
	const TSharedRef<FBindingContext>& GetBindingContext() const { return Context; }

protected:
	virtual void RegisterCommands() = 0;

private:
	const TSharedRef<FBindingContext> Context;
};
