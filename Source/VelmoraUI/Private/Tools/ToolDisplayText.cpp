#include "Tools/ToolStyleResolver.h"

#include "Dom/JsonObject.h"
#include "Dom/JsonValue.h"
#include "Misc/Char.h"
#include "Misc/Paths.h"
#include "Serialization/JsonReader.h"
#include "Serialization/JsonSerializer.h"

namespace Velmora
{

	namespace
	{

		struct FWordRow
		{
			const TCHAR* Key;
			const TCHAR* Text;
		};

		constexpr FWordRow VerbRows[] = {
			{ TEXT("create"), TEXT("Creating") },
			{ TEXT("read"), TEXT("Analyzing") },
			{ TEXT("update"), TEXT("Updating") },
			{ TEXT("delete"), TEXT("Deleting") },
			{ TEXT("modify"), TEXT("Modifying") },
			{ TEXT("edit"), TEXT("Editing") },
			{ TEXT("list"), TEXT("Scanning") },
			{ TEXT("search"), TEXT("Searching") },
			{ TEXT("get"), TEXT("Fetching") },
			{ TEXT("validate"), TEXT("Validating") },
			{ TEXT("compile"), TEXT("Compiling") },
			{ TEXT("check"), TEXT("Checking") },
			{ TEXT("execute"), TEXT("Executing") },
			{ TEXT("run"), TEXT("Running") },
			{ TEXT("remove"), TEXT("Removing") },
		};

		/** What a read looks at in particular. */
		constexpr FWordRow ReadVerbRows[] = {
			{ TEXT("schema"), TEXT("Analyzing graph") },
			{ TEXT("function"), TEXT("Reading function") },
			{ TEXT("variable"), TEXT("Checking variable") },
			{ TEXT("timeline"), TEXT("Inspecting timeline") },
			{ TEXT("component"), TEXT("Reading component") },
			{ TEXT("event"), TEXT("Reading event") },
			{ TEXT("delegate"), TEXT("Reading delegate") },
			{ TEXT("macro"), TEXT("Reading macro") },
			{ TEXT("widget_tree"), TEXT("Analyzing widget tree") },
			{ TEXT("interface"), TEXT("Reading interface") },
		};

		struct FOperationCategoryRow
		{
			const TCHAR* Operation;
			const TCHAR* Category;
			/** The words before a data type; null where the category does not name it. */
			const TCHAR* TypedPrefix;
		};

		constexpr FOperationCategoryRow OperationCategoryRows[] = {
			{ TEXT("create"), TEXT("Asset Creation"), TEXT("Asset Creation - ") },
			{ TEXT("modify"), TEXT("Data Modification"), TEXT("Modification - ") },
			{ TEXT("update"), TEXT("Data Modification"), TEXT("Modification - ") },
			{ TEXT("edit"), TEXT("Data Modification"), TEXT("Modification - ") },
			{ TEXT("delete"), TEXT("Deletion"), nullptr },
			{ TEXT("remove"), TEXT("Deletion"), nullptr },
			{ TEXT("read"), TEXT("Query"), nullptr },
			{ TEXT("get"), TEXT("Query"), nullptr },
			{ TEXT("list"), TEXT("Discovery"), nullptr },
			{ TEXT("search"), TEXT("Discovery"), nullptr },
			{ TEXT("validate"), TEXT("Validation"), nullptr },
			{ TEXT("check"), TEXT("Validation"), nullptr },
			{ TEXT("compile"), TEXT("Build"), nullptr },
			{ TEXT("execute"), TEXT("Execution"), nullptr },
			{ TEXT("run"), TEXT("Execution"), nullptr },
		};

		struct FDataTypeCategoryRow
		{
			const TCHAR* DataType;
			/** The row is for every data type that holds the word, not only for the word itself. */
			bool bAnywhere;
			const TCHAR* Category;
		};

		/** In the order in which they are tried. */
		constexpr FDataTypeCategoryRow DataTypeCategoryRows[] = {
			{ TEXT("Blueprint"), true, TEXT("Blueprint System") },
			{ TEXT("BehaviorTree"), false, TEXT("AI System") },
			{ TEXT("Blackboard"), false, TEXT("AI System") },
			{ TEXT("Material"), true, TEXT("Material System") },
			{ TEXT("Niagara"), true, TEXT("VFX System") },
			{ TEXT("Input"), true, TEXT("Input System") },
			{ TEXT("File"), false, TEXT("File System") },
			{ TEXT("Directory"), false, TEXT("File System") },
		};

		constexpr FWordRow BuildMethodRows[] = {
			{ TEXT("livecoding"), TEXT("LiveCoding") },
			{ TEXT("hotreload"), TEXT("HotReload") },
			{ TEXT("full_rebuild"), TEXT("UBT") },
			{ TEXT("module_specific"), TEXT("Module-Specific") },
		};

		template <int32 Count>
		TMap<FString, FString> MakeWordMap(const FWordRow (&Rows)[Count])
		{
			TMap<FString, FString> Words;
			for (const FWordRow& Row : Rows)
			{
				Words.Add(Row.Key, Row.Text);
			}
			return Words;
		}

		/** Null if no row has the key. Ignores letter case. */
		template <int32 Count>
		const TCHAR* FindWord(const FWordRow (&Rows)[Count], const FString& Key)
		{
			for (const FWordRow& Row : Rows)
			{
				if (Key == Row.Key)
				{
					return Row.Text;
				}
			}
			return nullptr;
		}

		FString RaiseFirstLetter(const FString& Word)
		{
			FString Raised = Word;
			if (!Raised.IsEmpty() && Raised[0] >= TEXT('a') && Raised[0] <= TEXT('z'))
			{
				Raised[0] = static_cast<TCHAR>(Raised[0] - TEXT('a') + TEXT('A'));
			}
			return Raised;
		}

	} // namespace

	FString FToolStyleResolver::GetActionVerb(const FString& Operation, const FString& SubOperation)
	{
		static const TMap<FString, FString> Verbs = MakeWordMap(VerbRows);
		const FString LowerOperation = Operation.ToLower();
		// 1. A read says what it looks at: tools of this kind run often, and "Analyzing" alone would make all rows alike.
		if (LowerOperation == TEXT("read") && !SubOperation.IsEmpty())
		{
			const TCHAR* Verb = FindWord(ReadVerbRows, SubOperation.ToLower());
			return Verb ? FString(Verb) : TEXT("Analyzing ") + RaiseFirstLetter(SubOperation);
		}
		// 2. A verb that is known. 3. Otherwise the operation itself.
		if (const FString* Verb = Verbs.Find(LowerOperation))
		{
			return *Verb;
		}
		return Operation.IsEmpty() ? FString(TEXT("Processing")) : RaiseFirstLetter(Operation);
	}

	FString FToolStyleResolver::GetCategory(const FString& Operation, const FString& DataType)
	{
		// 1. What is done goes before what it is done to.
		for (const FOperationCategoryRow& Row : OperationCategoryRows)
		{
			if (Operation == Row.Operation)
			{
				return Row.TypedPrefix && !DataType.IsEmpty() ? Row.TypedPrefix + DataType : FString(Row.Category);
			}
		}
		if (DataType.IsEmpty())
		{
			return TEXT("General");
		}
		// 2. What it is done to, the first row that fits.
		for (const FDataTypeCategoryRow& Row : DataTypeCategoryRows)
		{
			if (Row.bAnywhere ? DataType.Contains(Row.DataType, ESearchCase::IgnoreCase) : DataType == Row.DataType)
			{
				return Row.Category;
			}
		}
		return TEXT("Asset - ") + DataType;
	}

	FString FToolStyleResolver::PrettifyToolName(const FString& Name)
	{
		int32 FirstUnderscore = INDEX_NONE;
		// Two manners of naming: words joined by underscores, or by their capitals.
		if (Name.FindChar(TEXT('_'), FirstUnderscore))
		{
			TArray<FString> Words;
			Name.ParseIntoArray(Words, TEXT("_"), true);
			for (FString& Word : Words)
			{
				Word = RaiseFirstLetter(Word);
			}
			return FString::Join(Words, TEXT(" "));
		}
		FString Spaced;
		for (int32 Index = 0; Index < Name.Len(); ++Index)
		{
			// Every capital begins a word, so a run of capitals falls apart letter by letter.
			if (Index > 0 && FChar::IsUpper(Name[Index]))
			{
				Spaced.AppendChar(TEXT(' '));
			}
			Spaced.AppendChar(Name[Index]);
		}
		return RaiseFirstLetter(Spaced);
	}

	FString FToolStyleResolver::ExtractShortName(const FString& Value)
	{
		return Value.IsEmpty() ? FString() : FPaths::GetBaseFilename(Value, true);
	}

	FString FToolStyleResolver::ExtractDisplayParameter(const FString& Parameters)
	{
		// The first of these that has a text names what the tool works on.
		static const TArray<FString> Keys = { TEXT("display_text"), TEXT("path"), TEXT("file_path"), TEXT("asset_path"), TEXT("term"),
			TEXT("name"), TEXT("method"), TEXT("node") };
		// 1. What says nothing is not parsed: most tools without parameters come with one of these.
		if (Parameters.IsEmpty() || Parameters == TEXT("{}") || Parameters == TEXT("null"))
		{
			return FString();
		}
		TSharedPtr<FJsonObject> Object;
		const TSharedRef<TJsonReader<>> Reader = TJsonReaderFactory<>::Create(Parameters);
		if (!FJsonSerializer::Deserialize(Reader, Object) || !Object.IsValid())
		{
			return FString();
		}

		// 2. A build of single modules names them all, which no key below would.
		FString Value;
		const TArray<TSharedPtr<FJsonValue>>* Modules = nullptr;
		if (Object->TryGetStringField(TEXT("method"), Value) && Value == TEXT("module_specific") &&
			Object->TryGetArrayField(TEXT("modules"), Modules))
		{
			TArray<FString> Names;
			for (const TSharedPtr<FJsonValue>& Module : *Modules)
			{
				FString Name;
				if (Module.IsValid() && Module->TryGetString(Name) && !Name.IsEmpty())
				{
					Names.Add(Name);
				}
			}
			if (Names.Num() > 0)
			{
				return FString::Join(Names, TEXT(", "));
			}
		}

		// 3. The keys, from the one made for people to the one that only a tool understands.
		for (const FString& Key : Keys)
		{
			if (!Object->TryGetStringField(*Key, Value) || Value.IsEmpty())
			{
				continue;
			}
			if (Key != TEXT("method"))
			{
				return ExtractShortName(Value);
			}
			const TCHAR* Method = FindWord(BuildMethodRows, Value);
			return Method ? FString(Method) : Value;
		}
		return FString();
	}

} // namespace Velmora
