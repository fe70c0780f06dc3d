#include "Tools/ToolStyleResolver.h"

#include "Support/Base/Printers.h"

using Velmora::FResolvedToolStyle;
using Velmora::FToolStyleResolver;

namespace
{

	/** The style of a tool without a word in its name, with this metadata. */
	FResolvedToolStyle Resolve(const FString& Operation, const FString& DataType, const FString& SubOperation = FString())
	{
		return FToolStyleResolver::ResolveStyle(TEXT("x"),
			FString::Printf(
				TEXT(R"({"operation_type":"%s","data_type":"%s","sub_operation":"%s"})"), *Operation, *DataType, *SubOperation));
	}

	/** "color | display name | icon | category | verb". */
	std::string DumpStyle(const FResolvedToolStyle& Style)
	{
		return Utf8(Style.Color) + " | " + Utf8(Style.DisplayName) + " | " + Utf8(Style.Icon) + " | " + Utf8(Style.Category) + " | " +
			Utf8(Style.ActionVerb);
	}

} // namespace

TEST(ToolStyle, WorkedExamples)
{
	const std::tuple<const TCHAR*, const TCHAR*, const char*> Cases[] = {
		{ TEXT("create_widget"), TEXT(R"({"operation_type":"create","data_type":"WidgetBlueprint"})"),
			"#10B981 | Create Widget Blueprint | widget | Asset Creation - WidgetBlueprint | Creating" },
		{ TEXT("read_blueprint"), TEXT(R"({"operation_type":"read","data_type":"Blueprint","sub_operation":"schema"})"),
			"#95CBFF | Read Blueprint | blueprint | Query | Analyzing graph" },
		{ TEXT("read_file"), TEXT(""), "#3B82F6 | Read File | tool | General | Analyzing" },
		{ TEXT("frobnicate_asset"), TEXT("{}"), "#3B82F6 | Frobnicate Asset | tool | General | Frobnicate" },
		{ TEXT("Compile"), TEXT("NULL"), "#3B82F6 | Compile | tool | General | Processing" },
		{ TEXT("Compile"), TEXT("{\"operation_type\""), "#3B82F6 | Compile | tool | General | Processing" },
		{ TEXT("Compile"), TEXT("[1]"), "#3B82F6 | Compile | tool | General | Processing" },
		{ TEXT(""), TEXT(""), "#3B82F6 |  | tool | General | Processing" },
		{ TEXT("_x"), TEXT(""), "#3B82F6 | X | tool | General | Processing" },
		{ TEXT("add_enum"), TEXT(R"({"data_type":"Enum"})"), "#A855F7 | Add Enum | enum | Asset - Enum | Add" },
		{ TEXT("wipe"), TEXT(R"({"operation_type":"delete"})"), "#EF4444 | Wipe | tool | Deletion | Deleting" },
		{ TEXT("make"), TEXT(R"({"operation_type":"CREATE","data_type":"blueprint"})"),
			"#10B981 | Create Blueprint | blueprint | Asset Creation - blueprint | Creating" },
		{ TEXT("x_y"), TEXT(R"({"operation_type":"frob","data_type":"Blackboard"})"),
			"#14B8A6 | Frob Blackboard | blackboard | AI System | Frob" },
		{ TEXT("Compile"), TEXT(R"({"toolkit_module":"M"})"), "#3B82F6 | Compile | tool | General | Processing" },
		{ TEXT("read_x"), TEXT(R"({"sub_operation":"EVENT"})"), "#3B82F6 | Read X | tool | General | Reading event" },
		{ TEXT("Look"), TEXT(R"({"Operation_Type":"list"})"), "#95CBFF | Look | tool | Discovery | Scanning" },
		{ TEXT("x"), TEXT(R"({"operation_type":"update"})"), "#F59E0B | X | tool | Data Modification | Updating" },
		{ TEXT("x"), TEXT(R"({"operation_type":"validate"})"), "#8B5CF6 | X | tool | Validation | Validating" },
		{ TEXT("x"), TEXT(R"({"operation_type":"run"})"), "#6366F1 | X | tool | Execution | Running" },
		{ TEXT("x"), TEXT(R"({"data_type":"MATERIALINSTANCE"})"), "#FB923C | X | tool | Material System | Processing" },
		{ TEXT("x"), TEXT(R"({"data_type":"NiagaraSystem"})"), "#A855F7 | X | particles | VFX System | Processing" },
		{ TEXT("x"), TEXT(R"({"data_type":"datatable"})"), "#06B6D4 | X | table | Asset - datatable | Processing" },
	};
	for (const auto& [Name, Metadata, Style] : Cases)
	{
		SCOPED_TRACE(Utf8(Name) + " " + Utf8(Metadata));
		EXPECT_EQ(DumpStyle(FToolStyleResolver::ResolveStyle(Name, Metadata)), Style);
	}
}

TEST(ToolText, Verbs)
{
	const std::tuple<const TCHAR*, const TCHAR*, const char*> Cases[] = {
		{ TEXT("read"), TEXT(""), "Analyzing" },
		{ TEXT("read"), TEXT("blueprint_graph"), "Analyzing Blueprint_graph" },
		{ TEXT("READ"), TEXT("SCHEMA"), "Analyzing graph" },
		{ TEXT("read"), TEXT("function"), "Reading function" },
		{ TEXT("read"), TEXT("variable"), "Checking variable" },
		{ TEXT("read"), TEXT("timeline"), "Inspecting timeline" },
		{ TEXT("read"), TEXT("component"), "Reading component" },
		{ TEXT("read"), TEXT("delegate"), "Reading delegate" },
		{ TEXT("read"), TEXT("macro"), "Reading macro" },
		{ TEXT("read"), TEXT("widget_tree"), "Analyzing widget tree" },
		{ TEXT("read"), TEXT("interface"), "Reading interface" },
		{ TEXT(""), TEXT("schema"), "Processing" },
		{ TEXT("create"), TEXT("schema"), "Creating" },
		{ TEXT("rebuild"), TEXT(""), "Rebuild" },
		{ TEXT("\u00e9tude"), TEXT(""), "\xc3\xa9tude" },
	};
	for (const auto& [Operation, SubOperation, Verb] : Cases)
	{
		EXPECT_EQ(Utf8(Resolve(Operation, FString(), SubOperation).ActionVerb), Verb);
	}
}

TEST(ToolText, Categories)
{
	const std::tuple<const TCHAR*, const TCHAR*, const char*> Cases[] = {
		{ TEXT("create"), TEXT(""), "Asset Creation" },
		{ TEXT("Create"), TEXT("Enum"), "Asset Creation - Enum" },
		{ TEXT("modify"), TEXT("Enum"), "Modification - Enum" },
		{ TEXT("update"), TEXT(""), "Data Modification" },
		{ TEXT("edit"), TEXT(""), "Data Modification" },
		{ TEXT("remove"), TEXT("Enum"), "Deletion" },
		{ TEXT("read"), TEXT("Blueprint"), "Query" },
		{ TEXT("get"), TEXT(""), "Query" },
		{ TEXT("search"), TEXT(""), "Discovery" },
		{ TEXT("check"), TEXT(""), "Validation" },
		{ TEXT("validate"), TEXT(""), "Validation" },
		{ TEXT("compile"), TEXT(""), "Build" },
		{ TEXT("run"), TEXT(""), "Execution" },
		{ TEXT("execute"), TEXT(""), "Execution" },
		{ TEXT(""), TEXT(""), "General" },
		{ TEXT("frobnicate"), TEXT("Sound"), "Asset - Sound" },
		{ TEXT(""), TEXT("animblueprint"), "Blueprint System" },
		{ TEXT(""), TEXT("BehaviorTree"), "AI System" },
		{ TEXT(""), TEXT("blackboard"), "AI System" },
		{ TEXT(""), TEXT("MaterialInstance"), "Material System" },
		{ TEXT(""), TEXT("NiagaraEmitter"), "VFX System" },
		{ TEXT(""), TEXT("InputAction"), "Input System" },
		{ TEXT(""), TEXT("file"), "File System" },
		{ TEXT(""), TEXT("Directory"), "File System" },
		{ TEXT(""), TEXT("FileList"), "Asset - FileList" },
	};
	for (const auto& [Operation, DataType, Category] : Cases)
	{
		EXPECT_EQ(Utf8(Resolve(Operation, DataType).Category), Category);
	}
}

TEST(ToolText, NamesForPeople)
{
	const std::pair<const TCHAR*, const char*> Cases[] = {
		{ TEXT("get_blueprint_info"), "Get Blueprint Info" },
		{ TEXT("read__file"), "Read File" },
		{ TEXT("create"), "Create" },
		{ TEXT("DataAsset"), "Data Asset" },
		{ TEXT("UIWidget"), "U I Widget" },
		{ TEXT("list_UI"), "List UI" },
		{ TEXT("___"), "" },
		{ TEXT(""), "" },
	};
	for (const auto& [Name, Pretty] : Cases)
	{
		EXPECT_EQ(Utf8(FToolStyleResolver::ResolveStyle(Name, FString()).DisplayName), Pretty);
	}
}

TEST(ToolText, DisplayParameters)
{
	const std::pair<const TCHAR*, const char*> Cases[] = {
		{ TEXT(""), "" },
		{ TEXT("{}"), "" },
		{ TEXT("Null"), "" },
		{ TEXT("not json"), "" },
		{ TEXT("[\"path\"]"), "" },
		{ TEXT(R"({"path":"C:/Proj/Source/Hero.cpp"})"), "Hero" },
		{ TEXT(R"({"path":"/Game/Heroes/BP_Hero.BP_Hero"})"), "BP_Hero" },
		{ TEXT(R"({"name":"N","path":"P"})"), "P" },
		{ TEXT(R"({"path":"","name":"N"})"), "N" },
		{ TEXT(R"({"node":"Z","term":"find me"})"), "find me" },
		{ TEXT(R"({"display_text":"Look at this. Now","path":"P"})"), "Look at this" },
		{ TEXT(R"({"file_path":"a\\b.h","asset_path":"x"})"), "b" },
		{ TEXT(R"({"method":"LiveCoding"})"), "LiveCoding" },
		{ TEXT(R"({"method":"hotreload"})"), "HotReload" },
		{ TEXT(R"({"method":"full_rebuild"})"), "UBT" },
		{ TEXT(R"({"method":"a/b.c"})"), "a/b.c" },
		{ TEXT(R"({"method":"Module_Specific","modules":["Core","","Engine"]})"), "Core, Engine" },
		{ TEXT(R"({"method":"module_specific","modules":[]})"), "Module-Specific" },
		{ TEXT(R"({"method":"module_specific","modules":["",null]})"), "Module-Specific" },
		{ TEXT(R"({"method":"full_rebuild","modules":["Core"]})"), "UBT" },
		{ TEXT(R"({"method":"module_specific","modules":["Core"],"path":"P"})"), "Core" },
		{ TEXT(R"({"PATH":"x/Y.z"})"), "Y" },
		{ TEXT(R"({"other":"x"})"), "" },
	};
	for (const auto& [Parameters, Text] : Cases)
	{
		SCOPED_TRACE(Utf8(Parameters));
		EXPECT_EQ(Utf8(FToolStyleResolver::ExtractDisplayParameter(Parameters)), Text);
	}
	EXPECT_EQ(Utf8(FToolStyleResolver::ExtractShortName(TEXT(""))), "");
}
