#include "Tools/ToolStyleResolver.h"

#include "Dom/JsonObject.h"
#include "Serialization/JsonReader.h"
#include "Serialization/JsonSerializer.h"

namespace Velmora
{

	namespace
	{

		struct FOperationColorRow
		{
			const TCHAR* Operation;
			const TCHAR* Color;
		};

		constexpr FOperationColorRow OperationColorRows[] = {
			{ TEXT("create"), TEXT("#10B981") },
			{ TEXT("read"), TEXT("#95CBFF") },
			{ TEXT("list"), TEXT("#95CBFF") },
			{ TEXT("search"), TEXT("#95CBFF") },
			{ TEXT("get"), TEXT("#95CBFF") },
			{ TEXT("update"), TEXT("#F59E0B") },
			{ TEXT("modify"), TEXT("#F59E0B") },
			{ TEXT("edit"), TEXT("#F59E0B") },
			{ TEXT("delete"), TEXT("#EF4444") },
			{ TEXT("remove"), TEXT("#EF4444") },
			{ TEXT("validate"), TEXT("#8B5CF6") },
			{ TEXT("compile"), TEXT("#8B5CF6") },
			{ TEXT("check"), TEXT("#8B5CF6") },
			{ TEXT("execute"), TEXT("#6366F1") },
			{ TEXT("run"), TEXT("#6366F1") },
		};

		struct FDataTypeRow
		{
			const TCHAR* DataType;
			const TCHAR* Color;
			/** Null where the type has no icon of its own. */
			const TCHAR* Icon;
		};

		constexpr FDataTypeRow DataTypeRows[] = {
			{ TEXT("Enum"), TEXT("#A855F7"), TEXT("enum") },
			{ TEXT("DataAsset"), TEXT("#10B981"), TEXT("asset") },
			{ TEXT("DataTable"), TEXT("#06B6D4"), TEXT("table") },
			{ TEXT("Struct"), TEXT("#F59E0B"), TEXT("struct") },
			{ TEXT("Blueprint"), TEXT("#95CBFF"), TEXT("blueprint") },
			{ TEXT("WidgetBlueprint"), TEXT("#A855F7"), TEXT("widget") },
			{ TEXT("AnimBlueprint"), TEXT("#EC4899"), TEXT("anim") },
			{ TEXT("BehaviorTree"), TEXT("#10B981"), TEXT("tree") },
			{ TEXT("Blackboard"), TEXT("#14B8A6"), TEXT("blackboard") },
			{ TEXT("Material"), TEXT("#F97316"), TEXT("material") },
			{ TEXT("MaterialInstance"), TEXT("#FB923C"), nullptr },
			{ TEXT("NiagaraSystem"), TEXT("#A855F7"), TEXT("particles") },
			{ TEXT("NiagaraEmitter"), TEXT("#A78BFA"), nullptr },
			{ TEXT("InputMappingContext"), TEXT("#6366F1"), TEXT("input") },
			{ TEXT("InputAction"), TEXT("#818CF8"), nullptr },
			{ TEXT("File"), TEXT("#6B7280"), TEXT("file") },
			{ TEXT("Directory"), TEXT("#9CA3AF"), nullptr },
		};

	} // namespace

	TMap<FString, FString> FToolStyleResolver::OperationColors;
	TMap<FString, FString> FToolStyleResolver::DataTypeColors;
	TMap<FString, FString> FToolStyleResolver::DataTypeIcons;
	bool FToolStyleResolver::bMapsInitialized = false;

	void FToolStyleResolver::InitializeMaps()
	{
		if (bMapsInitialized)
		{
			return;
		}
		for (const FOperationColorRow& Row : OperationColorRows)
		{
			OperationColors.Add(Row.Operation, Row.Color);
		}
		for (const FDataTypeRow& Row : DataTypeRows)
		{
			DataTypeColors.Add(Row.DataType, Row.Color);
			if (Row.Icon)
			{
				DataTypeIcons.Add(Row.DataType, Row.Icon);
			}
		}
		bMapsInitialized = true;
	}

	bool FToolStyleResolver::ParseMetadata(
		const FString& Metadata, FString& OutOperationType, FString& OutDataType, FString& OutToolkitModule, FString& OutSubOperation)
	{
		// 1. Nothing of an earlier call stays, whatever becomes of this one.
		OutOperationType.Empty();
		OutDataType.Empty();
		OutToolkitModule.Empty();
		OutSubOperation.Empty();
		if (Metadata.IsEmpty() || Metadata == TEXT("{}") || Metadata == TEXT("null"))
		{
			return false;
		}
		// 2. The text comes from a tool and may be anything; what is no object counts as nothing.
		TSharedPtr<FJsonObject> Object;
		const TSharedRef<TJsonReader<>> Reader = TJsonReaderFactory<>::Create(Metadata);
		if (!FJsonSerializer::Deserialize(Reader, Object) || !Object.IsValid())
		{
			return false;
		}
		Object->TryGetStringField(TEXT("operation_type"), OutOperationType);
		Object->TryGetStringField(TEXT("data_type"), OutDataType);
		Object->TryGetStringField(TEXT("toolkit_module"), OutToolkitModule);
		Object->TryGetStringField(TEXT("sub_operation"), OutSubOperation);
		// 3. These two are looked up in tables, the data type is shown as it is written.
		OutOperationType.ToLowerInline();
		OutSubOperation.ToLowerInline();
		return !OutOperationType.IsEmpty() || !OutDataType.IsEmpty();
	}

	FResolvedToolStyle FToolStyleResolver::ResolveStyle(const FString& ToolName, const FString& Metadata)
	{
		InitializeMaps();
		FResolvedToolStyle Style;
		FString OperationType;
		FString DataType;
		FString ToolkitModule;
		FString SubOperation;
		// The result does not matter: each text below is asked for itself, so a lone sub-operation still counts.
		ParseMetadata(Metadata, OperationType, DataType, ToolkitModule, SubOperation);

		// 1. The colour: that of what is done, else of what it is done to, else the one that a style begins with.
		const FString* Color = OperationType.IsEmpty() ? nullptr : OperationColors.Find(OperationType);
		if (!Color && !DataType.IsEmpty())
		{
			Color = DataTypeColors.Find(DataType);
		}
		if (Color)
		{
			Style.Color = *Color;
		}

		// 2. The name: the two words when both are there, which read better than the name in the code.
		if (!OperationType.IsEmpty() && !DataType.IsEmpty())
		{
			Style.DisplayName = PrettifyToolName(OperationType) + TEXT(" ") + PrettifyToolName(DataType);
		}
		else
		{
			Style.DisplayName = PrettifyToolName(ToolName);
		}

		// 3. The verb: of the operation, else of the first word of the name, as in "read_file".
		int32 FirstUnderscore = INDEX_NONE;
		if (!OperationType.IsEmpty())
		{
			Style.ActionVerb = GetActionVerb(OperationType, SubOperation);
		}
		else if (ToolName.FindChar(TEXT('_'), FirstUnderscore))
		{
			Style.ActionVerb = GetActionVerb(ToolName.Left(FirstUnderscore), SubOperation);
		}
		else
		{
			Style.ActionVerb = TEXT("Processing");
		}

		// 4. Category and icon.
		Style.Category = GetCategory(OperationType, DataType);

		const FString* Icon = DataType.IsEmpty() ? nullptr : DataTypeIcons.Find(DataType);
		Style.Icon = Icon ? *Icon : FString(TEXT("tool"));
		return Style;
	}

} // namespace Velmora
