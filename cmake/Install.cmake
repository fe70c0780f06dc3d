# What an installation holds. Program and libraries stand beside each other in a folder of their own, since nobody else may
# link to them; what does not depend on the machine is shared, and found from the program's folder by links.
set(Private lib/velmora)
set(Shared share/velmora)
install(TARGETS velmora RUNTIME DESTINATION ${Private})
install(TARGETS Core CoreUObject Json SlateCore Slate Editor Platform Session
	VelmoraCore VelmoraToolkit VelmoraAutoDownloadFramework VelmoraWire VelmoraUI LIBRARY DESTINATION ${Private})
if(TARGET Accessibility)
	install(TARGETS Accessibility LIBRARY DESTINATION ${Private})
endif()
install(FILES Velmora.uplugin DESTINATION ${Shared})
install(DIRECTORY Resources Host/Engine/Resources/AppStyle DESTINATION ${Shared} FILES_MATCHING PATTERN "*.png")
install(FILES Packaging/org.velmora.VelmoraUI.desktop DESTINATION share/applications)
# The icon of 40 units is kept in 64 pixels, as all that is drawn small.
install(FILES Resources/Icons/App/Icon40.png DESTINATION share/icons/hicolor/64x64/apps RENAME velmora.png)
install(FILES Resources/Icons/App/Icon128.png DESTINATION share/icons/hicolor/128x128/apps RENAME velmora.png)
install(FILES Resources/Icons/App/Icon128.svg DESTINATION share/icons/hicolor/scalable/apps RENAME velmora.svg)
