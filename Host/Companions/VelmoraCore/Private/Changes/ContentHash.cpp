#include "Changes/ContentHash.h"

#include <array>
#include <bit>
#include <cstdint>

namespace Velmora
{
	namespace
	{
		constexpr size_t BlockBytes = 64;

		// clang-format off
		constexpr std::array<uint32_t, 64> RoundConstants = {
			0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
			0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
			0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
			0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
			0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
			0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
			0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
			0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2,
		};
		// clang-format on

		using FHashState = std::array<uint32_t, 8>;

		uint32_t ReadBigEndian(const unsigned char* Bytes)
		{
			return uint32_t(Bytes[0]) << 24 | uint32_t(Bytes[1]) << 16 | uint32_t(Bytes[2]) << 8 | uint32_t(Bytes[3]);
		}

		void MixBlock(FHashState& State, const unsigned char* Block)
		{
			std::array<uint32_t, 64> Schedule;
			for (size_t Index = 0; Index < 16; ++Index)
			{
				Schedule[Index] = ReadBigEndian(Block + Index * 4);
			}
			for (size_t Index = 16; Index < 64; ++Index)
			{
				const uint32_t A = Schedule[Index - 15];
				const uint32_t B = Schedule[Index - 2];
				Schedule[Index] = Schedule[Index - 16] + (std::rotr(A, 7) ^ std::rotr(A, 18) ^ A >> 3) + Schedule[Index - 7] +
					(std::rotr(B, 17) ^ std::rotr(B, 19) ^ B >> 10);
			}
			FHashState W = State;
			for (size_t Index = 0; Index < 64; ++Index)
			{
				const uint32_t Choice = (W[4] & W[5]) ^ (~W[4] & W[6]);
				const uint32_t Majority = (W[0] & W[1]) ^ (W[0] & W[2]) ^ (W[1] & W[2]);
				const uint32_t First = W[7] + (std::rotr(W[4], 6) ^ std::rotr(W[4], 11) ^ std::rotr(W[4], 25)) + Choice +
					RoundConstants[Index] + Schedule[Index];
				const uint32_t Second = (std::rotr(W[0], 2) ^ std::rotr(W[0], 13) ^ std::rotr(W[0], 22)) + Majority;
				W = { First + Second, W[0], W[1], W[2], W[3] + First, W[4], W[5], W[6] };
			}
			for (size_t Index = 0; Index < State.size(); ++Index)
			{
				State[Index] += W[Index];
			}
		}
	}

	std::string HashContent(std::string_view Bytes)
	{
		FHashState State = { 0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19 };
		const size_t WholeBytes = Bytes.size() / BlockBytes * BlockBytes;
		const unsigned char* const Data = reinterpret_cast<const unsigned char*>(Bytes.data());
		for (size_t Offset = 0; Offset < WholeBytes; Offset += BlockBytes)
		{
			MixBlock(State, Data + Offset);
		}

		// The rest is closed by a set bit and the length in bits, in one block more or two.
		std::string Tail(Bytes.substr(WholeBytes));
		Tail.push_back('\x80');
		Tail.resize((Tail.size() + 8 + BlockBytes - 1) / BlockBytes * BlockBytes - 8, '\0');
		for (int Shift = 56; Shift >= 0; Shift -= 8)
		{
			Tail.push_back(static_cast<char>(uint64_t(Bytes.size()) * 8 >> Shift));
		}
		for (size_t Offset = 0; Offset < Tail.size(); Offset += BlockBytes)
		{
			MixBlock(State, reinterpret_cast<const unsigned char*>(Tail.data()) + Offset);
		}

		std::string Text;
		for (const uint32_t Word : State)
		{
			for (int Shift = 28; Shift >= 0; Shift -= 4)
			{
				Text.push_back("0123456789abcdef"[Word >> Shift & 15]);
			}
		}
		return Text;
	}
}
