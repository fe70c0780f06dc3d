#include "SourceText.h"

#include "Host/HostFileNames.h"
#include "Misc/FileHelper.h"
#include "Misc/Paths.h"

#include <sys/stat.h>

namespace
{
	constexpr int32 TabCells = 4;
	/** From here on letters are twice as wide in a mono-spaced font, by and large. */
	constexpr TCHAR FirstWideUnit = 0x1100;

	struct FLanguageRow
	{
		const TCHAR* Language;
		/** Lower case, each with a blank before and behind. */
		const TCHAR* Endings;
	};

	constexpr FLanguageRow Languages[] = {
		{ TEXT("cpp"), TEXT(" c cc cpp cs cxx h hh hpp hxx inl ipp usf ush ") },
		{ TEXT("python"), TEXT(" py pyi ") },
		{ TEXT("json"), TEXT(" json uplugin uproject ") },
	};

	/** Lines end with LF, tabs are blanks up to their stop, and what is too long is cut. */
	FString LayOut(const FString& Code, int32& OutWidest)
	{
		FString Text;
		Text.Reserve(Code.Len() + Code.Len() / 8);
		int32 Cells = 0;
		int32 Cut = 0;
		for (int32 Index = 0; Index <= Code.Len(); ++Index)
		{
			const TCHAR Unit = Index < Code.Len() ? Code[Index] : TEXT('\n');
			if (Unit == TEXT('\r') && Index + 1 < Code.Len() && Code[Index + 1] == TEXT('\n'))
			{
				continue;
			}
			if (Unit == TEXT('\n') || Unit == TEXT('\r'))
			{
				if (Cut > 0)
				{
					const FString Note = FString::Printf(TEXT("\u2026 (%d more characters)"), Cut);
					Text += Note;
					Cells += Note.Len();
				}
				OutWidest = FMath::Max(OutWidest, Cells);
				Cells = 0;
				Cut = 0;
				// The end of the last line begins no other one.
				if (Index + 1 < Code.Len())
				{
					Text.AppendChar(TEXT('\n'));
				}
				continue;
			}
			// Not within a character of two units.
			const bool bIsSecondHalf = Unit >= 0xDC00 && Unit < 0xE000;
			if (Cells >= SourceText::MaxLineLength && (Cut > 0 || !bIsSecondHalf))
			{
				++Cut;
				continue;
			}
			for (int32 Blanks = Unit == TEXT('\t') ? TabCells - Cells % TabCells : 0; Blanks > 0; --Blanks, ++Cells)
			{
				Text.AppendChar(TEXT(' '));
			}
			if (Unit != TEXT('\t'))
			{
				Text.AppendChar(Unit);
				Cells += Unit >= FirstWideUnit ? 2 : 1;
			}
		}
		return Text;
	}

	FSourceText MakeProblem(const FString& Path, const TCHAR* Words)
	{
		FSourceText Text;
		Text.Problem = FString::Printf(TEXT("%s %s"), *Path, Words);
		return Text;
	}
}

FString SourceText::FindLanguage(const FString& Path)
{
	const FString Ending = TEXT(" ") + FPaths::GetExtension(Path).ToLower() + TEXT(" ");
	for (const FLanguageRow& Row : Languages)
	{
		if (FString(Row.Endings).Contains(Ending, ESearchCase::CaseSensitive))
		{
			return Row.Language;
		}
	}
	return FString();
}

FSourceText SourceText::Make(const FString& Code, const FString& Language)
{
	FSourceText Text;
	const FString Shown = LayOut(Code, Text.WidestCells);
	const TArray<Velmora::Markdown::FSyntaxToken> Tokens = Velmora::Markdown::TokenizeCode(Shown, Language);
	for (TArray<Velmora::Markdown::FCodePiece>& Pieces : Velmora::Markdown::SplitIntoCodeLines(Shown, Tokens))
	{
		const TSharedRef<FSourceLine> Line = MakeShared<FSourceLine>();
		Line->Number = Text.Lines.Num() + 1;
		for (const Velmora::Markdown::FCodePiece& Piece : Pieces)
		{
			Line->Text += Piece.Text;
		}
		Line->Pieces = MoveTemp(Pieces);
		Text.Lines.Add(Line);
	}
	return Text;
}

TOptional<FSourceText> SourceText::Read(const FString& Path, const FString& KnownStamp)
{
	struct stat Info = {};
	if (stat(HostFileNameToBytes(Path).c_str(), &Info) != 0)
	{
		return MakeProblem(Path, TEXT("does not exist any more."));
	}
	const FString Stamp = FString::Printf(TEXT("%lld.%lld %lld"), static_cast<long long>(Info.st_mtim.tv_sec),
		static_cast<long long>(Info.st_mtim.tv_nsec), static_cast<long long>(Info.st_size));
	if (Stamp.Equals(KnownStamp))
	{
		return TOptional<FSourceText>();
	}
	TArray<uint8> Bytes;
	FSourceText Text;
	if (!S_ISREG(Info.st_mode))
	{
		Text = MakeProblem(Path, TEXT("is no file."));
	}
	else if (Info.st_size > MaxBytes)
	{
		Text = MakeProblem(Path, TEXT("is larger than 8 MB and not shown here."));
	}
	else if (!FFileHelper::LoadFileToArray(Bytes, *Path))
	{
		Text = MakeProblem(Path, TEXT("cannot be read."));
	}
	else
	{
		FString Code;
		FFileHelper::BufferToString(Code, Bytes.GetData(), Bytes.Num());
		int32 Null = INDEX_NONE;
		Text = Code.FindChar(TEXT('\0'), Null) ? MakeProblem(Path, TEXT("holds no text.")) : Make(Code, FindLanguage(Path));
	}
	Text.Stamp = Stamp;
	return Text;
}
