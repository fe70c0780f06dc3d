#pragma once

#include "CoreMinimal.h"

namespace Velmora
{

	/** Everything that a tool row shows about its tool, as strings. */
	struct VELMORAUI_API FResolvedToolStyle
	{
		/** Accent colour, "#RRGGBB". */
		FString Color = TEXT("#3B82F6");
		/** The tool's name for people. */
		FString DisplayName;
		/** Key of an icon. Never empty in a resolved style. */
		FString Icon;
		/** Name of the group that the tool belongs to. */
		FString Category = TEXT("General");
		/** What the tool is doing, "Creating". */
		FString ActionVerb;
	};

	/**
	 * Turns what the agent says about a tool run into words and colours. Nothing fails: what is not understood falls
	 * through to the next rule and at last to a default. Letter case never matters. Game thread.
	 */
	class VELMORAUI_API FToolStyleResolver
	{
	public:
		/**
		 * @param Metadata  A JSON object in a string with the optional texts "operation_type", "data_type",
		 *                  "toolkit_module" and "sub_operation". Anything else counts as no metadata.
		 */
		static FResolvedToolStyle ResolveStyle(const FString& ToolName, const FString& Metadata);

		/**
		 * What a tool works on, in a word or two: the bare name of its asset or file, its search term, its build method.
		 *
		 * @param Parameters  The tool's arguments, a JSON object in a string.
		 * @return Empty when there is nothing to show.
		 */
		static FString ExtractDisplayParameter(const FString& Parameters);

		/** "/Game/Heroes/BP_Hero.BP_Hero" becomes "BP_Hero": folders and the last extension go. */
		static FString ExtractShortName(const FString& Value);

	private:
		static void InitializeMaps();
		static bool ParseMetadata(
			const FString& Metadata, FString& OutOperationType, FString& OutDataType, FString& OutToolkitModule, FString& OutSubOperation);

		/** "create" gives "Creating"; an operation without a verb stands for itself. */
		static FString GetActionVerb(const FString& Operation, const FString& SubOperation);
		static FString GetCategory(const FString& Operation, const FString& DataType);

		/** "get_blueprint_info" becomes "Get Blueprint Info", "DataAsset" becomes "Data Asset". */
		static FString PrettifyToolName(const FString& Name);

		/** By operation type. */
		static TMap<FString, FString> OperationColors;
		/** By data type. */
		static TMap<FString, FString> DataTypeColors;
		static TMap<FString, FString> DataTypeIcons;
		static bool bMapsInitialized;
	};

} // namespace Velmora
