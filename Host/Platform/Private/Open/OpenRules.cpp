#include "Open/OpenRules.h"

#include "Misc/Paths.h"

// Which targets are opened, asked about or refused. Pure rules on text and facts, so that every case can be tested.
//
// Refused is what cannot be meant (options, control characters, nothing). Asked about is what may run: programs and
// scripts by ending, by permission or by content, pages whose scripts would run as local files, addresses of unknown
// kinds. Both the name that was given and the one that links lead to count.

namespace
{
	/** Far above any address in use, below what fits on a command line. */
	constexpr int32 MaxTargetLength = 30000;

	/** Schemes that a browser or mail program handles without running anything. Lower case. */
	constexpr const TCHAR* HarmlessSchemes[] = { TEXT("http"), TEXT("https"), TEXT("mailto") };

	/** Files that a desktop runs, installs or interprets when they are opened. Lower case. */
	// clang-format off
	constexpr const TCHAR* RunnableExtensions[] = {
		TEXT("appimage"), TEXT("apk"), TEXT("bash"), TEXT("bat"), TEXT("bin"), TEXT("cmd"), TEXT("com"), TEXT("command"), TEXT("cpl"),
		TEXT("csh"),
		TEXT("deb"), TEXT("desktop"), TEXT("exe"), TEXT("fish"), TEXT("flatpak"), TEXT("flatpakref"), TEXT("flatpakrepo"), TEXT("hta"),
		TEXT("jar"), TEXT("jnlp"),
		TEXT("js"), TEXT("ksh"), TEXT("lnk"), TEXT("msi"), TEXT("msp"), TEXT("out"), TEXT("php"), TEXT("pif"), TEXT("pl"), TEXT("ps1"),
		TEXT("py"), TEXT("pyc"), TEXT("pyw"), TEXT("rb"), TEXT("rpm"), TEXT("run"), TEXT("scr"), TEXT("sh"), TEXT("snap"), TEXT("tcl"),
		TEXT("url"), TEXT("vbe"), TEXT("vbs"), TEXT("wsf"), TEXT("wsh"), TEXT("x86_64"), TEXT("zsh"),
	};
	// clang-format on

	/** Files whose scripts a browser runs with the rights of local files. Lower case. */
	constexpr const TCHAR* ScriptedExtensions[] = { TEXT("htm"), TEXT("html"), TEXT("mht"), TEXT("mhtml"), TEXT("shtml"), TEXT("svg"),
		TEXT("svgz"), TEXT("xht"), TEXT("xhtml"), TEXT("xml"), TEXT("xsl"), TEXT("xslt") };

	/** Texts that mean a page, a drawing or a sheet. Lower case. */
	constexpr const TCHAR* DrawnExtensions[] = { TEXT("csv"), TEXT("eps"), TEXT("htm"), TEXT("html"), TEXT("mht"), TEXT("mhtml"),
		TEXT("pdf"), TEXT("ps"), TEXT("rtf"), TEXT("shtml"), TEXT("svg"), TEXT("xht"), TEXT("xhtml") };

	template <size_t Count>
	bool IsListed(const FString& Word, const TCHAR* const (&List)[Count])
	{
		const FString Lower = Word.ToLower();
		for (const TCHAR* Entry : List)
		{
			if (Lower.Equals(Entry))
			{
				return true;
			}
		}
		return false;
	}

	/** The part before the first colon if it has the form of a scheme, else empty. */
	FString GetScheme(const FString& Target)
	{
		int32 Colon = INDEX_NONE;
		if (!Target.FindChar(TEXT(':'), Colon) || Colon == 0)
		{
			return FString();
		}
		for (int32 Index = 0; Index < Colon; ++Index)
		{
			const TCHAR Unit = Target[Index];
			const bool bLetter = (Unit >= TEXT('a') && Unit <= TEXT('z')) || (Unit >= TEXT('A') && Unit <= TEXT('Z'));
			const bool bOther = (Unit >= TEXT('0') && Unit <= TEXT('9')) || Unit == TEXT('+') || Unit == TEXT('-') || Unit == TEXT('.');
			if (!bLetter && !(Index > 0 && bOther))
			{
				return FString();
			}
		}
		return Target.Left(Colon);
	}

	/** Rules that hold for every target. Verdict Open means that none of them applied. */
	FOpenDecision JudgeAny(const FString& Target)
	{
		if (Target.IsEmpty())
		{
			return FOpenDecision{ EOpenVerdict::Refuse, TEXT("There is nothing to open: the address is empty.") };
		}
		if (Target[0] == TEXT('-'))
		{
			return FOpenDecision{ EOpenVerdict::Refuse,
				TEXT("An address that begins with a hyphen is not opened, since it would be taken for an option of the program that opens "
					 "it.") };
		}
		if (Target.Len() > MaxTargetLength)
		{
			return FOpenDecision{ EOpenVerdict::Refuse, TEXT("The address is too long to be opened.") };
		}
		for (int32 Index = 0; Index < Target.Len(); ++Index)
		{
			if (Target[Index] < 0x20 || (Target[Index] >= 0x7F && Target[Index] < 0xA0))
			{
				return FOpenDecision{ EOpenVerdict::Refuse, TEXT("An address with control characters in it is not opened.") };
			}
		}
		return FOpenDecision{ EOpenVerdict::Open, FString() };
	}
}

namespace OpenRules
{
	// From the harmless kinds outwards; what is not known to be harmless is asked about.
	FOpenDecision JudgeUrl(const FString& Target)
	{
		FOpenDecision Decision = JudgeAny(Target);
		if (Decision.Verdict == EOpenVerdict::Refuse)
		{
			return Decision;
		}
		const FString Scheme = GetScheme(Target);
		if (Scheme.IsEmpty())
		{
			return FOpenDecision{ EOpenVerdict::Ask, TEXT("This is no web address. Your system decides what opens it.") };
		}
		if (!IsListed(Scheme, HarmlessSchemes))
		{
			return FOpenDecision{ EOpenVerdict::Ask,
				FString::Printf(TEXT("Addresses of the kind \"%s:\" are handled by another program, which may act on them."), *Scheme) };
		}
		// Some mail programs attach a file that the address names.
		if (Scheme.Equals(TEXT("mailto"), ESearchCase::IgnoreCase) && Target.Contains(TEXT("attach")))
		{
			return FOpenDecision{ EOpenVerdict::Ask, TEXT("This mail address may attach a file of yours to the message.") };
		}
		return Decision;
	}

	FOpenDecision JudgeFile(const FString& Path, const FOpenFileFacts& Facts)
	{
		FOpenDecision Decision = JudgeAny(Path);
		if (Decision.Verdict == EOpenVerdict::Refuse)
		{
			return Decision;
		}
		if (!Facts.bExists)
		{
			return FOpenDecision{ EOpenVerdict::Refuse, MakeReadable(Path) + TEXT(" does not exist.") };
		}
		if (Facts.bDirectory)
		{
			return Decision;
		}
		if (Facts.bExecutable || Facts.bBinaryProgram || IsListed(FPaths::GetExtension(Path), RunnableExtensions) ||
			IsListed(FPaths::GetExtension(Facts.RealPath), RunnableExtensions))
		{
			return FOpenDecision{ EOpenVerdict::Ask, TEXT("This file can be run as a program when it is opened.") };
		}
		for (const FString& Name : { Path, Facts.RealPath })
		{
			if (IsListed(FPaths::GetExtension(Name), ScriptedExtensions))
			{
				return FOpenDecision{ EOpenVerdict::Ask, TEXT("A browser runs the scripts in this file when it is opened.") };
			}
		}
		// Without an ending the system looks into the file to choose what opens it, and may run it.
		if (FPaths::GetExtension(Path).IsEmpty() || FPaths::GetExtension(Facts.RealPath).IsEmpty())
		{
			return FOpenDecision{ EOpenVerdict::Ask, TEXT("The name of this file does not tell what opens it. Your system decides.") };
		}
		return Decision;
	}

	bool IsForEditor(const FString& Path, const FOpenFileFacts& Facts)
	{
		return Facts.bText && !IsListed(FPaths::GetExtension(Path), DrawnExtensions) &&
			!IsListed(FPaths::GetExtension(Facts.RealPath), DrawnExtensions);
	}

	bool ReadSourceLink(const FString& Target, FString& OutPath, int32& OutLine)
	{
		constexpr int32 SchemeLength = 5;
		constexpr int32 MaxDigits = 7;
		const int32 Mark = Target.Find(TEXT("#L"), ESearchCase::CaseSensitive, ESearchDir::FromEnd);
		const int32 Digits = Target.Len() - Mark - 2;
		// Two slashes would be a host's name.
		if (!Target.StartsWith(TEXT("file:/")) || Target.StartsWith(TEXT("file://")) || Mark < SchemeLength || Digits < 1 ||
			Digits > MaxDigits)
		{
			return false;
		}
		int32 Line = 0;
		for (int32 Index = Mark + 2; Index < Target.Len(); ++Index)
		{
			if (Target[Index] < TEXT('0') || Target[Index] > TEXT('9'))
			{
				return false;
			}
			Line = Line * 10 + (Target[Index] - TEXT('0'));
		}
		OutPath = Target.Mid(SchemeLength, Mark - SchemeLength);
		OutLine = Line;
		return true;
	}

	// What the user confirms must be what is opened: signs that hide or turn text around are written out.
	FString MakeReadable(const FString& Target)
	{
		FString Result;
		Result.Reserve(Target.Len());
		for (int32 Index = 0; Index < Target.Len(); ++Index)
		{
			const TCHAR Unit = Target[Index];
			const bool bControl = Unit < 0x20 || (Unit >= 0x7F && Unit < 0xA0);
			const bool bHidden = Unit == 0x00AD || Unit == 0x061C || (Unit >= 0x200B && Unit <= 0x200F) ||
				(Unit >= 0x2028 && Unit <= 0x202E) || (Unit >= 0x2060 && Unit <= 0x206F) || Unit == 0xFEFF;
			if (bControl || bHidden)
			{
				Result += FString::Printf(TEXT("\\u%04X"), static_cast<uint32>(Unit));
			}
			else
			{
				Result.AppendChar(Unit);
			}
		}
		return Result;
	}
}
