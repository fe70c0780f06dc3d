#include "Editor.h"
#include "Host/HostEditor.h"
#include "Host/HostLog.h"
#include "Host/HostPaths.h"
#include "SourceCodeNavigation.h"
#include "Support/Base/Printers.h"
#include "Support/Base/TempFolder.h"

namespace
{
	class EditorServices : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			FHostLog::SetStderrVerbosity(ELogVerbosity::NoLogging);
			FHostPaths::SetProjectDir(Temp.At(TEXT("P")));
			Temp.Write("P/Content/A.uasset", "");
			Temp.Write("P/Source/A.cpp", "");
			FHostEditor::StartUp();
		}
		void TearDown() override
		{
			FHostEditor::ShutDown();
			FHostLog::SetStderrVerbosity(ELogVerbosity::Warning);
		}
		FTempFolder Temp;
	};
}

TEST_F(EditorServices, OpensSourceFiles)
{
	FString Missing;
	FHostEditor::SetMissingSourceHook([&Missing](const FString& Path) { Missing = Path; });
	EXPECT_FALSE(FSourceCodeNavigation::OpenSourceFile(Temp.At(TEXT("P/Source/Missing.cpp"))));
	EXPECT_EQ(Utf8(Missing), Temp.AtBytes("P/Source/Missing.cpp"));
	FHostOpenedSource Opened;
	FHostEditor::SetOpenSourceHook(
		[&Opened](const FHostOpenedSource& Source)
		{
			Opened = Source;
			return true;
		});
	EXPECT_TRUE(FSourceCodeNavigation::OpenSourceFile(Temp.At(TEXT("P/Source/A.cpp")), 12, 3));
	EXPECT_EQ(Utf8(Opened.Path), Temp.AtBytes("P/Source/A.cpp"));
	EXPECT_EQ(Opened.Line, 12);
	EXPECT_EQ(Opened.Column, 3);
	EXPECT_EQ(FHostEditor::GetOpenedSources().Num(), 1);
}
