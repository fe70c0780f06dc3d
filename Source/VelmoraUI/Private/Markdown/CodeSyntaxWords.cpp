#include "Markdown/CodeSyntaxWords.h"

#include "Misc/AssertionMacros.h"
#include "Misc/CString.h"
#include "Misc/Char.h"
#include "Templates/UnrealTemplate.h"

namespace Velmora::Markdown
{

	namespace
	{

		// clang-format off
constexpr const TCHAR* CppKeywords[] = {
	TEXT("alignas"), TEXT("alignof"), TEXT("and"), TEXT("and_eq"), TEXT("asm"), TEXT("atomic_cancel"), TEXT("atomic_commit"),
	TEXT("atomic_noexcept"), TEXT("auto"),
	TEXT("bitand"), TEXT("bitor"), TEXT("bool"), TEXT("break"), TEXT("case"), TEXT("catch"), TEXT("char"), TEXT("char8_t"),
	TEXT("char16_t"), TEXT("char32_t"),
	TEXT("class"), TEXT("compl"), TEXT("concept"), TEXT("const"), TEXT("consteval"), TEXT("constexpr"), TEXT("constinit"),
	TEXT("const_cast"), TEXT("continue"),
	TEXT("co_await"), TEXT("co_return"), TEXT("co_yield"), TEXT("decltype"), TEXT("default"), TEXT("delete"), TEXT("do"), TEXT("double"),
	TEXT("dynamic_cast"),
	TEXT("else"), TEXT("enum"), TEXT("explicit"), TEXT("export"), TEXT("extern"), TEXT("false"), TEXT("float"), TEXT("for"),
	TEXT("friend"), TEXT("goto"), TEXT("if"),
	TEXT("inline"), TEXT("int"), TEXT("long"), TEXT("mutable"), TEXT("namespace"), TEXT("new"), TEXT("noexcept"), TEXT("not"),
	TEXT("not_eq"), TEXT("nullptr"),
	TEXT("operator"), TEXT("or"), TEXT("or_eq"), TEXT("private"), TEXT("protected"), TEXT("public"), TEXT("reflexpr"), TEXT("register"),
	TEXT("reinterpret_cast"),
	TEXT("requires"), TEXT("return"), TEXT("short"), TEXT("signed"), TEXT("sizeof"), TEXT("static"), TEXT("static_assert"),
	TEXT("static_cast"), TEXT("struct"),
	TEXT("switch"), TEXT("synchronized"), TEXT("template"), TEXT("this"), TEXT("thread_local"), TEXT("throw"), TEXT("true"), TEXT("try"),
	TEXT("typedef"),
	TEXT("typeid"), TEXT("typename"), TEXT("union"), TEXT("unsigned"), TEXT("using"), TEXT("virtual"), TEXT("void"), TEXT("volatile"),
	TEXT("wchar_t"),
	TEXT("while"), TEXT("xor"), TEXT("xor_eq"),
};
static_assert(UE_ARRAY_COUNT(CppKeywords) == 97);

constexpr const TCHAR* CppTypeWords[] = {
	TEXT("int8"), TEXT("int16"), TEXT("int32"), TEXT("int64"), TEXT("uint8"), TEXT("uint16"), TEXT("uint32"), TEXT("uint64"),
	TEXT("int"), TEXT("float"), TEXT("double"), TEXT("bool"), TEXT("void"), TEXT("char"), TEXT("size_t"), TEXT("wchar_t"),
};

constexpr const TCHAR* PythonKeywords[] = {
	TEXT("false"), TEXT("none"), TEXT("true"), TEXT("and"), TEXT("as"), TEXT("assert"), TEXT("async"), TEXT("await"), TEXT("break"),
	TEXT("class"), TEXT("continue"),
	TEXT("def"), TEXT("del"), TEXT("elif"), TEXT("else"), TEXT("except"), TEXT("finally"), TEXT("for"), TEXT("from"), TEXT("global"),
	TEXT("if"), TEXT("import"),
	TEXT("in"), TEXT("is"), TEXT("lambda"), TEXT("nonlocal"), TEXT("not"), TEXT("or"), TEXT("pass"), TEXT("raise"), TEXT("return"),
	TEXT("try"), TEXT("while"),
	TEXT("with"), TEXT("yield"),
};
		// clang-format on
		static_assert(UE_ARRAY_COUNT(PythonKeywords) == 35);

	} // namespace

	FCodeWords::FCodeWords(const TCHAR* const* InWords, int32 Count)
	{
		check(Count < SlotCount / 2);
		for (int32 Index = 0; Index < Count; ++Index)
		{
			const TCHAR* const Word = InWords[Index];
			const int32 Length = FCString::Strlen(Word);
			check(Length <= MaxLength);
			uint32 Slot = Hash(Word, Length);
			while (Slots[Slot].Word)
			{
				Slot = (Slot + 1) % SlotCount;
			}
			Slots[Slot] = { Word, Length };
		}
	}

	uint32 FCodeWords::Hash(const TCHAR* Word, int32 Length)
	{
		const uint32 First = FChar::ToLower(Word[0]);
		const uint32 Middle = FChar::ToLower(Word[Length / 2]);
		const uint32 Last = FChar::ToLower(Word[Length - 1]);
		return (First * 31 + Middle * 131 + Last * 7 + static_cast<uint32>(Length) * 61) % SlotCount;
	}

	bool FCodeWords::Contains(const TCHAR* Word, int32 Length) const
	{
		if (Length < 1 || Length > MaxLength)
		{
			return false;
		}
		for (uint32 Slot = Hash(Word, Length); Slots[Slot].Word; Slot = (Slot + 1) % SlotCount)
		{
			if (Slots[Slot].Length != Length)
			{
				continue;
			}
			int32 Index = 0;
			while (Index < Length && FChar::ToLower(Word[Index]) == Slots[Slot].Word[Index])
			{
				++Index;
			}
			if (Index == Length)
			{
				return true;
			}
		}
		return false;
	}

	const FCodeWords& GetCppKeywords()
	{
		static const FCodeWords Words(CppKeywords, UE_ARRAY_COUNT(CppKeywords));
		return Words;
	}

	const FCodeWords& GetCppTypeWords()
	{
		static const FCodeWords Words(CppTypeWords, UE_ARRAY_COUNT(CppTypeWords));
		return Words;
	}

	const FCodeWords& GetPythonKeywords()
	{
		static const FCodeWords Words(PythonKeywords, UE_ARRAY_COUNT(PythonKeywords));
		return Words;
	}

} // namespace Velmora::Markdown
