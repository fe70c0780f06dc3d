#pragma once

/**
 * Makes the process draw text with the fonts listed in Support/Fonts/fonts.conf and no others. To be called before the
 * first text is shaped. A font that is not installed ends the process with the name of its package.
 */
void UsePinnedFonts();
