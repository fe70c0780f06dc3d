#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Request/QuoteMarks.h"
#include "Request/RequestWords.h"
#include "Text/Utf8Text.h"

namespace Velmora
{
	/** Stands for a text in quotes or a fence. No sanitised text holds it. */
	inline constexpr char LiteralPlace = '\x01';

	/** Courtesies in front of the verb are no longer than this. */
	constexpr size_t MaxWordsBeforeVerb = 12;

	struct FLiteral
	{
		std::string Text;
		std::string Written;
	};

	/** Reads a request to change files from left to right, word by word, with quoted texts taken out. */
	class FRequestReader
	{
	public:
		explicit FRequestReader(std::string_view Text)
		{
			TakeLiteralsOut(Utf8Text::Sanitise(Text));
			Lower = Utf8Text::ToLower(Skeleton);
		}

		void SkipBlanks() { At = SkipAny(Blanks, At); }
		void SkipPunctuation() { At = SkipAny(" \t\r\n,;:.!?", At); }

		/** Length of a phrase of whole words at a place, each blank of it standing for any number; zero when it is not there. */
		size_t MatchAt(size_t Place, std::string_view Phrase) const
		{
			size_t Position = Place;
			for (const char Byte : Phrase)
			{
				if (Byte == ' ')
				{
					const size_t Start = std::exchange(Position, SkipAny(Blanks, Position));
					if (Position == Start)
					{
						return 0;
					}
				}
				else if (Position >= Lower.size() || Lower[Position++] != Byte)
				{
					return 0;
				}
			}
			// "to.md" and "in/x" are names, not words.
			const bool bEnds = EndsWordAt(Position) ||
				(std::string_view(",;:.!?").find(Lower[Position]) != std::string_view::npos && EndsWordAt(Position + 1));
			return bEnds ? Position - Place : 0;
		}

		template <size_t Size>
		size_t MatchLongest(const std::string_view (&Phrases)[Size], size_t Place) const
		{
			size_t Longest = 0;
			for (const std::string_view Phrase : Phrases)
			{
				Longest = std::max(Longest, MatchAt(Place, Phrase));
			}
			return Longest;
		}

		template <size_t Size>
		size_t MatchLongest(const std::string_view (&Phrases)[Size]) const
		{
			return MatchLongest(Phrases, At);
		}

		template <size_t Size>
		bool Take(const std::string_view (&Phrases)[Size])
		{
			SkipBlanks();
			const size_t Length = MatchLongest(Phrases);
			At += Length;
			SkipBlanks();
			return Length > 0;
		}

		bool TakeLiteral(std::string& OutText)
		{
			SkipBlanks();
			if (At >= Skeleton.size() || Skeleton[At] != LiteralPlace)
			{
				return false;
			}
			OutText = LiteralAt(At).Text;
			++At;
			return true;
		}

		/** Nothing is left but courtesies. */
		bool IsAtEnd()
		{
			do
			{
				SkipPunctuation();
			} while (Take(ChangeClosers) || Take(ClosingCourtesies));
			return At >= Skeleton.size();
		}

		/** What stands between two places, as the user wrote it, without blanks around. */
		std::string Written(size_t From, size_t To) const
		{
			std::string Out;
			for (size_t Index = From; Index < To; ++Index)
			{
				Out += Skeleton[Index] == LiteralPlace ? LiteralAt(Index).Written : std::string(1, Skeleton[Index]);
			}
			return std::string(Utf8Text::Trim(Out));
		}

		/** A text in quotes, or else the words between two places. */
		std::string Meant(size_t From, size_t To, bool& bOutIsLiteral) const
		{
			From = std::min(SkipAny(Blanks, From), To);
			while (To > From && Utf8Text::IsBlank(Skeleton[To - 1]))
			{
				--To;
			}
			bOutIsLiteral = To == From + 1 && Skeleton[From] == LiteralPlace;
			return bOutIsLiteral ? LiteralAt(From).Text : Written(From, To);
		}

		bool FindVerb(EVerb& OutVerb)
		{
			size_t Words = 0;
			for (SkipBlanks(); At < Skeleton.size() && Words < MaxWordsBeforeVerb && Skeleton[At] != LiteralPlace; ++Words)
			{
				size_t Longest = 0;
				for (const FVerbRow& Row : Verbs)
				{
					const size_t Length = MatchAt(At, Row.Phrase);
					if (Length > Longest)
					{
						Longest = Length;
						OutVerb = Row.Verb;
					}
				}
				if (Longest > 0)
				{
					At += Longest;
					SkipBlanks();
					return true;
				}
				At = SkipWord(At);
				SkipBlanks();
			}
			return false;
		}

		/**
		 * Takes a file's name, or words that point at the attached one, for which the name is empty. On false nothing
		 * is taken.
		 */
		bool TakeFile(std::string& OutName)
		{
			const size_t Start = At;
			OutName.clear();
			bool bIsNamed = false;
			for (;;)
			{
				SkipBlanks();
				const size_t Opener = MatchLongest(FileOpeners);
				if (Opener == 0)
				{
					break;
				}
				const size_t Pointer = MatchLongest(PointingPhrases);
				if (Pointer >= Opener && !HasFileAfter(At + Pointer))
				{
					At += Pointer;
					return true;
				}
				bIsNamed = bIsNamed || MatchLongest(NamingOpeners) == Opener;
				At += Opener;
			}
			if (TakeLiteral(OutName))
			{
				OutName = Utf8Text::Trim(OutName);
				if (!OutName.empty() && OutName.find('\n') == std::string::npos)
				{
					return true;
				}
			}
			else if (const size_t Pointer = MatchLongest(PointingPhrases))
			{
				At += Pointer;
				return true;
			}
			else if (MatchLongest(SeparatorWords) == 0)
			{
				const size_t NameStart = At;
				OutName = ReadName(At);
				if (!OutName.empty() && (bIsNamed || LooksLikeFile(OutName)))
				{
					At = NameStart + OutName.size();
					return true;
				}
			}
			OutName.clear();
			At = Start;
			return false;
		}

		size_t GetPlace() const { return At; }
		void SetPlace(size_t Place) { At = Place; }
		size_t GetEnd() const { return Skeleton.size(); }
		bool IsAt(char Byte) const { return At < Skeleton.size() && Skeleton[At] == Byte; }

	private:
		static constexpr std::string_view Blanks = " \t\r\n";

		/** The first place from there on that holds none of the bytes. */
		size_t SkipAny(std::string_view Bytes, size_t Place) const
		{
			return std::min(Skeleton.find_first_not_of(Bytes, Place), Skeleton.size());
		}

		bool EndsWordAt(size_t Place) const
		{
			return Place >= Skeleton.size() || Utf8Text::IsBlank(Skeleton[Place]) || Skeleton[Place] == LiteralPlace;
		}

		size_t SkipWord(size_t Place) const
		{
			while (!EndsWordAt(Place))
			{
				++Place;
			}
			return Place;
		}

		/** "this file" points, unless a name follows: "this file notes.md". */
		bool HasFileAfter(size_t Place) const
		{
			Place = SkipAny(Blanks, Place);
			const std::string Name = ReadName(Place);
			return !Name.empty() &&
				(LooksLikeFile(Name) ||
					(MatchLongest(SeparatorWords, Place) == 0 && MatchLongest(ChangeClosers, Place) == 0 &&
						MatchLongest(ClosingCourtesies, Place) == 0));
		}

		/** The word at a place, without the punctuation behind it. */
		std::string ReadName(size_t Place) const
		{
			std::string_view Name = std::string_view(Skeleton).substr(Place, SkipWord(Place) - Place);
			Name = Name.substr(0, Name.find_last_not_of(",;:!?") + 1);
			const char Before = Name.size() > 1 ? Name[Name.size() - 2] : '.';
			Name.remove_suffix(Before != '.' && Before != '/' && Name.back() == '.' ? 1 : 0);
			return std::string(Name);
		}

		static bool LooksLikeFile(std::string_view Name)
		{
			return Name.find_first_of("./\\") != std::string_view::npos || IsOneOf(Utf8Text::ToLower(Name), BareFileNames);
		}

		const FLiteral& LiteralAt(size_t Place) const
		{
			return Literals[static_cast<size_t>(
				std::lower_bound(LiteralPlaces.begin(), LiteralPlaces.end(), Place) - LiteralPlaces.begin())];
		}

		void TakeLiteralsOut(const std::string& Text)
		{
			// A mark whose partner is missing from here on is not looked for again.
			bool bIsUnclosed[std::size(QuoteMarks)] = {};
			for (size_t Position = 0; Position < Text.size();)
			{
				size_t End = Position;
				for (size_t Index = 0; Index < std::size(QuoteMarks) && End == Position; ++Index)
				{
					const FQuoteMarks& Quotes = QuoteMarks[Index];
					const bool bIsInWord = Position > 0 && Utf8Text::IsWordByte(Text[Position - 1]) && Quotes.Open == "'";
					if (!bIsUnclosed[Index] && !bIsInWord && Utf8Text::StartsWith(std::string_view(Text).substr(Position), Quotes.Open))
					{
						End = ReadLiteral(Text, Position, Quotes, bIsUnclosed[Index]);
					}
				}
				if (End == Position)
				{
					Skeleton += Text[Position++];
					continue;
				}
				Literals.back().Written = Text.substr(Position, End - Position);
				LiteralPlaces.push_back(Skeleton.size());
				Skeleton += LiteralPlace;
				Position = End;
			}
		}

		/** Gives the place behind the literal, or Position when it does not end. */
		size_t ReadLiteral(const std::string& Text, size_t Position, const FQuoteMarks& Quotes, bool& bOutIsUnclosed)
		{
			size_t From = Position + Quotes.Open.size();
			const size_t LineEnd = Text.find('\n', From);
			size_t Close = FindClosingMark(Text, From, Quotes.Close);
			if (Quotes.bIsFence && LineEnd < Close)
			{
				// A fence: what stands behind its first mark is the language, and its last one stands on a line of its own.
				From = LineEnd + 1;
				Close = Text.find('\n' + std::string(Quotes.Close), LineEnd);
				Close = Close == std::string::npos ? Close : Close + 1;
			}
			if (Close == std::string::npos)
			{
				bOutIsUnclosed = true;
				return Position;
			}
			Literals.push_back({ Text.substr(From, Close - From), {} });
			return Close + Quotes.Close.size();
		}

		std::string Skeleton;
		std::string Lower;
		std::vector<FLiteral> Literals;
		std::vector<size_t> LiteralPlaces;
		size_t At = 0;
	};
}
