#include "Request/ChangeRequest.h"

#include "Request/RequestReader.h"

namespace Velmora
{
	namespace
	{
		/** A file named at the end of a request is looked for in no more than this. */
		constexpr size_t MaxClosingFileBytes = 600;

		/** What stands between two places: to the letter where it is quoted, else as a line. */
		std::string ReadLines(const FRequestReader& Reader, size_t From, size_t To)
		{
			bool bIsLiteral = false;
			const std::string Text = Reader.Meant(From, To, bIsLiteral);
			return bIsLiteral || Text.empty() || Text.back() == '\n' ? Text : Text + '\n';
		}

		/** All that is left is the content. False when nothing is. */
		bool TakeContent(FRequestReader& Reader, std::string& OutContent)
		{
			Reader.SkipPunctuation();
			Reader.Take(ContentSeparators);
			Reader.Take(ContentOpeners);
			Reader.SkipPunctuation();
			const size_t Start = Reader.GetPlace();
			std::string Literal;
			if (Reader.TakeLiteral(Literal) && Reader.IsAtEnd())
			{
				OutContent = Literal;
				return true;
			}
			OutContent = ReadLines(Reader, Start, Reader.GetEnd());
			return !OutContent.empty();
		}

		FChangeRequest MakeRequest(EChangeRequest Kind, const std::string& File, const std::string& Content = std::string())
		{
			FChangeRequest Request;
			Request.Kind = Kind;
			Request.Content = Content;
			if (!File.empty())
			{
				Request.Files.push_back(File);
			}
			return Request;
		}

		/** What is left is the content of the file. Unclear when nothing is. */
		FChangeRequest ReadContentOf(FRequestReader& Reader, EChangeRequest Kind, const std::string& File)
		{
			FChangeRequest Request = MakeRequest(Kind, File);
			return TakeContent(Reader, Request.Content) ? Request : FChangeRequest();
		}

		/** The last place from which on a phrase and a file's name end the request. Npos when there is none; the reader stays. */
		template <size_t Size>
		size_t FindClosingFile(FRequestReader& Reader, const std::string_view (&Phrases)[Size], std::string& OutFile)
		{
			const size_t From = Reader.GetPlace();
			size_t Found = std::string::npos;
			const size_t Last = Reader.GetEnd();
			for (size_t Place = Last; Place-- > From && Found == std::string::npos && Last - Place < MaxClosingFileBytes;)
			{
				Reader.SetPlace(Place);
				const bool bBeginsWord = Place == From || Reader.IsAt(' ') || Reader.IsAt('\n') || Reader.IsAt('\t');
				if (bBeginsWord && Reader.Take(Phrases) && Reader.TakeFile(OutFile) && Reader.IsAtEnd())
				{
					Found = Place;
				}
			}
			Reader.SetPlace(From);
			return Found;
		}

		FChangeRequest ReadCreate(FRequestReader& Reader)
		{
			std::string File;
			if (!Reader.TakeFile(File) || File.empty())
			{
				return FChangeRequest();
			}
			FChangeRequest Request = MakeRequest(EChangeRequest::Create, File);
			if (!Reader.IsAtEnd())
			{
				TakeContent(Reader, Request.Content);
			}
			return Request;
		}

		/** "X to FILE", "to FILE: X", "FILE with X". */
		FChangeRequest ReadWrite(FRequestReader& Reader, EChangeRequest Kind)
		{
			std::string File;
			const size_t Start = Reader.GetPlace();
			Reader.Take(ContentOpeners);
			Reader.SkipPunctuation();
			const size_t ContentStart = Reader.GetPlace();
			if (Reader.Take(PlaceWords))
			{
				return Reader.TakeFile(File) ? ReadContentOf(Reader, Kind, File) : FChangeRequest();
			}
			std::string Literal;
			if (Reader.TakeLiteral(Literal) && Reader.Take(PlaceWords))
			{
				return Reader.TakeFile(File) && Reader.IsAtEnd() ? MakeRequest(Kind, File, Literal) : FChangeRequest();
			}
			Reader.SetPlace(Start);
			if (Reader.TakeFile(File) && !File.empty())
			{
				return ReadContentOf(Reader, Kind, File);
			}
			Reader.SetPlace(ContentStart);
			const size_t Place = FindClosingFile(Reader, PlaceWords, File);
			const std::string Content = Place == std::string::npos ? std::string() : ReadLines(Reader, ContentStart, Place);
			return Content.empty() ? FChangeRequest() : MakeRequest(Kind, File, Content);
		}

		/** What is known of "A by B in FILE" while it is read. */
		struct FReplaceParts
		{
			size_t OldStart = 0;
			size_t OldEnd = 0;
			std::string File;

			/** The file stood before the separator. */
			bool bIsPlaced = false;
		};

		/** A, up to the separator, which is not taken; with "in FILE" behind it. False where a quoted text stands in the middle of words.
		 */
		template <size_t Size>
		bool ReadOld(FRequestReader& Reader, const std::string_view (&Separators)[Size], FReplaceParts& Parts)
		{
			std::string Ignored;
			Parts.OldStart = Parts.OldEnd = Reader.GetPlace();
			if (Reader.TakeLiteral(Ignored))
			{
				Parts.OldEnd = Reader.GetPlace();
				Reader.SkipBlanks();
				// "by" may begin a name too, so the separator is looked for first.
				if (Reader.MatchLongest(Separators) == 0 && Reader.Take(InWords))
				{
					Parts.bIsPlaced = Reader.TakeFile(Parts.File);
				}
				return true;
			}
			for (; Parts.OldEnd < Reader.GetEnd(); ++Parts.OldEnd)
			{
				Reader.SetPlace(Parts.OldEnd);
				if (Reader.IsAt(LiteralPlace))
				{
					return false;
				}
				if (Parts.OldEnd == Parts.OldStart || !Reader.IsAt(' '))
				{
					continue;
				}
				Reader.SkipBlanks();
				if (Reader.MatchLongest(Separators) > 0)
				{
					return true;
				}
				// "foo in notes.md by bar"
				if (Reader.Take(InWords) && Reader.TakeFile(Parts.File) && !Parts.File.empty() &&
					(Reader.SkipBlanks(), Reader.MatchLongest(Separators) > 0))
				{
					Parts.bIsPlaced = true;
					return true;
				}
				Parts.File.clear();
			}
			return true;
		}

		/** B, with "in FILE" behind it unless the file is known. Gives where it ends; npos when something else follows it. */
		size_t ReadNew(FRequestReader& Reader, FReplaceParts& Parts)
		{
			std::string Text;
			if (Reader.TakeLiteral(Text))
			{
				const size_t End = Reader.GetPlace();
				if (Reader.IsAtEnd())
				{
					return End;
				}
				Reader.SetPlace(End);
				const bool bNamesFile = !Parts.bIsPlaced && Reader.Take(InWords) && Reader.TakeFile(Parts.File) && Reader.IsAtEnd();
				return bNamesFile ? End : std::string::npos;
			}
			// Words of their own may hold "in" as well, so the file is looked for from the end.
			const size_t Place = Parts.bIsPlaced ? std::string::npos : FindClosingFile(Reader, InWords, Text);
			if (Place == std::string::npos)
			{
				return Reader.GetEnd();
			}
			Parts.File = Text;
			return Place;
		}

		/** "A by B in FILE", "A in FILE by B", "the content of FILE by B". */
		template <size_t Size>
		FChangeRequest ReadReplace(FRequestReader& Reader, const std::string_view (&Separators)[Size], bool bIsReversed, std::string File)
		{
			// 1. All of a file.
			FReplaceParts Parts;
			if (Reader.Take(WholeContentPhrases))
			{
				const bool bNamesFile = Reader.TakeFile(Parts.File) && Reader.Take(Separators);
				return bNamesFile ? ReadContentOf(Reader, EChangeRequest::Write, Parts.File) : FChangeRequest();
			}

			// 2. The two passages, and the file behind either of them.
			Reader.Take(ContentOpeners);
			if (!ReadOld(Reader, Separators, Parts) || !Reader.Take(Separators))
			{
				return FChangeRequest();
			}
			Reader.Take(ContentOpeners);
			const size_t NewStart = Reader.GetPlace();
			const size_t NewEnd = ReadNew(Reader, Parts);
			if (NewEnd == std::string::npos)
			{
				return FChangeRequest();
			}

			// 3. "substitute B for A" names them the other way round.
			FChangeRequest Request = MakeRequest(EChangeRequest::Replace, Parts.File.empty() ? File : Parts.File);
			bool bIsLiteral = false;
			Request.Old = Reader.Meant(Parts.OldStart, Parts.OldEnd, bIsLiteral);
			Request.Content = Reader.Meant(NewStart, NewEnd, bIsLiteral);
			if (bIsReversed)
			{
				Request.Old.swap(Request.Content);
			}
			return Request.Old.empty() ? FChangeRequest() : Request;
		}

		FChangeRequest ReadVerb(FRequestReader& Reader, EVerb Verb, const std::string& File);

		/** "edit FILE: replace …", "edit FILE and …". */
		FChangeRequest ReadEdit(FRequestReader& Reader)
		{
			std::string File;
			EVerb Verb = EVerb::Edit;
			if (!Reader.TakeFile(File))
			{
				return FChangeRequest();
			}
			Reader.SkipPunctuation();
			return Reader.FindVerb(Verb) && Verb != EVerb::Edit ? ReadVerb(Reader, Verb, File) : FChangeRequest();
		}

		FChangeRequest ReadDelete(FRequestReader& Reader)
		{
			const size_t Start = Reader.GetPlace();
			std::string File;
			std::string Passage;
			Reader.Take(ContentOpeners);
			if (Reader.TakeLiteral(Passage) && Reader.Take(InWords) && Reader.TakeFile(File) && Reader.IsAtEnd())
			{
				FChangeRequest Request = MakeRequest(EChangeRequest::Replace, File);
				Request.Old = Passage;
				return Request;
			}
			Reader.SetPlace(Start);
			FChangeRequest Request;
			for (;;)
			{
				if (!Reader.TakeFile(File) || (File.empty() && !Request.Files.empty()))
				{
					return FChangeRequest();
				}
				const bool bPoints = File.empty();
				if (!bPoints)
				{
					Request.Files.push_back(File);
				}
				if (Reader.IsAtEnd())
				{
					Request.Kind = EChangeRequest::Delete;
					return Request;
				}
				constexpr std::string_view And[] = { "and" };
				Reader.SkipPunctuation();
				Reader.Take(And);
				if (bPoints)
				{
					return FChangeRequest();
				}
			}
		}

		FChangeRequest ReadVerb(FRequestReader& Reader, EVerb Verb, const std::string& File)
		{
			switch (Verb)
			{
			case EVerb::Create:
				return ReadCreate(Reader);
			case EVerb::Write:
				return ReadWrite(Reader, EChangeRequest::Write);
			case EVerb::Append:
				return ReadWrite(Reader, EChangeRequest::Append);
			case EVerb::Add:
			{
				// "add notes.md with …" makes a file, "add … to notes.md" lengthens one.
				const size_t Start = Reader.GetPlace();
				std::string Name;
				if (!Reader.IsAt(LiteralPlace) && Reader.TakeFile(Name) && !Name.empty())
				{
					Reader.SetPlace(Start);
					return ReadCreate(Reader);
				}
				Reader.SetPlace(Start);
				return ReadWrite(Reader, EChangeRequest::Append);
			}
			case EVerb::Replace:
				return ReadReplace(Reader, ReplaceSeparators, false, File);
			case EVerb::Change:
				return ReadReplace(Reader, ChangeSeparators, false, File);
			case EVerb::Substitute:
				return ReadReplace(Reader, SubstituteSeparators, true, File);
			case EVerb::Edit:
				return ReadEdit(Reader);
			case EVerb::Delete:
				return ReadDelete(Reader);
			}
			return FChangeRequest();
		}
	}

	FChangeRequest ParseChangeRequest(std::string_view Text)
	{
		FRequestReader Reader(Text);
		Reader.SkipPunctuation();
		EVerb Verb = EVerb::Edit;
		std::string File;
		constexpr std::string_view In[] = { "in" };
		const bool bNamesFileFirst = Reader.Take(In) && Reader.TakeFile(File) && !File.empty();
		if (!bNamesFileFirst)
		{
			Reader.SetPlace(0);
			File.clear();
		}
		Reader.SkipPunctuation();
		return Reader.FindVerb(Verb) ? ReadVerb(Reader, Verb, File) : FChangeRequest();
	}
}
