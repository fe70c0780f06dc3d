#pragma once

#include "CoreTypes.h"

// The host has no reflection generator: the marks of a reflected class expand to nothing, or to what a hand-written
// class needs, and IMPLEMENT_HOST_CLASS (UObject/Class.h) in its source file does the rest.
#define UCLASS(...)
#define USTRUCT(...)
#define UENUM(...)
#define UINTERFACE(...)
#define UPROPERTY(...)
#define UFUNCTION(...)
#define UMETA(...)
#define UPARAM(...)
#define GENERATED_BODY() \
public: \
	static class UClass* StaticClass(); \
\
private:

enum EObjectFlags : uint32
{
	RF_NoFlags = 0x0,
	RF_Public = 0x1,
	RF_Standalone = 0x2,
	RF_Transactional = 0x8,
	RF_ClassDefaultObject = 0x10,
	RF_Transient = 0x40,
};

enum EPropertyFlags : uint64
{
	CPF_None = 0,
	/** Kept in a configuration file. */
	CPF_Config = 0x0000000000004000,
};

enum ELoadFlags : uint32
{
	LOAD_None = 0x0,
	LOAD_NoWarn = 0x2,
	LOAD_Quiet = 0x2000,
};
