#pragma once

#include "HAL/Platform.h"

#include <type_traits>

#define ENUM_CLASS_FLAGS(Enum) \
	inline Enum& operator|=(Enum& A, Enum B) \
	{ \
		return A = (Enum)((std::underlying_type_t<Enum>)A | (std::underlying_type_t<Enum>)B); \
	} \
	inline Enum& operator&=(Enum& A, Enum B) \
	{ \
		return A = (Enum)((std::underlying_type_t<Enum>)A & (std::underlying_type_t<Enum>)B); \
	} \
	inline Enum& operator^=(Enum& A, Enum B) \
	{ \
		return A = (Enum)((std::underlying_type_t<Enum>)A ^ (std::underlying_type_t<Enum>)B); \
	} \
	inline constexpr Enum operator|(Enum A, Enum B) \
	{ \
		return (Enum)((std::underlying_type_t<Enum>)A | (std::underlying_type_t<Enum>)B); \
	} \
	inline constexpr Enum operator&(Enum A, Enum B) \
	{ \
		return (Enum)((std::underlying_type_t<Enum>)A & (std::underlying_type_t<Enum>)B); \
	} \
	inline constexpr Enum operator^(Enum A, Enum B) \
	{ \
		return (Enum)((std::underlying_type_t<Enum>)A ^ (std::underlying_type_t<Enum>)B); \
	} \
	inline constexpr bool operator!(Enum E) \
	{ \
		return !(std::underlying_type_t<Enum>)E; \
	} \
	inline constexpr Enum operator~(Enum E) \
	{ \
		return (Enum) ~(std::underlying_type_t<Enum>)E; \
	}

template <typename Enum>
constexpr bool EnumHasAllFlags(Enum Flags, Enum Contains)
{
	using Bits = std::underlying_type_t<Enum>;
	return ((Bits)Flags & (Bits)Contains) == (Bits)Contains;
}

template <typename Enum>
constexpr bool EnumHasAnyFlags(Enum Flags, Enum Contains)
{
	using Bits = std::underlying_type_t<Enum>;
	return ((Bits)Flags & (Bits)Contains) != 0;
}

template <typename Enum>
void EnumAddFlags(Enum& Flags, Enum FlagsToAdd)
{
	using Bits = std::underlying_type_t<Enum>;
	Flags = (Enum)((Bits)Flags | (Bits)FlagsToAdd);
}

template <typename Enum>
void EnumRemoveFlags(Enum& Flags, Enum FlagsToRemove)
{
	using Bits = std::underlying_type_t<Enum>;
	Flags = (Enum)((Bits)Flags & ~(Bits)FlagsToRemove);
}
