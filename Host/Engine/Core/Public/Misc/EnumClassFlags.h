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
