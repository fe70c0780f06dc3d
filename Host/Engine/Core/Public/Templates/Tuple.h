#pragma once

#include "Templates/TypeHash.h"
#include "Templates/UnrealTemplate.h"

#include <tuple>

/** A fixed number of values of any types. Get<Index>() or structured bindings reach them; two values are a TPair. */
template <typename... Types>
struct TTuple
{
	TTuple() = default;
	template <typename... ArgTypes>
	requires(sizeof...(ArgTypes) == sizeof...(Types) && sizeof...(Types) > 0 && (std::is_constructible_v<Types, ArgTypes&&> && ...))
		TTuple(ArgTypes&&... Args)
		: Values(Forward<ArgTypes>(Args)...)
	{
	}

	template <std::size_t Index>
	auto& Get() &
	{
		return std::get<Index>(Values);
	}
	template <std::size_t Index>
	const auto& Get() const&
	{
		return std::get<Index>(Values);
	}
	template <std::size_t Index>
	auto&& Get() &&
	{
		return std::get<Index>(static_cast<std::tuple<Types...>&&>(Values));
	}

	bool operator==(const TTuple& Other) const { return Values == Other.Values; }
	friend uint32 GetTypeHash(const TTuple& Tuple)
	{
		return std::apply(
			[](const auto&... Each)
			{
				uint32 Hash = 0;
				((Hash = HashCombine(Hash, GetTypeHash(Each))), ...);
				return Hash;
			},
			Tuple.Values);
	}

	std::tuple<Types...> Values;
};

template <typename KeyType, typename ValueType>
struct TTuple<KeyType, ValueType>
{
	TTuple()
		: Key()
		, Value()
	{
	}
	TTuple(const KeyType& InKey, const ValueType& InValue)
		: Key(InKey)
		, Value(InValue)
	{
	}
	template <typename A, typename B>
	requires(std::is_constructible_v<KeyType, A&&>&& std::is_constructible_v<ValueType, B&&>) TTuple(A&& InKey, B&& InValue)
		: Key(Forward<A>(InKey))
		, Value(Forward<B>(InValue))
	{
	}

	template <std::size_t Index>
	auto& Get()
	{
		if constexpr (Index == 0)
		{
			return Key;
		}
		else
		{
			return Value;
		}
	}
	template <std::size_t Index>
	const auto& Get() const
	{
		if constexpr (Index == 0)
		{
			return Key;
		}
		else
		{
			return Value;
		}
	}

	bool operator==(const TTuple& Other) const { return Key == Other.Key && Value == Other.Value; }
	bool operator<(const TTuple& Other) const { return Key < Other.Key || (!(Other.Key < Key) && Value < Other.Value); }
	friend uint32 GetTypeHash(const TTuple& Tuple) { return HashCombine(GetTypeHash(Tuple.Key), GetTypeHash(Tuple.Value)); }

	KeyType Key;
	ValueType Value;
};

template <typename KeyType, typename ValueType>
using TPair = TTuple<KeyType, ValueType>;

// Structured bindings for tuples of other sizes; a pair binds to its two members.
namespace std
{
	template <typename A, typename B, typename C, typename... Rest>
	struct tuple_size<TTuple<A, B, C, Rest...>> : integral_constant<size_t, 3 + sizeof...(Rest)>
	{
	};
	template <size_t Index, typename A, typename B, typename C, typename... Rest>
	struct tuple_element<Index, TTuple<A, B, C, Rest...>> : tuple_element<Index, tuple<A, B, C, Rest...>>
	{
	};
}

template <std::size_t Index, typename A, typename B, typename C, typename... Rest>
auto& get(TTuple<A, B, C, Rest...>& Tuple)
{
	return Tuple.template Get<Index>();
}
template <std::size_t Index, typename A, typename B, typename C, typename... Rest>
const auto& get(const TTuple<A, B, C, Rest...>& Tuple)
{
	return Tuple.template Get<Index>();
}
template <std::size_t Index, typename A, typename B, typename C, typename... Rest>
auto&& get(TTuple<A, B, C, Rest...>&& Tuple)
{
	return static_cast<TTuple<A, B, C, Rest...>&&>(Tuple).template Get<Index>();
}
