#include "Modules/SingletonList.h"
#include "Support/UiDriver.h"

FSingletonList ListSingletonsOfLibrary();

using FOneEngineTest = FWidgetTest;

TEST_F(FOneEngineTest, ProgramAndLibrariesShareEverySingleton)
{
	const FSingletonList Here = ListSingletons();
	EXPECT_EQ(ListSingletonsOfLibrary(), Here);
	for (const auto& [Name, Address] : Here)
	{
		EXPECT_NE(Address, nullptr) << Name;
	}
}
