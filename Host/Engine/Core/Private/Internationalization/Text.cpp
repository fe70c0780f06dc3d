#include "Internationalization/Text.h"

#include "Host/HostClock.h"
#include "Misc/DateTime.h"

namespace
{
	const FString& GetEmptyString()
	{
		static const FString Empty;
		return Empty;
	}

	constexpr const TCHAR* MonthNames[] = { TEXT("January"), TEXT("February"), TEXT("March"), TEXT("April"), TEXT("May"), TEXT("June"),
		TEXT("July"), TEXT("August"), TEXT("September"), TEXT("October"), TEXT("November"), TEXT("December") };
	constexpr const TCHAR* DayNames[] = { TEXT("Monday"), TEXT("Tuesday"), TEXT("Wednesday"), TEXT("Thursday"), TEXT("Friday"),
		TEXT("Saturday"), TEXT("Sunday") };

	/** The fields to show: those of local time, or as they are for the invariant zone and UTC. Other zones are not known here. */
	FDateTime InZone(const FDateTime& DateTime, const FString& TimeZone)
	{
		return TimeZone.IsEmpty() ? FHostClock::UtcToLocal(DateTime) : DateTime;
	}

	FString FormatDate(const FDateTime& Fields, EDateTimeStyle::Type Style)
	{
		int32 Year;
		int32 Month;
		int32 Day;
		Fields.GetDate(Year, Month, Day);
		const TCHAR* MonthName = MonthNames[Month - 1];
		switch (Style)
		{
		case EDateTimeStyle::Short:
			return FString::Printf(TEXT("%d/%d/%02d"), Month, Day, Year % 100);
		case EDateTimeStyle::Long:
			return FString::Printf(TEXT("%s %d, %d"), MonthName, Day, Year);
		case EDateTimeStyle::Full:
			return FString::Printf(TEXT("%s, %s %d, %d"), DayNames[(int32)Fields.GetDayOfWeek()], MonthName, Day, Year);
		default:
			return FString::Printf(TEXT("%.3s %d, %d"), MonthName, Day, Year);
		}
	}

}

const FText& FText::GetEmpty()
{
	static const FText Empty;
	return Empty;
}

FText FText::FromString(const FString& String)
{
	return FromString(FString(String));
}

FText FText::FromString(FString&& String)
{
	if (String.IsEmpty())
	{
		return FText();
	}
	return FText(MakeShared<FTextData>(FTextData{ MoveTemp(String), FString(), FString() }).ToSharedPtr());
}

FText FText::AsLocalizable_Advanced(const TCHAR* Namespace, const TCHAR* Key, const TCHAR* Source)
{
	return FText(MakeShared<FTextData>(FTextData{ Source, Namespace, Key }).ToSharedPtr());
}

const FString& FText::ToString() const
{
	return Data ? Data->Display : GetEmptyString();
}

FText FText::Join(const FText& Delimiter, const FFormatOrderedArguments& Arguments)
{
	return FromString(FString::JoinBy(
		Arguments, *Delimiter.ToString(), [](const FFormatArgumentValue& Each) -> const FString& { return Each.Text.ToString(); }));
}

FText FText::Join(const FText& Delimiter, const TArray<FText>& Arguments)
{
	return FromString(
		FString::JoinBy(Arguments, *Delimiter.ToString(), [](const FText& Each) -> const FString& { return Each.ToString(); }));
}

FText FText::AsDate(const FDateTime& DateTime, EDateTimeStyle::Type Style, const FString& TimeZone, const FCulturePtr&)
{
	return FromString(FormatDate(InZone(DateTime, TimeZone), Style));
}

FString FText::GetInvariantTimeZone()
{
	return TEXT("Etc/Unknown");
}

TOptional<FString> FTextInspector::GetNamespace(const FText& Text)
{
	return Text.Data && !Text.Data->Key.IsEmpty() ? TOptional<FString>(Text.Data->Namespace) : TOptional<FString>();
}

TOptional<FString> FTextInspector::GetKey(const FText& Text)
{
	return Text.Data && !Text.Data->Key.IsEmpty() ? TOptional<FString>(Text.Data->Key) : TOptional<FString>();
}
