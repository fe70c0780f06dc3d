#pragma once

#include "HAL/Platform.h"

#include <type_traits>

/** Mixes two hashes into one that depends on their order. */
constexpr uint32 HashCombine(uint32 A, uint32 B)
{
	A ^= B + 0x9e3779b9u + (A << 6) + (A >> 2);
	return A;
}

constexpr uint32 GetTypeHash(bool Value)
{
	return Value ? 1u : 0u;
}
constexpr uint32 GetTypeHash(char Value)
{
	return (uint32)Value;
}
constexpr uint32 GetTypeHash(TCHAR Value)
{
	return (uint32)Value;
}
constexpr uint32 GetTypeHash(int8 Value)
{
	return (uint32)Value;
}
constexpr uint32 GetTypeHash(uint8 Value)
{
	return (uint32)Value;
}
constexpr uint32 GetTypeHash(int16 Value)
{
	return (uint32)Value;
}
constexpr uint32 GetTypeHash(uint16 Value)
{
	return (uint32)Value;
}
constexpr uint32 GetTypeHash(int32 Value)
{
	return (uint32)Value;
}
constexpr uint32 GetTypeHash(uint32 Value)
{
	return Value;
}
constexpr uint32 GetTypeHash(uint64 Value)
{
	return (uint32)Value + (uint32)(Value >> 32) * 23u;
}
constexpr uint32 GetTypeHash(int64 Value)
{
	return GetTypeHash((uint64)Value);
}
constexpr uint32 GetTypeHash(long Value)
{
	return GetTypeHash((uint64)Value);
}
constexpr uint32 GetTypeHash(unsigned long Value)
{
	return GetTypeHash((uint64)Value);
}
inline uint32 GetTypeHash(float Value)
{
	Value = Value == 0.0f ? 0.0f : Value; // Both zeros are equal, so they hash alike.
	uint32 Bits;
	__builtin_memcpy(&Bits, &Value, sizeof(Bits));
	return Bits;
}
inline uint32 GetTypeHash(double Value)
{
	Value = Value == 0.0 ? 0.0 : Value;
	uint64 Bits;
	__builtin_memcpy(&Bits, &Value, sizeof(Bits));
	return GetTypeHash(Bits);
}

/** Address of an object. The low bits of addresses are alike, so they are mixed. */
inline uint32 PointerHash(const void* Key)
{
	const uint64 Address = (uint64) reinterpret_cast<UPTRINT>(Key);
	return (uint32)((Address * 0x9e3779b97f4a7c15ull) >> 32);
}

template <typename T>
uint32 GetTypeHash(T* Value)
{
	return PointerHash((const void*)Value);
}

template <typename EnumType>
requires std::is_enum_v<EnumType>
constexpr uint32 GetTypeHash(EnumType Value)
{
	return GetTypeHash((std::underlying_type_t<EnumType>)Value);
}
