#include "Markdown/CodeLines.h"

#include "Math/UnrealMathUtility.h"
#include "Misc/Char.h"

namespace Velmora::Markdown
{

	namespace
	{

		bool IsBlankRun(const FString& Text)
		{
			for (const TCHAR Char : Text)
			{
				if (!FChar::IsWhitespace(Char))
				{
					return false;
				}
			}
			return true;
		}

		/** Joins neighbours of one colour: each piece is a widget. */
		void AddPiece(TArray<FCodePiece>& Pieces, ESyntaxTokenType Type, const FString& Text)
		{
			if (Pieces.Num() > 0)
			{
				FCodePiece& Last = Pieces.Last();
				const bool bLastIsBlank = IsBlankRun(Last.Text);
				if (Last.Type == Type || bLastIsBlank || IsBlankRun(Text))
				{
					Last.Type = bLastIsBlank ? Type : Last.Type;
					Last.Text += Text;
					return;
				}
			}
			Pieces.Add({ Type, Text });
		}

		bool IsLineEnd(TCHAR Char)
		{
			return Char == TEXT('\n') || Char == TEXT('\r');
		}

	} // namespace

	TArray<TArray<FCodePiece>> SplitIntoCodeLines(const FString& Code, const TArray<FSyntaxToken>& Tokens)
	{
		TArray<TArray<FCodePiece>> Lines;
		int32 NextToken = 0;
		for (int32 LineStart = 0; LineStart <= Code.Len();)
		{
			// 1. The line, without what ends it.
			int32 LineEnd = LineStart;
			while (LineEnd < Code.Len() && !IsLineEnd(Code[LineEnd]))
			{
				++LineEnd;
			}
			// 2. Its pieces, up to the end of a token or the start of the next. The token that reaches beyond the line is met again.
			TArray<FCodePiece>& Pieces = Lines.AddDefaulted_GetRef();
			for (int32 Position = LineStart; Position < LineEnd;)
			{
				while (NextToken < Tokens.Num() && Tokens[NextToken].End <= Position)
				{
					++NextToken;
				}
				ESyntaxTokenType Type = ESyntaxTokenType::Default;
				int32 PieceEnd = LineEnd;
				if (NextToken < Tokens.Num())
				{
					const FSyntaxToken& Token = Tokens[NextToken];
					const bool bInToken = Token.Start <= Position;
					Type = bInToken ? Token.Type : Type;
					PieceEnd = FMath::Min(PieceEnd, bInToken ? Token.End : Token.Start);
				}
				AddPiece(Pieces, Type, Code.Mid(Position, PieceEnd - Position));
				Position = PieceEnd;
			}
			if (Pieces.IsEmpty())
			{
				Pieces.AddDefaulted();
			}
			// 3. On, after the line end; the end of the code ends the last line.
			const bool bTwoUnits = LineEnd + 1 < Code.Len() && Code[LineEnd] == TEXT('\r') && Code[LineEnd + 1] == TEXT('\n');
			LineStart = LineEnd + (bTwoUnits ? 2 : 1);
		}
		return Lines;
	}

} // namespace Velmora::Markdown
