#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

/** A rule that must hold for every input. What breaks it ends the run, and the input is kept. */
#define FUZZ_CHECK(Condition) \
	do \
	{ \
		if (!(Condition)) \
		{ \
			std::fprintf(stderr, "%s:%d: %s does not hold\n", __FILE__, __LINE__, #Condition); \
			std::abort(); \
		} \
	} while (false)

/** The bytes of an input, taken from its front. Behind the end everything is 0. */
class FFuzzInput
{
public:
	FFuzzInput(const uint8_t* Data, size_t Size)
		: Bytes(reinterpret_cast<const char*>(Data), Size)
	{
	}

	bool IsEmpty() const { return Bytes.empty(); }
	uint8_t TakeByte()
	{
		const uint8_t Byte = Bytes.empty() ? uint8_t(0) : static_cast<uint8_t>(Bytes.front());
		Bytes.remove_prefix(Bytes.empty() ? 0 : 1);
		return Byte;
	}
	uint32_t TakeWord()
	{
		const uint32_t Low = TakeByte();
		return Low | static_cast<uint32_t>(TakeByte()) << 8;
	}
	std::string_view TakeBytes(size_t Count)
	{
		const std::string_view Taken = Bytes.substr(0, Count);
		Bytes.remove_prefix(Taken.size());
		return Taken;
	}
	std::string_view TakeRest() { return TakeBytes(Bytes.size()); }

private:
	std::string_view Bytes;
};

/** What a reader makes of bytes is the same in one piece and in pieces of any size, which the input's first byte says. */
template <typename ReadType>
void CheckPieces(FFuzzInput Input, ReadType Read)
{
	const size_t PieceSize = 1 + Input.TakeByte() % 64;
	const std::string_view Bytes = Input.TakeRest();
	FUZZ_CHECK(Read(Bytes, PieceSize) == Read(Bytes, Bytes.size() + 1));
}
