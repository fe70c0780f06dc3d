#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"

#include <type_traits>

/**
 * Reads or writes the configuration properties of an object, which the object shows one by one:
 *
 *   void UMySettings::VisitConfigProperties(FHostConfigVisitor& Visitor)
 *   {
 *       Visitor.Property(TEXT("Language"), Language);
 *       Visitor.Property(TEXT("MaxCount"), MaxCount, 1, 100);
 *   }
 *
 * The values go to the store of Host/HostConfigStore.h: at first one in memory, gone with the process, until the
 * program puts one that writes files in its place.
 */
class COREUOBJECT_API FHostConfigVisitor
{
public:
	virtual ~FHostConfigVisitor() = default;
	virtual void Property(const TCHAR* Name, FString& Value) = 0;
	virtual void Property(const TCHAR* Name, bool& Value) = 0;
	virtual void Property(const TCHAR* Name, int32& Value) = 0;
	virtual void Property(const TCHAR* Name, float& Value) = 0;
	virtual void Property(const TCHAR* Name, double& Value) = 0;
	/** Kept as Name.Num and Name.0, Name.1, ... */
	virtual void Property(const TCHAR* Name, TArray<FString>& Value) = 0;

	/** A number that was edited by hand is brought into the range. */
	void Property(const TCHAR* Name, int32& Value, int32 Min, int32 Max);
	void Property(const TCHAR* Name, double& Value, double Min, double Max);
	/** Kept as its number. */
	template <typename TEnum>
		requires std::is_enum_v<TEnum>
	void Enum(const TCHAR* Name, TEnum& Value, TEnum First, TEnum Last)
	{
		int32 Number = static_cast<int32>(Value);
		Property(Name, Number, static_cast<int32>(First), static_cast<int32>(Last));
		Value = static_cast<TEnum>(Number);
	}
};
