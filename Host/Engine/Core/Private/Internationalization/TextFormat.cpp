#include "Internationalization/Text.h"

namespace
{
	/** Index of an ordered argument, or INDEX_NONE. */
	int32 ToArgumentIndex(FStringView Name)
	{
		int32 Index = 0;
		for (const TCHAR Each : Name)
		{
			if (!FChar::IsDigit(Each) || Name.Len() > 6)
			{
				return INDEX_NONE;
			}
			Index = Index * 10 + (Each - '0');
		}
		return Name.IsEmpty() ? INDEX_NONE : Index;
	}

	bool IsEscapable(TCHAR Char)
	{
		return Char == '`' || Char == '{' || Char == '}' || Char == '|' || Char == '(' || Char == ')';
	}

	/** Replaces each placeholder by what Find gives for its name; without one it stays as it was written. */
	template <typename FindType>
	FText FillIn(const FTextFormat& Pattern, const FindType& Find)
	{
		const FString& Source = Pattern.GetSourceText().ToString();
		const FStringView View(Source);
		FString Result;
		Result.Reserve(Source.Len() + 16);
		for (int32 Index = 0; Index < View.Len(); ++Index)
		{
			const TCHAR Each = View[Index];
			if (Each == '`' && Index + 1 < View.Len() && IsEscapable(View[Index + 1]))
			{
				Result.AppendChar(View[++Index]);
				continue;
			}
			int32 Length = 0;
			if (Each == '{' && View.RightChop(Index + 1).FindChar(TEXT('}'), Length))
			{
				const FFormatArgumentValue* Value = Find(View.Mid(Index + 1, Length).TrimStartAndEnd());
				if (Value)
				{
					Result += Value->Text.ToString();
					Index += Length + 1;
					continue;
				}
			}
			Result.AppendChar(Each);
		}
		return FText::FromString(MoveTemp(Result));
	}
}

FText FText::Format(const FTextFormat& Pattern, const FFormatNamedArguments& Arguments)
{
	return FillIn(Pattern, [&Arguments](FStringView Name) { return Arguments.Find(FString(Name)); });
}

FText FText::Format(const FTextFormat& Pattern, const FFormatOrderedArguments& Arguments)
{
	return FillIn(Pattern,
		[&Arguments](FStringView Name) -> const FFormatArgumentValue*
		{
			const int32 Index = ToArgumentIndex(Name);
			return Arguments.IsValidIndex(Index) ? &Arguments[Index] : nullptr;
		});
}
