#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "Delegates/Delegate.h"
#include "Templates/Function.h"

#include <type_traits>

enum EConsoleVariableFlags : uint32
{
	ECVF_Default = 0x0,
	ECVF_Cheat = 0x1,
	/** The console cannot change it. */
	ECVF_ReadOnly = 0x4,
	ECVF_Unregistered = 0x8,
	ECVF_RenderThreadSafe = 0x20,
	/** Who set it last. All are equal here: the last one wins. */
	ECVF_SetByMask = 0xff000000,
	ECVF_SetByConstructor = 0x00000000,
	ECVF_SetByProjectSetting = 0x04000000,
	ECVF_SetByCommandline = 0x0a000000,
	ECVF_SetByCode = 0x0c000000,
	ECVF_SetByConsole = 0x0d000000,
};

class IConsoleVariable;
class IConsoleCommand;

DECLARE_DELEGATE(FConsoleCommandDelegate);
DECLARE_DELEGATE_OneParam(FConsoleCommandWithArgsDelegate, const TArray<FString>&);

/** Something with a name on the console. Owned by the console manager. */
class CORE_API IConsoleObject
{
public:
	virtual ~IConsoleObject() = default;
	virtual const TCHAR* GetHelp() const = 0;
	virtual EConsoleVariableFlags GetFlags() const = 0;
	virtual IConsoleVariable* AsVariable() { return nullptr; }
	virtual IConsoleCommand* AsCommand() { return nullptr; }
	bool TestFlags(EConsoleVariableFlags Flags) const { return (uint32(GetFlags()) & uint32(Flags)) != 0; }
};

/** A named value. Reads on any thread; sets on the game thread, since they call the change delegates. */
class CORE_API IConsoleVariable : public IConsoleObject
{
public:
	/**
	 * Numbers take what FCString::Atoi and Atof make of the text; "true", "on", "yes" count as 1 and their opposites
	 * as 0. Setting an equal value calls no delegate.
	 */
	virtual void Set(const TCHAR* Value, EConsoleVariableFlags SetBy = ECVF_SetByCode) = 0;
	virtual void Set(bool Value, EConsoleVariableFlags SetBy = ECVF_SetByCode) = 0;
	virtual void Set(int32 Value, EConsoleVariableFlags SetBy = ECVF_SetByCode) = 0;
	virtual void Set(float Value, EConsoleVariableFlags SetBy = ECVF_SetByCode) = 0;

	virtual bool GetBool() const = 0;
	virtual int32 GetInt() const = 0;
	virtual float GetFloat() const = 0;
	/** Booleans read "true" and "false". */
	virtual FString GetString() const = 0;

	virtual bool IsVariableBool() const { return false; }
	virtual bool IsVariableInt() const { return false; }
	virtual bool IsVariableFloat() const { return false; }
	virtual bool IsVariableString() const { return false; }

	IConsoleVariable* AsVariable() override { return this; }
};

class CORE_API IConsoleCommand : public IConsoleObject
{
public:
	virtual bool Execute(const TArray<FString>& Args) = 0;
	IConsoleCommand* AsCommand() override { return this; }
};

/** The console's names. Letter case of names is ignored, their first spelling stays. Any thread. */
class CORE_API IConsoleManager
{
public:
	static IConsoleManager& Get();
	virtual ~IConsoleManager() = default;

	/** A name that is registered already with the same kind gives the existing variable, with its value; with another kind, nullptr. */
	virtual IConsoleVariable* RegisterConsoleVariable(const TCHAR* Name, bool Default, const TCHAR* Help, uint32 Flags = ECVF_Default) = 0;
	virtual IConsoleVariable* RegisterConsoleVariable(const TCHAR* Name, int32 Default, const TCHAR* Help, uint32 Flags = ECVF_Default) = 0;
	virtual IConsoleVariable* RegisterConsoleVariable(const TCHAR* Name, float Default, const TCHAR* Help, uint32 Flags = ECVF_Default) = 0;
	virtual IConsoleVariable* RegisterConsoleVariable(
		const TCHAR* Name, const FString& Default, const TCHAR* Help, uint32 Flags = ECVF_Default) = 0;
	IConsoleVariable* RegisterConsoleVariable(const TCHAR* Name, const TCHAR* Default, const TCHAR* Help, uint32 Flags = ECVF_Default)
	{
		return RegisterConsoleVariable(Name, FString(Default), Help, Flags);
	}
	virtual IConsoleCommand* RegisterConsoleCommand(
		const TCHAR* Name, const TCHAR* Help, const FConsoleCommandDelegate& Command, uint32 Flags = ECVF_Default) = 0;
	virtual IConsoleCommand* RegisterConsoleCommand(
		const TCHAR* Name, const TCHAR* Help, const FConsoleCommandWithArgsDelegate& Command, uint32 Flags = ECVF_Default) = 0;

	virtual IConsoleVariable* FindConsoleVariable(const TCHAR* Name, bool bTrackFrequentCalls = true) const = 0;
	virtual IConsoleObject* FindConsoleObject(const TCHAR* Name, bool bTrackFrequentCalls = true) const = 0;
	/** Sorted by name. */
	virtual void ForEachConsoleObjectThatStartsWith(
		TFunctionRef<void(const TCHAR* Name, IConsoleObject* Object)> Visitor, const TCHAR* Prefix = TEXT("")) const = 0;
	/**
	 * Once for each registration; the last one takes the name away.
	 * @param bKeepState  The value comes back when the name is registered again.
	 */
	virtual void UnregisterConsoleObject(IConsoleObject* Object, bool bKeepState = true) = 0;
};

/** Registers a console object for as long as it lives. */
class CORE_API FAutoConsoleObject
{
public:
	FAutoConsoleObject(const FAutoConsoleObject&) = delete;
	FAutoConsoleObject& operator=(const FAutoConsoleObject&) = delete;
	virtual ~FAutoConsoleObject();

protected:
	explicit FAutoConsoleObject(IConsoleObject* InTarget)
		: Target(InTarget)
	{
	}
	IConsoleVariable* AsVariable() { return Target ? Target->AsVariable() : nullptr; }
	const IConsoleVariable* AsVariable() const { return const_cast<FAutoConsoleObject*>(this)->AsVariable(); }

private:
	IConsoleObject* Target;
};

class CORE_API FAutoConsoleVariable : public FAutoConsoleObject
{
public:
	template <typename T>
	FAutoConsoleVariable(const TCHAR* Name, const T& Default, const TCHAR* Help, uint32 Flags = ECVF_Default)
		: FAutoConsoleObject(IConsoleManager::Get().RegisterConsoleVariable(Name, Default, Help, Flags))
	{
	}
	IConsoleVariable& operator*() { return *AsVariable(); }
	IConsoleVariable* operator->() { return AsVariable(); }
};

class CORE_API FAutoConsoleCommand : public FAutoConsoleObject
{
public:
	FAutoConsoleCommand(const TCHAR* Name, const TCHAR* Help, const FConsoleCommandDelegate& Command, uint32 Flags = ECVF_Default)
		: FAutoConsoleObject(IConsoleManager::Get().RegisterConsoleCommand(Name, Help, Command, Flags))
	{
	}
};

/** A console variable of type bool, int32, float or FString. Reading it is cheap. */
template <typename T>
class TAutoConsoleVariable : public FAutoConsoleObject
{
	static_assert(std::is_same_v<T, bool> || std::is_same_v<T, int32> || std::is_same_v<T, float> || std::is_same_v<T, FString>);

public:
	TAutoConsoleVariable(const TCHAR* Name, const T& Default, const TCHAR* Help, uint32 Flags = ECVF_Default)
		: FAutoConsoleObject(IConsoleManager::Get().RegisterConsoleVariable(Name, Default, Help, Flags))
	{
	}

	T GetValueOnGameThread() const { return GetValueOnAnyThread(); }
	T GetValueOnAnyThread(bool bForceGameThread = false) const
	{
		const IConsoleVariable* Variable = this->AsVariable();
		if constexpr (std::is_same_v<T, bool>)
		{
			return Variable && Variable->GetBool();
		}
		else if constexpr (std::is_same_v<T, int32>)
		{
			return Variable ? Variable->GetInt() : 0;
		}
		else if constexpr (std::is_same_v<T, float>)
		{
			return Variable ? Variable->GetFloat() : 0.0f;
		}
		else
		{
			return Variable ? Variable->GetString() : FString();
		}
	}

	using FAutoConsoleObject::AsVariable;
	IConsoleVariable& operator*() { return *this->AsVariable(); }
	IConsoleVariable* operator->() { return this->AsVariable(); }
};
