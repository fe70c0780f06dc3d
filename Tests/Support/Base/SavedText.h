#pragma once

#include <string>

/**
 * A text is as a file of the folder Tests holds it. Who changes one on purpose runs the test with VELMORA_WRITE_TEXTS=1, which
 * writes the file anew, and reads the difference before it is committed.
 */
void ExpectSavedText(const std::string& File, const std::string& Text);
